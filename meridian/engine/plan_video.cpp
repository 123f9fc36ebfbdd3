// The video of a transcode: copied, or decoded, taken through its steps and encoded.
#include "meridian/engine/plan_video.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/transcode_properties.h"
#include "meridian/engine/transcode_plan_text.h"
#include "meridian/media/frame_rate.h"

namespace meridian::inline v0_2 {
namespace {

using enum TranscodePlanErrorCode;

constexpr std::string_view frameRateFlag = SAVVideoFrameRateFlag.rawValue();
constexpr std::string_view colorSpaceFlag = SAVVideoColorSpaceFlag.rawValue();
constexpr std::string_view lutFlag = SAVColorLutFileFlag.rawValue();

/// Returns the colour space that video of this height without tags is taken for: HD, or the one of 625 or 525 lines.
ColorSpaceCodes assumedColor(int height) {
  if (height >= 720) return *colorSpaceCodes(SAVRec709ColorSpace);
  return *colorSpaceCodes(height == 576 ? SAVEbu3213ColorSpace : SAVSmptecColorSpace);
}

/// Returns the codes with those that are not stated taken from others.
ColorSpaceCodes completed(ColorSpaceCodes codes, const ColorSpaceCodes& others) {
  if (codes.primaries == ColorSpaceCodes::unspecified) codes.primaries = others.primaries;
  if (codes.transfer == ColorSpaceCodes::unspecified) codes.transfer = others.transfer;
  if (codes.matrix == ColorSpaceCodes::unspecified) codes.matrix = others.matrix;
  return codes;
}

/// Returns the codes that the source states; that R'G'B' has no matrix needs no statement. OpenEXR holds scene-linear
/// light by its format ("Technical Introduction to OpenEXR", Scene-Referred Images), so that FFmpeg states nothing.
ColorSpaceCodes statedColor(const VideoStreamDescription& stream) {
  ColorSpaceCodes codes{stream.primaries.number, stream.transfer.number, stream.matrix.number};
  const bool isRgb = stream.chroma == ChromaSubsampling::rgb;
  if (isRgb && codes.matrix == ColorSpaceCodes::unspecified) codes.matrix = ColorSpaceCodes::rgbMatrix;
  if (stream.codecName == "exr" && codes.transfer == ColorSpaceCodes::unspecified)
    codes.transfer = ColorSpaceCodes::linearTransfer;
  return codes;
}

ImageForm sourceForm(const VideoStreamDescription& stream) {
  ImageForm form;
  form.width = stream.width;
  form.height = stream.height;
  form.pixelAspectRatio = stream.pixelAspectRatio;
  form.pixelFormat = stream.pixelFormat;
  form.bitDepth = stream.bitDepth.value_or(0);
  form.chroma = stream.chroma.value_or(ChromaSubsampling::yuv420);
  form.hasAlpha = stream.hasAlpha;
  const bool isRgb = form.chroma == ChromaSubsampling::rgb;
  // Y'CbCr without a stated range is limited, but for JPEG's formats.
  const bool isFull = isRgb || stream.pixelFormat.starts_with("yuvj");
  form.range = stream.range;
  if (stream.range == ColorRange::unknown) form.range = isFull ? ColorRange::full : ColorRange::limited;
  form.color =
      completed(statedColor(stream), isRgb ? *colorSpaceCodes(SAVSrgbColorSpace) : assumedColor(stream.height));
  form.isInterlaced = isInterlaced(stream.fieldOrder);
  form.frameRate = stream.frameRate.value_or(VideoFrameRate());
  return form;
}

std::optional<VideoFrameRate> halfOf(const VideoFrameRate& rate) {
  const auto denominator = checkedProduct(rate.rawValue().denominator, 2);
  const auto half = denominator ? inLowestTerms({rate.rawValue().numerator, *denominator}) : std::nullopt;
  return half ? VideoFrameRate::matching(*half) : std::nullopt;
}

/// Returns the rate that "-vr" asks for; absent for the source's. A number of 0 or 0.5 is a choice of conversion
/// settings: the source's rate, or half of it.
std::optional<VideoFrameRate> askedRate(PlanContext& context, const std::optional<VideoFrameRate>& sourceRate) {
  if (!context.value<float>(frameRateFlag)) return std::nullopt;
  const double number = doubleFromText(context.text(frameRateFlag)).value_or(0);
  if (number == FrameRate::match.rawValue()) return std::nullopt;
  if (number == FrameRate::halfstep.rawValue()) {
    const auto half = sourceRate ? halfOf(*sourceRate) : std::nullopt;
    if (!half)
      context.fail(rateNeeded, context.image->part->flag, "to halve with -vr 0.5", "set another rate with -vr");
    return half;
  }
  const auto meant = number <= greatestFrameRate ? frameRateMeantBy(number) : std::nullopt;
  if (!meant) context.failRate({}, "use more than 0 and at most 600 frames per second");
  return meant;
}

/// Returns the colour space that "-c_space" asks for. Values are lower-cased in reading, also the one with capitals.
std::optional<SAVTranscodeArgumentColorSpaceValue> askedColorSpace(PlanContext& context) {
  const auto space = context.oneOf<SAVTranscodeArgumentColorSpaceValue>(colorSpaceFlag);
  if (space || context.text(colorSpaceFlag) != lowercased(SAVSrgbColorSpace.rawValue())) return space;
  return SAVSrgbColorSpace;
}

/// Returns the number of frames of the source, at its own rate; absent if a part does not state its own.
std::optional<std::int64_t> sourceFrames(const PlanContext& context) {
  const std::int64_t group = context.image->group->number;
  return std::ranges::find(context.plan.sources, group, &PlannedSource::group)->frameCount();
}

/// Returns the seconds of all parts; absent if a part does not state its own.
std::optional<double> sourceSeconds(const SourceGroup& group) {
  double seconds = 0;
  for (const SourcePart& part : group.parts) {
    const VideoStreamDescription* const video = part.media != nullptr ? part.media->mainVideo() : nullptr;
    if (video == nullptr) return std::nullopt;
    const auto duration = video->duration ? video->duration : part.media->duration;
    if (!duration) return std::nullopt;
    seconds += duration->rawValue();
  }
  return seconds;
}

/// Returns the frames of the output: as many as the source has, or as fit into the time that they take.
std::optional<std::int64_t> outputFrames(const PlanContext& context, const VideoFrameRate& from,
                                         const VideoFrameRate& to) {
  const UsedImage& image = *context.image;
  const auto frames = sourceFrames(context);
  if (!image.stream->isVariable && from == to) return frames;
  std::optional<double> seconds;
  if (image.stream->isVariable) {
    seconds = sourceSeconds(*image.group);
  } else if (frames) {
    seconds = static_cast<double>(*frames) / from.rawValue().rawValue();
  }
  // However low the rate is, an image is shown.
  return seconds ? truncatedInteger(std::max(std::round(*seconds * to.rawValue().rawValue()), 1.0)) : std::nullopt;
}

bool isTurned(const VideoStreamDescription& stream) { return nearestQuarterTurn(stream.rotation) % 180 != 0; }

/// Returns the size of the image when its rotation is applied.
ImageSize uprightSize(const VideoStreamDescription& stream) {
  return isTurned(stream) ? ImageSize{stream.height, stream.width} : ImageSize{stream.width, stream.height};
}

/// A flag that changes the image, and whether its value leaves it as it is after all.
void failUnlessUnchanged(PlanContext& context, std::string_view flag, bool isUnchanged) {
  const ExplainedSetting* const setting = context.use(flag);
  if (setting == nullptr || isUnchanged || isCopyOfSource(flag, setting->value)) return;
  // A value that cannot be read is an error already.
  const auto properties = propertiesOfFlag(flag);
  const bool isSwitch = !properties.empty() && properties.front()->kind == PropertyKind::onOff;
  if (setting->typed || isSwitch || (flag == colorSpaceFlag && askedColorSpace(context)))
    context.fail(needsVideoCodec, flag);
}

/// Reports pixels that are not square in a container that cannot say so for the codec.
void checkPixels(PlanContext& context, const ImageForm& image, std::string_view codec) {
  if (!context.container || image.pixelAspectRatio == MediaRational{1, 1}) return;
  if (keepsPixelAspectRatio(*context.container, codec)) return;
  context.fail(pixelsNotSquare, context.image->part->flag,
               "with the pixel aspect ratio " + std::to_string(image.pixelAspectRatio.numerator) + "/" +
                   std::to_string(image.pixelAspectRatio.denominator) + " in " +
                   std::string(description(*context.container)));
}

void planCopiedVideo(PlanContext& context, PlannedVideo& video, const std::optional<VideoFrameRate>& asked,
                     const std::optional<VideoFrameRate>& sourceRate) {
  const VideoStreamDescription& stream = *context.image->stream;
  video.rotation = stream.rotation;
  if (context.image->group->isImageSequence) {
    context.fail(imagesNotCopied, context.image->part->flag);
  } else if (context.container && !holdsCodec(*context.container, stream.codecName)) {
    context.fail(containerCannotHold, context.containerFlag(),
                 (stream.codecName.empty() ? "video of an unknown codec" : printable(stream.codecName)) + " in " +
                     std::string(description(*context.container)),
                 "choose a codec with -vcodec, or another container");
  }
  checkPixels(context, video.source, stream.codecName);
  failUnlessUnchanged(context, frameRateFlag, !asked || !sourceRate || (asked == sourceRate && !stream.isVariable));
  const auto size = context.value<Size>(videoDimensionsFlag);
  const ImageSize shown = uprightSize(stream);
  const bool isShownSize = stream.pixelAspectRatio == MediaRational{1, 1} &&
                           size == Size{static_cast<double>(shown.width), static_cast<double>(shown.height)};
  failUnlessUnchanged(context, videoDimensionsFlag, size == Size{0, 0} || size == Size{1, 1} || isShownSize);
  const auto depth = context.value<std::int64_t>(videoDepthFlag);
  failUnlessUnchanged(context, videoDepthFlag, depth && stream.bitDepth && *depth == *stream.bitDepth);
  const auto space = askedColorSpace(context);
  failUnlessUnchanged(context, colorSpaceFlag, space && stream.colorSpace && *space == *stream.colorSpace);
  for (const std::string_view flag :
       {lutFlag, SAVTimecodeAddBurnFlag.rawValue(), SAVWatermarkFileBurnFilePathFlag.rawValue(),
        SAVWatermarkTextAddBurnFlag.rawValue()}) {
    failUnlessUnchanged(context, flag, false);
  }
}

/// Builds the steps of an image, each of which begins with what the one before it gives.
class StepList {
 public:
  StepList(std::vector<PlannedStep>& steps, ImageForm source) : steps_(steps), image_(std::move(source)) {}

