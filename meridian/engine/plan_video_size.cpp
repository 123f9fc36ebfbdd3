// The size of the output, and how the image is fitted into it.
#include <algorithm>
#include <cmath>

#include "meridian/engine/plan_video.h"

namespace meridian::inline v0_2 {
namespace {

constexpr std::string_view aspectScalingFlag = SAVVideoAspectScalingFlag.rawValue();
constexpr std::string_view cropAnchorFlag = SAVVideoAspectCropAnchorFlag.rawValue();

// The least side of an image that every encoder accepts.
constexpr int leastSide = 16;

// The sides that an image can be scaled to before it is cropped.
constexpr int greatestScaledSide = 32767;

/// Which sides are rounded to even numbers.
struct EvenSides {
  bool width = false;
  bool height = false;
};

/// Rounds to the nearest whole number, or even one, of at least 2.
int rounded(double pixels, bool even) {
  constexpr double beyond = 1 << 30;
  if (!(pixels > 2)) return 2;  // also for NaN
  const double whole = std::min(pixels, beyond);
  return static_cast<int>(even ? 2 * std::llround(whole / 2) : std::llround(whole));
}

int roundedDown(int pixels, bool even) { return even ? pixels / 2 * 2 : pixels; }

ImageSize roundedDown(ImageSize size, EvenSides even) {
  return {roundedDown(size.width, even.width), roundedDown(size.height, even.height)};
}

/// Returns a size as it is written after "-dims".
std::string dimensionsText(ImageSize size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

/// Returns the greatest side that the encoder accepts; that of most encoders if there is none.
int greatestSideOf(const EncoderChoice& choice) {
  return choice.row != nullptr ? choice.row->greatestSide : usualGreatestSide;
}

std::string limitsOfSides(int greatestSide) {
  return "use whole numbers from " + std::to_string(leastSide) + " to " + std::to_string(greatestSide);
}

/// What "-dims" asks for: a size in pixels, a factor of the source's size, or neither.
struct AskedSize {
  std::optional<ImageSize> pixels;
  std::optional<double> factor;
};

AskedSize askedSize(PlanContext& context, int greatestSide) {
  const auto size = context.value<Size>(videoDimensionsFlag);
  if (!size || *size == Size{0, 0}) return {};
  // As conversion settings store a scale; no image is so small.
  if (size->width == size->height && size->width > 0 && size->width <= 1) return {{}, size->width};
  for (const double side : {size->width, size->height}) {
    if (side >= leastSide && side <= greatestSide && side == std::floor(side)) continue;
    context.fail(TranscodePlanErrorCode::sizeOutOfRange, videoDimensionsFlag, {}, limitsOfSides(greatestSide));
    return {};
  }
  return {ImageSize{static_cast<int>(size->width), static_cast<int>(size->height)}, {}};
}

/// How many samples of luma share one of chroma, along each side: where an image is cut or put is a multiple of it.
struct ChromaGrid {
  int x = 1;
  int y = 1;
};

ChromaGrid gridOf(ChromaSubsampling chroma) noexcept {
  switch (chroma) {
    case ChromaSubsampling::yuv410:
      return {4, 4};
    case ChromaSubsampling::yuv411:
      return {4, 1};
    case ChromaSubsampling::yuv420:
      return {2, 2};
    case ChromaSubsampling::yuv422:
      return {2, 1};
    case ChromaSubsampling::yuv440:
      return {1, 2};
    default:
      return {};
  }
}

/// Returns the offset of a part that is shorter by `space`: 0 for the first third of the anchors, all of it for the
/// last.
int offsetAt(int third, int space, int grid) {
  if (third == 0) return 0;
  return (third == 1 ? space / 2 : space) / grid * grid;
}

static_assert(allCases<VideoCropAnchor>().size() == 9 && tableRow(VideoCropAnchor::topRight).rawValue == "tr" &&
                  allCases<VideoCropAnchor>()[5] == VideoCropAnchor::centerRight &&
                  allCases<VideoCropAnchor>()[7] == VideoCropAnchor::bottomCenter,
              "the anchors are in lines from the top left");

FrameFit fittedFrame(PlanContext& context, ImageSize source, const MediaRational& pixelAspectRatio, EvenSides even,
                     ChromaGrid grid, const AskedSize& asked) {
  const double displayWidth = source.width * pixelAspectRatio.rawValue();
  const double displayHeight = source.height;
  const auto scaledBy = [&](double factor) {
    return ImageSize{rounded(displayWidth * factor, even.width), rounded(displayHeight * factor, even.height)};
  };
  FrameFit fit{.scaled = source, .final = source};
  if (asked.factor || !asked.pixels) {
    const bool isFactor = asked.factor && *asked.factor != 1;
    const std::string_view reason =
        isFactor ? "-dims is a factor of the source's size" : "-dims does not set a size to fit into";
    const bool isSet = context.isSet(videoDimensionsFlag);
    context.ignore(aspectScalingFlag, isSet ? reason : "there is no -dims to fit into");
    context.ignore(cropAnchorFlag, isSet ? reason : "there is no -dims to crop to");
    if (!isFactor) return fit;
    fit.final = fit.scaled = scaledBy(*asked.factor);
    fit.squaresPixels = true;
    return fit;
  }

  const ImageSize box = *asked.pixels;
  const auto scaling =
      context.oneOf<SAVTranscodeArgumentAspectRatioValue>(aspectScalingFlag).value_or(SAVMatchSourceRatio);
  fit.squaresPixels = true;
  fit.final = box;
  const double ratioOfWidths = box.width / displayWidth;
  const double ratioOfHeights = box.height / displayHeight;
  if (scaling == SAVStretchAspect) {
    fit.scaled = box;
  } else if (scaling == SAVLetterboxAspect) {
    fit.scaled = scaledBy(std::min(ratioOfWidths, ratioOfHeights));
    fit.scaled = {std::min(fit.scaled.width, box.width), std::min(fit.scaled.height, box.height)};
    fit.x = offsetAt(1, box.width - fit.scaled.width, grid.x);
    fit.y = offsetAt(1, box.height - fit.scaled.height, grid.y);
    fit.pads = fit.scaled != box;
  } else if (scaling == SAVCropAspect) {
    fit.anchor = context.oneOf<VideoCropAnchor>(cropAnchorFlag).value_or(VideoCropAnchor::center);
    fit.scaled = scaledBy(std::max(ratioOfWidths, ratioOfHeights));
    fit.scaled = {std::max(fit.scaled.width, box.width), std::max(fit.scaled.height, box.height)};
    const auto place = static_cast<int>(fit.anchor);
    fit.x = offsetAt(place % 3, fit.scaled.width - box.width, grid.x);
    fit.y = offsetAt(place / 3, fit.scaled.height - box.height, grid.y);
    fit.crops = fit.scaled != box;
  } else {
    const double factor = std::min(ratioOfWidths, ratioOfHeights);
    const ImageSize most = roundedDown(box, even);
    // Rounding does not enlarge either.
    fit.scaled = factor < 1 ? scaledBy(factor)
                            : roundedDown({rounded(displayWidth, false), rounded(displayHeight, false)}, even);
    fit.scaled = {std::min(fit.scaled.width, most.width), std::min(fit.scaled.height, most.height)};
    fit.final = fit.scaled;
    if (factor > 1) {
      context.warn(TranscodePlanWarningCode::notEnlarged, videoDimensionsFlag, sizeText(fit.scaled) + " stays");
    }
  }
  if (scaling != SAVCropAspect) context.ignore(cropAnchorFlag, "nothing is cropped");
  return fit;
}

bool isOdd(ImageSize size, EvenSides needed) {
  return (needed.width && size.width % 2 != 0) || (needed.height && size.height % 2 != 0);
}

/// Reports a size that cannot be encoded, whichever way it came about, unless "-dims" is reported already.
void checkSize(PlanContext& context, const FrameFit& fit, ImageSize source, const MediaRational& pixelAspectRatio,
               EvenSides needed, const AskedSize& asked, int greatestSide) {
  using enum TranscodePlanErrorCode;
  const bool isReported = std::ranges::any_of(
      context.errors, [](const TranscodePlanError& each) { return each.place == videoDimensionsFlag; });
  if (isReported) return;
  const bool isSourceSize = fit.final == source && !fit.squaresPixels;
  const std::string_view flag = isSourceSize ? context.image->part->flag : videoDimensionsFlag;
  const auto [least, greatest] = std::minmax(fit.final.width, fit.final.height);
  if (least < leastSide || greatest > greatestSide) {
    std::string advice = limitsOfSides(greatestSide);
    if (isSourceSize) advice = "set another size with -dims";
    if (asked.pixels) advice = "the image is fitted into -dims; use a larger size";
    context.fail(sizeOutOfRange, flag, "the image is " + sizeText(fit.final), std::move(advice));
  } else if (std::max(fit.scaled.width, fit.scaled.height) > greatestScaledSide) {
    context.fail(sizeOutOfRange, flag, "the image would be scaled to " + sizeText(fit.scaled) + " first",
                 "use -aspect_scaling letterbox or stretch");
  } else if (isOdd(fit.final, needed)) {
    constexpr EvenSides both{true, true};
    if (isSourceSize) {
      const ImageSize even{rounded(source.width * pixelAspectRatio.rawValue(), true), roundedDown(source.height, true)};
      context.fail(oddSize, flag, sizeText(source),
                   "set -dims " + dimensionsText(even) + " with -aspect_scaling stretch");
    } else {
      context.fail(oddSize, flag, {}, "did you mean " + dimensionsText(roundedDown(fit.final, both)) + "?");
    }
  }
}

}  // namespace

FrameFit planFrameFit(PlanContext& context, ImageSize source, const MediaRational& pixelAspectRatio,
                      const EncoderChoice& choice) {
  const ChromaSubsampling chroma = tableRow(choice.format).chroma;
  const EvenSides halved{chroma == ChromaSubsampling::yuv420 || chroma == ChromaSubsampling::yuv422,
                         chroma == ChromaSubsampling::yuv420};
  EvenSides needed;
  if (choice.encoder != nullptr) {
    const bool chromaIsEven = choice.encoder->needsEvenChroma;
    needed = {choice.encoder->needsEvenWidth || (chromaIsEven && halved.width), chromaIsEven && halved.height};
  }
  // Rounding never makes a size that the encoder refuses.
  const EvenSides even{halved.width || needed.width, halved.width || needed.height};
  const int greatestSide = greatestSideOf(choice);
  const AskedSize asked = askedSize(context, greatestSide);
  // The image is cut or put before or after its chroma is converted.
  ChromaGrid grid = gridOf(chroma);
  if (context.image->stream->chroma) {
    const ChromaGrid before = gridOf(*context.image->stream->chroma);
    grid = {std::max(grid.x, before.x), std::max(grid.y, before.y)};
  }
  const FrameFit fit = fittedFrame(context, source, pixelAspectRatio, even, grid, asked);
  checkSize(context, fit, source, pixelAspectRatio, needed, asked, greatestSide);
  return fit;
}

}  // namespace meridian::inline v0_2
