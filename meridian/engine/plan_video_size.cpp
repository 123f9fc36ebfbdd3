// The size of the output, and how the image is fitted into it.
#include <algorithm>
#include <cmath>

#include "meridian/engine/plan_video.h"

namespace meridian::inline v0_2 {
namespace {

constexpr std::string_view aspectScalingFlag = SAVVideoAspectScalingFlag.rawValue();
constexpr std::string_view cropAnchorFlag = SAVVideoAspectCropAnchorFlag.rawValue();

// The sides of an image that every encoder takes.
constexpr int leastSide = 16;
constexpr int greatestSide = 16384;

/// Rounds to the nearest whole number, or even one, of at least 2.
int rounded(double pixels, bool even) {
  const long long whole = even ? 2 * std::llround(pixels / 2) : std::llround(pixels);
  return static_cast<int>(std::max(whole, 2LL));
}

int roundedDown(int pixels, bool even) { return even ? pixels / 2 * 2 : pixels; }

std::string sizeText(ImageSize size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

/// What "-dims" asks for: a size in pixels, a factor of the source's size, or neither.
struct AskedSize {
  std::optional<ImageSize> pixels;
  std::optional<double> factor;
};

AskedSize askedSize(PlanContext& context) {
  const auto size = context.value<Size>(videoDimensionsFlag);
  if (!size || *size == Size{0, 0}) return {};
  // As conversion settings store a scale; no image is so small.
  if (size->width == size->height && size->width > 0 && size->width <= 1) return {{}, size->width};
  for (const double side : {size->width, size->height}) {
    if (side >= leastSide && side <= greatestSide && side == std::floor(side)) continue;
    context.fail(TranscodePlanErrorCode::sizeOutOfRange, videoDimensionsFlag);
    return {};
  }
  return {ImageSize{static_cast<int>(size->width), static_cast<int>(size->height)}, {}};
}

/// Returns the offset of a part that is shorter by `space`: 0 for the first third of the anchors, all of it for the
/// last.
int offsetAt(int third, int space, bool even) { return roundedDown(space * third / 2, even); }

FrameFit fittedFrame(PlanContext& context, ImageSize source, const MediaRational& pixelAspectRatio, bool needsEven) {
  const double displayWidth = source.width * pixelAspectRatio.rawValue();
  const double displayHeight = source.height;
  const AskedSize asked = askedSize(context);
  FrameFit fit{.scaled = source, .final = source};
  if (asked.factor) {
    context.ignore(aspectScalingFlag, "-dims is a factor of the source's size");
    if (*asked.factor == 1) return fit;
    fit.scaled = {rounded(displayWidth * *asked.factor, needsEven), rounded(displayHeight * *asked.factor, needsEven)};
    fit.final = fit.scaled;
    fit.squaresPixels = true;
    return fit;
  }
  if (!asked.pixels) {
    if (!context.isSet(videoDimensionsFlag)) context.ignore(aspectScalingFlag, "there is no -dims to fit into");
    if (needsEven && (source.width % 2 != 0 || source.height % 2 != 0) && !context.isSet(videoDimensionsFlag)) {
      context.fail(TranscodePlanErrorCode::oddSize, videoCodecFlag, "the source is " + sizeText(source),
                   "set -dims " + sizeText({roundedDown(source.width, true), roundedDown(source.height, true)}) +
                       " with -aspect_scaling stretch");
    }
    return fit;
  }

  const ImageSize box = *asked.pixels;
  const auto scaling =
      context.oneOf<SAVTranscodeArgumentAspectRatioValue>(aspectScalingFlag).value_or(SAVMatchSourceRatio);
  if (scaling != SAVMatchSourceRatio && needsEven && (box.width % 2 != 0 || box.height % 2 != 0)) {
    context.fail(TranscodePlanErrorCode::oddSize, videoDimensionsFlag, {},
                 "did you mean " + sizeText({roundedDown(box.width, true), roundedDown(box.height, true)}) + "?");
  }
  fit.squaresPixels = true;
  fit.final = box;
  const double ratioOfWidths = box.width / displayWidth;
  const double ratioOfHeights = box.height / displayHeight;
  const auto scaledBy = [&](double factor) {
    return ImageSize{rounded(displayWidth * factor, needsEven), rounded(displayHeight * factor, needsEven)};
  };
  if (scaling == SAVStretchAspect) {
    fit.scaled = box;
  } else if (scaling == SAVLetterboxAspect) {
    fit.scaled = scaledBy(std::min(ratioOfWidths, ratioOfHeights));
    fit.scaled = {std::min(fit.scaled.width, box.width), std::min(fit.scaled.height, box.height)};
    fit.x = roundedDown((box.width - fit.scaled.width) / 2, needsEven);
    fit.y = roundedDown((box.height - fit.scaled.height) / 2, needsEven);
    fit.pads = fit.scaled != box;
  } else if (scaling == SAVCropAspect) {
    fit.anchor = context.oneOf<VideoCropAnchor>(cropAnchorFlag).value_or(VideoCropAnchor::center);
    fit.scaled = scaledBy(std::max(ratioOfWidths, ratioOfHeights));
    fit.scaled = {std::max(fit.scaled.width, box.width), std::max(fit.scaled.height, box.height)};
    const auto place = static_cast<int>(fit.anchor);
    fit.x = offsetAt(place % 3, fit.scaled.width - box.width, needsEven);
    fit.y = offsetAt(place / 3, fit.scaled.height - box.height, needsEven);
    fit.crops = fit.scaled != box;
  } else {
    const double factor = std::min(ratioOfWidths, ratioOfHeights);
    if (factor > 1) {
      context.warn(TranscodePlanWarningCode::notEnlarged, videoDimensionsFlag,
                   sizeText({rounded(displayWidth, false), rounded(displayHeight, false)}) + " stays");
    }
    fit.scaled = scaledBy(std::min(factor, 1.0));
    fit.scaled = {std::min(fit.scaled.width, roundedDown(box.width, needsEven)),
                  std::min(fit.scaled.height, roundedDown(box.height, needsEven))};
    fit.final = fit.scaled;
  }
  if (scaling != SAVCropAspect) context.ignore(cropAnchorFlag, "nothing is cropped");
  return fit;
}

}  // namespace

FrameFit planFrameFit(PlanContext& context, ImageSize source, const MediaRational& pixelAspectRatio, bool needsEven) {
  const FrameFit fit = fittedFrame(context, source, pixelAspectRatio, needsEven);
  const auto isReported = [&context](std::string_view flag) {
    return std::ranges::any_of(context.errors, [flag](const TranscodePlanError& each) {
      return each.place == flag && each.code == TranscodePlanErrorCode::sizeOutOfRange;
    });
  };
  const auto [least, greatest] = std::minmax(fit.final.width, fit.final.height);
  if (least >= leastSide && greatest <= greatestSide) return fit;
  const bool isAsked = context.isSet(videoDimensionsFlag);
  const std::string_view flag = isAsked ? videoDimensionsFlag : videoCodecFlag;
  if (!isReported(flag)) {
    context.fail(TranscodePlanErrorCode::sizeOutOfRange, flag, "the image is " + sizeText(fit.final),
                 isAsked ? "" : "set another size with -dims");
  }
  return fit;
}

}  // namespace meridian::inline v0_2