  [[nodiscard]] const ImageForm& image() const noexcept { return image_; }

  /// Adds a step, and changes the image by the function.
  void add(VideoStep step, auto change) {
    change(image_);
    steps_.push_back({std::move(step), image_});
  }

 private:
  std::vector<PlannedStep>& steps_;
  ImageForm image_;
};

void setFormat(ImageForm& image, PixelFormat format) {
  const PixelFormatRow& row = tableRow(format);
  image.pixelFormat = row.rawValue;
  image.bitDepth = row.bitDepth;
  image.chroma = row.chroma;
  image.hasAlpha = row.hasAlpha;
  image.range = row.range;
}

void addFit(StepList& list, const FrameFit& fit) {
  const bool isScaled = ImageSize{list.image().width, list.image().height} != fit.scaled ||
                        (fit.squaresPixels && list.image().pixelAspectRatio != MediaRational{1, 1});
  if (isScaled) {
    list.add(ScaleStep(), [&](ImageForm& image) {
      image.width = fit.scaled.width;
      image.height = fit.scaled.height;
      if (fit.squaresPixels) image.pixelAspectRatio = {1, 1};
    });
  }
  if (!fit.crops) return;
  list.add(CropStep{fit.x, fit.y, fit.anchor}, [&](ImageForm& image) {
    image.width = fit.final.width;
    image.height = fit.final.height;
  });
}

/// Reports colours that cannot be converted, on the flag that asks for it.
void checkConversion(PlanContext& context, const ColorSpaceCodes& from, std::string_view flag) {
  if (isConvertible(from)) return;
  const VideoStreamDescription& stream = *context.image->stream;
  const auto text = [](std::string_view name, const ColorCode& code) {
    return std::string(name) + " " + std::to_string(code.number) +
           (code.name.empty() ? "" : " (" + printable(code.name) + ")");
  };
  context.fail(colorNotConvertible, flag,
               "the source has " + text("primaries", stream.primaries) + ", " + text("transfer", stream.transfer) +
                   " and " + text("matrix", stream.matrix));
}

void addLut(PlanContext& context, StepList& list, int outputDepth) {
  const PixelFormat format = planarRgb(std::max(list.image().bitDepth, outputDepth), list.image().hasAlpha);
  if (list.image().color.matrix != ColorSpaceCodes::rgbMatrix) checkConversion(context, list.image().color, lutFlag);
  if (list.image().pixelFormat != rawValue(format)) {
    list.add(FormatStep(), [&](ImageForm& image) {
      setFormat(image, format);
      image.color.matrix = ColorSpaceCodes::rgbMatrix;
    });
  }
  list.add(LutStep{.path = std::string(context.text(lutFlag))}, [](ImageForm&) {});
}

/// Returns the colour space of the output, and warns about what is assumed of it.
ColorSpaceCodes outputColor(PlanContext& context, const PlannedVideo& video,
                            const std::optional<SAVTranscodeArgumentColorSpaceValue>& asked, bool hasLut) {
  if ((asked || hasLut) && video.isColorAssumed) {
    context.warn(TranscodePlanWarningCode::colorAssumed, context.image->part->flag,
                 nameOf(video.source.color) + " is assumed");
  }
  if (asked) return *colorSpaceCodes(*asked);
  if (video.source.color.transfer == ColorSpaceCodes::linearTransfer && !hasLut) {
    context.warn(TranscodePlanWarningCode::linearLight, context.image->part->flag);
  }
  if (hasLut && colorSpaceOf(video.source.color) != SAVRec709ColorSpace) {
    context.warn(TranscodePlanWarningCode::lutColorUnstated, lutFlag);
  }
  ColorSpaceCodes color = video.source.color;
  if (color.matrix == ColorSpaceCodes::rgbMatrix) color.matrix = assumedColor(video.source.height).matrix;
  return color;
}

void checkDecoder(PlanContext& context, PlannedVideo& video) {
  const UsedImage& image = *context.image;
  if (!image.stream->isDecodable) {
    std::string detail =
        "which is " + (image.stream->codecName.empty() ? "of an unknown codec" : printable(image.stream->codecName));
    if (image.part->media->corporation) {
      detail += " of " + std::string(description(*image.part->media->corporation));
    }
    context.fail(notDecodable, image.part->flag, detail);
  }
  const std::string_view flag = SAVVideoGPUDecodingFlag.rawValue();
  if (!context.has(flag)) return;
  video.decodesOnGpu = !context.surroundings.openDevices.empty();
  if (!video.decodesOnGpu) context.warn(TranscodePlanWarningCode::gpuNotUsed, flag, "no GPU can be used here");
}

void planEncodedVideo(PlanContext& context, PlannedVideo& video, const VideoFrameRate& rate) {
  const VideoStreamDescription& stream = *context.image->stream;
  const std::string_view partFlag = context.image->part->flag;
  checkDecoder(context, video);
  const EncoderChoice choice = chooseEncoder(context, video.source);
  const int quarter = nearestQuarterTurn(stream.rotation);
  const int error = std::abs((stream.rotation - quarter + 180) % 360 - 180);
  if (error > 1) {
    context.warn(TranscodePlanWarningCode::rotationRounded, partFlag,
                 std::to_string(stream.rotation) + " degrees become " + std::to_string(quarter));
  }
  const ImageSize upright = uprightSize(stream);
  MediaRational pixelAspectRatio = stream.pixelAspectRatio;
  if (isTurned(stream)) std::swap(pixelAspectRatio.numerator, pixelAspectRatio.denominator);
  const FrameFit fit = planFrameFit(context, upright, pixelAspectRatio, choice);

  StepList list(video.steps, video.source);
  const bool isRotated = quarter != 0 || stream.isMirrored;
  const bool keepsLines = fit.scaled.height == stream.height && fit.final.height == stream.height && fit.y == 0;
  const bool keeps = video.source.isInterlaced && !isRotated && keepsLines && rate == video.source.frameRate &&
                     keepsFields(choice, fit.final);
  if (video.source.isInterlaced && !keeps) {
    context.warn(TranscodePlanWarningCode::deinterlaced, partFlag);
    if (!context.inventory.hasFilter("bwdif")) context.fail(filterMissing, partFlag, "bwdif");
    list.add(DeinterlaceStep(), [](ImageForm& image) { image.isInterlaced = false; });
  }
  if (stream.isVariable) {
    context.warn(TranscodePlanWarningCode::variableRate, partFlag, frameRateText(rate));
  }
  // Frames that are dropped take no further work, and those that are repeated take it once.
  const bool isSlower = rate.rawValue().rawValue() < video.source.frameRate.rawValue().rawValue();
  const bool changesRate = stream.isVariable || rate != video.source.frameRate;
  const auto addRate = [&] { list.add(RateStep(), [&](ImageForm& image) { image.frameRate = rate; }); };
  if (changesRate && (isSlower || stream.isVariable)) addRate();
  if (isRotated) {
    list.add(RotateStep{quarter, stream.isMirrored}, [&](ImageForm& image) {
      image.width = upright.width;
      image.height = upright.height;
      image.pixelAspectRatio = pixelAspectRatio;
    });
  }

  const bool hasLut = context.has(lutFlag);
  const auto space = askedColorSpace(context);
  ColorSpaceCodes color = outputColor(context, video, space, hasLut);
  if (choice.row != nullptr && choice.row->hasProResColors) color = withProResCodes(color);
  const int outputDepth = tableRow(choice.format).bitDepth;
  if (hasLut && context.surroundings.lutError) {
    context.fail(lutNotUsable, lutFlag, "which " + printable(*context.surroundings.lutError));
  }
  const auto area = [](ImageSize size) { return std::int64_t{size.width} * size.height; };
  const bool shrinks = area(fit.scaled) < area(upright);
  if (hasLut && !shrinks) addLut(context, list, outputDepth);
  addFit(list, fit);
  if (hasLut && shrinks) addLut(context, list, outputDepth);
  // The result of a LUT is what the LUT makes it; it is stated, not converted.
  video.isColorStated = space && hasLut;
  if (space && !hasLut && colorSpaceOf(video.source.color) != space) {
    if (!context.inventory.hasFilter("zscale")) context.fail(filterMissing, colorSpaceFlag, "zscale");
    checkConversion(context, video.source.color, colorSpaceFlag);
    list.add(ColorStep(), [&](ImageForm& image) {
      const bool isRgb = image.chroma == ChromaSubsampling::rgb;
      image.color = color;
      if (isRgb) image.color.matrix = ColorSpaceCodes::rgbMatrix;
    });
  }
  // Bars come after the LUT, so that black stays black.
  if (fit.pads) {
    list.add(PadStep{fit.x, fit.y}, [&](ImageForm& image) {
      image.width = fit.final.width;
      image.height = fit.final.height;
    });
  }
  if (changesRate && !isSlower && !stream.isVariable) addRate();
  ImageForm wanted = list.image();
  setFormat(wanted, choice.format);
  wanted.color = color;
  if (choice.row != nullptr && choice.row->fixedMatrix != 0) wanted.color.matrix = choice.row->fixedMatrix;
  if (wanted != list.image() && choice.row != nullptr) {
    list.add(FormatStep(), [&](ImageForm& image) { image = wanted; });
  }
  planBurnIns(context, video.steps, list.image());
  checkPixels(context, list.image(), choice.row != nullptr ? choice.row->codec.string() : std::string());
  video.encoder = planEncoder(context, choice, list.image(), keeps);
  if (auto gpu = planGpuEncoder(context, choice, *video.encoder)) {
    video.encoderWithoutGpu = std::exchange(video.encoder, std::move(gpu));
  }
}

}  // namespace

void planVideo(PlanContext& context) {
  const bool isLeftOut = context.isSet(SAVNoVideoFlag.rawValue());
  if (context.image && !context.keepsVideo && !isLeftOut) {
    if (context.isSet(videoCodecFlag) && !isCopyOfSource(videoCodecFlag, context.text(videoCodecFlag))) {
      context.fail(notInContainer, videoCodecFlag, "in " + std::string(description(*context.container)),
                   "remove -vcodec, or choose another container");
    } else {
      context.warn(TranscodePlanWarningCode::videoLeftOut, context.containerFlag());
    }
  }
  if (!context.keepsVideo) context.image.reset();
  if (!context.image) {
    context.ignore(lutFlag, "there is no video in the output");
    return;
  }

  const UsedImage& image = *context.image;
  const VideoStreamDescription& stream = *image.stream;
  PlannedVideo& video = context.plan.video.emplace();
  video.stream = stream.index;
  video.codecName = stream.codecName;
  video.source = sourceForm(stream);
  video.isColorAssumed = !statedColor(stream).areStated();
  video.isVariable = stream.isVariable;

  // The frames of an image sequence have no rate but the one that is asked for.
  const auto sourceRate = image.group->isImageSequence ? std::nullopt : stream.frameRate;
  const std::size_t errorCount = context.errors.size();
  const auto asked = askedRate(context, sourceRate);
  const auto rate = asked ? asked : sourceRate;
  const bool isReported =
      context.errors.size() > errorCount ||
      std::ranges::find(context.errors, frameRateFlag, &TranscodePlanError::place) != context.errors.end();
  if (!rate && !isReported) context.fail(rateNeeded, image.part->flag);
  if (!sourceRate && rate) video.source.frameRate = *rate;

  const ExplainedSetting* const codec = context.use(videoCodecFlag);
  if (codec == nullptr || isCopyOfSource(videoCodecFlag, codec->value)) {
    planCopiedVideo(context, video, asked, sourceRate);
    video.frameCount = sourceFrames(context);
  } else {
    if (rate && rate->rawValue().rawValue() > greatestFrameRate && !isReported) {
      if (stream.isVariable) {
        context.fail(rateNeeded, image.part->flag, "as its frames have no rate in common");
      } else {
        context.failRate(frameRateText(*rate) + " is above " + plainDecimalText(greatestFrameRate));
      }
    }
    planEncodedVideo(context, video, rate.value_or(video.source.frameRate));
    video.frameCount = outputFrames(context, video.source.frameRate, rate.value_or(video.source.frameRate));
  }
  const auto exact = rate ? inLowestTerms(rate->rawValue()) : std::nullopt;
  if (exact && context.container && !holdsFrameRate(*context.container, *exact)) {
    std::vector<std::string> rates;
    for (const int each : tableRow(*context.container).frameRates) rates.push_back(std::to_string(each));
    const std::string name(description(*context.container));
    context.failRate(frameRateText(*rate) + " in " + name,
                     name + " holds " + joined(rates, ", ") + ", and multiples of 24 and 30 also times 1000/1001");
  }
}

}  // namespace meridian::inline v0_2
