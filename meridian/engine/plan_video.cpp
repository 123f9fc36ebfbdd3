// The video of a transcode: copied, or decoded, taken through its steps and encoded.
#include "meridian/engine/plan_video.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/transcode_properties.h"
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

/// Returns the codes with those that are not stated taken from others; in R'G'B' there is no matrix.
ColorSpaceCodes completed(ColorSpaceCodes codes, const ColorSpaceCodes& others, bool isRgb) {
  constexpr int unspecified = 2;
  if (codes.primaries == unspecified) codes.primaries = others.primaries;
  if (codes.transfer == unspecified) codes.transfer = others.transfer;
  if (codes.matrix == unspecified) codes.matrix = isRgb ? 0 : others.matrix;
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
  form.range = stream.range == ColorRange::unknown && isRgb ? ColorRange::full : stream.range;
  form.color = completed({stream.primaries.number, stream.transfer.number, stream.matrix.number},
                         isRgb ? *colorSpaceCodes(SAVSrgbColorSpace) : assumedColor(stream.height), isRgb);
  form.isInterlaced = isInterlaced(stream.fieldOrder);
  form.frameRate = stream.frameRate.value_or(VideoFrameRate());
  return form;
}

/// Returns the rate that "-vr" asks for; absent for the source's. A number of 0 or 0.5 is a choice of conversion
/// settings: the source's rate, or half of it.
std::optional<VideoFrameRate> askedRate(PlanContext& context, const std::optional<VideoFrameRate>& sourceRate) {
  if (!context.value<float>(frameRateFlag)) return std::nullopt;
  const double number = doubleFromText(context.text(frameRateFlag)).value_or(0);
  if (number == FrameRate::match.rawValue()) return std::nullopt;
  if (number == FrameRate::halfstep.rawValue() && sourceRate) {
    const MediaRational rate = sourceRate->rawValue();
    return VideoFrameRate::matching({rate.numerator, rate.denominator * 2});
  }
  constexpr double greatest = 600;
  const auto meant = number <= greatest ? frameRateMeantBy(number) : std::nullopt;
  if (!meant || meant->rawValue().numerator < 1) {
    context.fail(rateOutOfRange, frameRateFlag);
    return std::nullopt;
  }
  return meant;
}

/// Returns the colour space that "-c_space" asks for. Values are lower-cased in reading, also the one with capitals.
std::optional<SAVTranscodeArgumentColorSpaceValue> askedColorSpace(PlanContext& context) {
  const auto space = context.oneOf<SAVTranscodeArgumentColorSpaceValue>(colorSpaceFlag);
  if (space || context.text(colorSpaceFlag) != lowercased(SAVSrgbColorSpace.rawValue())) return space;
  return SAVSrgbColorSpace;
}

/// Returns the number of frames of all parts at the rate of the source; absent if a part does not state its own.
std::optional<std::int64_t> sourceFrames(const SourceGroup& group) {
  std::int64_t frames = 0;
  for (const SourcePart& part : group.parts) {
    const VideoStreamDescription* const video = part.media != nullptr ? part.media->mainVideo() : nullptr;
    if (video == nullptr || !video->frameCount) return std::nullopt;
    const auto sum = checkedSum(frames, *video->frameCount);
    if (!sum) return std::nullopt;
    frames = *sum;
  }
  return frames;
}

std::optional<std::int64_t> framesAt(std::optional<std::int64_t> frames, const VideoFrameRate& from,
                                     const VideoFrameRate& to) {
  if (!frames || from == to) return frames;
  const auto count = truncatedInteger(
      std::round(static_cast<double>(*frames) / from.rawValue().rawValue() * to.rawValue().rawValue()));
  return count;
}

/// A flag that changes the image, and whether its value leaves it as it is after all.
void failUnlessUnchanged(PlanContext& context, std::string_view flag, bool isUnchanged) {
  const ExplainedSetting* const setting = context.use(flag);
  if (setting == nullptr || isUnchanged || isCopyOfSource(flag, setting->value)) return;
  // A value that cannot be read is an error already.
  const auto properties = propertiesOfFlag(flag);
  const bool isSwitch = !properties.empty() && properties.front()->kind == PropertyKind::onOff;
  if (setting->typed || isSwitch || flag == colorSpaceFlag) context.fail(needsVideoCodec, flag);
}

void planCopiedVideo(PlanContext& context, PlannedVideo& video, const std::optional<VideoFrameRate>& sourceRate) {
  const VideoStreamDescription& stream = *context.image->stream;
  video.rotation = stream.rotation;
  if (context.container && !holdsCodec(*context.container, stream.codecName)) {
    const std::string_view flag =
        context.isSet(SAVFileFormatFlag.rawValue()) ? SAVFileFormatFlag.rawValue() : SAVOutputFileFlag.rawValue();
    context.fail(notInContainer, flag,
                 "because " + std::string(description(*context.container)) + " cannot hold the copied " +
                     (stream.codecName.empty() ? "video" : printable(stream.codecName)),
                 "choose a codec with -vcodec, or another container");
  }
  const auto rate = askedRate(context, sourceRate);
  failUnlessUnchanged(context, frameRateFlag, !rate || rate == sourceRate || !sourceRate);
  const auto size = context.value<Size>(videoDimensionsFlag);
  failUnlessUnchanged(context, videoDimensionsFlag,
                      size == Size{0, 0} || size == Size{1, 1} ||
                          size == Size{static_cast<double>(stream.width), static_cast<double>(stream.height)});
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

void addLut(PlanContext& context, StepList& list, int outputDepth) {
  const PixelFormat format = planarRgb(std::max(list.image().bitDepth, outputDepth), list.image().hasAlpha);
  if (list.image().pixelFormat != rawValue(format)) {
    list.add(FormatStep(), [&](ImageForm& image) {
      setFormat(image, format);
      image.color.matrix = 0;
    });
  }
  list.add(LutStep{.path = std::string(context.text(lutFlag))}, [](ImageForm&) {});
}

/// Returns the colour space of the output, and warns about what is assumed of it.
ColorSpaceCodes outputColor(PlanContext& context, const PlannedVideo& video,
                            const std::optional<SAVTranscodeArgumentColorSpaceValue>& asked, bool hasLut) {
  if ((asked || hasLut) && video.isColorAssumed) {
    const auto taken = colorSpaceOf(video.source.color);
    context.warn(TranscodePlanWarningCode::colorAssumed, context.image->part->flag,
                 taken ? "it is taken for " + taken->string() : "");
  }
  if (asked) return *colorSpaceCodes(*asked);
  if (hasLut && colorSpaceOf(video.source.color) != SAVRec709ColorSpace) {
    context.warn(TranscodePlanWarningCode::lutColorUnstated, lutFlag);
  }
  ColorSpaceCodes color = video.source.color;
  if (color.matrix == 0) color.matrix = assumedColor(video.source.height).matrix;
  return color;
}

void checkDecoder(PlanContext& context, PlannedVideo& video) {
  const SourceImage& image = *context.image;
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
  if (!video.decodesOnGpu) context.warn(TranscodePlanWarningCode::gpuNotUsed, flag);
}

void planEncodedVideo(PlanContext& context, PlannedVideo& video, const VideoFrameRate& rate) {
  const VideoStreamDescription& stream = *context.image->stream;
  const std::string_view partFlag = context.image->part->flag;
  checkDecoder(context, video);
  const EncoderChoice choice = chooseEncoder(context, video.source);
  const ChromaSubsampling chroma = tableRow(choice.format).chroma;
  const bool needsEven = chroma == ChromaSubsampling::yuv420 || chroma == ChromaSubsampling::yuv422;

  const bool isTurned = stream.rotation % 180 != 0;
  const ImageSize upright = isTurned ? ImageSize{stream.height, stream.width} : ImageSize{stream.width, stream.height};
  MediaRational pixelAspectRatio = stream.pixelAspectRatio;
  if (isTurned) std::swap(pixelAspectRatio.numerator, pixelAspectRatio.denominator);
  const FrameFit fit = planFrameFit(context, upright, pixelAspectRatio, needsEven);

  StepList list(video.steps, video.source);
  const bool isRotated = stream.rotation != 0 || stream.isMirrored;
  const bool keeps = video.source.isInterlaced && !isRotated && fit.final.height == stream.height && !fit.pads &&
                     !fit.crops && rate == video.source.frameRate && keepsFields(choice, fit.final);
  if (video.source.isInterlaced && !keeps) {
    context.warn(TranscodePlanWarningCode::deinterlaced, partFlag);
    if (!context.inventory.hasFilter("bwdif")) context.fail(filterMissing, partFlag, "bwdif");
    list.add(DeinterlaceStep(), [](ImageForm& image) { image.isInterlaced = false; });
  }
  if (stream.isVariable) {
    context.warn(TranscodePlanWarningCode::variableRate, partFlag, describeFrameRate(rate.rawValue().rawValue()));
  }
  // Frames that are dropped take no further work, and those that are repeated take it once.
  const bool isSlower = rate.rawValue().rawValue() < video.source.frameRate.rawValue().rawValue();
  const bool changesRate = stream.isVariable || rate != video.source.frameRate;
  const auto addRate = [&] { list.add(RateStep(), [&](ImageForm& image) { image.frameRate = rate; }); };
  if (changesRate && (isSlower || stream.isVariable)) addRate();
  if (isRotated) {
    list.add(RotateStep{stream.rotation, stream.isMirrored}, [&](ImageForm& image) {
      image.width = upright.width;
      image.height = upright.height;
      image.pixelAspectRatio = pixelAspectRatio;
    });
  }

  const bool hasLut = context.has(lutFlag);
  const auto space = askedColorSpace(context);
  const ColorSpaceCodes color = outputColor(context, video, space, hasLut);
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
  if (space && !hasLut && colorSpaceOf(video.source.color) != space) {
    if (!context.inventory.hasFilter("zscale")) context.fail(filterMissing, colorSpaceFlag, "zscale");
    list.add(ColorStep(), [&](ImageForm& image) {
      const bool isRgb = image.chroma == ChromaSubsampling::rgb;
      image.color = color;
      if (isRgb) image.color.matrix = 0;
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
  if (wanted != list.image() && choice.row != nullptr) {
    list.add(FormatStep(), [&](ImageForm& image) { image = wanted; });
  }
  planBurnIns(context, video.steps, list.image());
  video.encoder = planEncoder(context, choice, list.image(), keeps);
}

}  // namespace

void planVideo(PlanContext& context) {
  const bool isLeftOut = context.has(SAVNoVideoFlag.rawValue());
  const bool hasContainerVideo = !context.container || tableRow(*context.container).holdsVideo;
  if (context.image && !isLeftOut && !hasContainerVideo) {
    if (context.isSet(videoCodecFlag) && !isCopyOfSource(videoCodecFlag, context.text(videoCodecFlag))) {
      context.fail(notInContainer, videoCodecFlag, "in " + std::string(description(*context.container)),
                   "remove -vcodec, or choose another container");
    } else {
      context.warn(TranscodePlanWarningCode::videoLeftOut, context.isSet(SAVFileFormatFlag.rawValue())
                                                               ? SAVFileFormatFlag.rawValue()
                                                               : SAVOutputFileFlag.rawValue());
    }
  }
  if (isLeftOut || !hasContainerVideo) context.image.reset();
  if (!context.image) return;

  const VideoStreamDescription& stream = *context.image->stream;
  PlannedVideo& video = context.plan.video.emplace();
  video.stream = stream.index;
  video.codecName = stream.codecName;
  video.source = sourceForm(stream);
  constexpr int unspecified = 2;
  video.isColorAssumed = stream.primaries.number == unspecified || stream.transfer.number == unspecified ||
                         (stream.matrix.number == unspecified && video.source.chroma != ChromaSubsampling::rgb);

  // The frames of an image sequence have no rate but the one that is asked for.
  const bool isSequence = context.image->group->isImageSequence;
  const auto sourceRate = isSequence ? std::nullopt : stream.frameRate;
  const auto asked = askedRate(context, sourceRate);
  const auto rate = asked ? asked : sourceRate;
  const bool isRateReported =
      std::ranges::find(context.errors, rateOutOfRange, &TranscodePlanError::code) != context.errors.end();
  if (!rate && !isRateReported) context.fail(rateNeeded, context.image->part->flag);
  if (isSequence && rate) video.source.frameRate = *rate;

  const ExplainedSetting* const codec = context.use(videoCodecFlag);
  if (codec == nullptr || isCopyOfSource(videoCodecFlag, codec->value)) {
    planCopiedVideo(context, video, isSequence ? rate : sourceRate);
    video.frameCount = sourceFrames(*context.image->group);
    return;
  }
  planEncodedVideo(context, video, rate.value_or(video.source.frameRate));
  video.frameCount =
      framesAt(sourceFrames(*context.image->group), video.source.frameRate, rate.value_or(video.source.frameRate));
}

}  // namespace meridian::inline v0_2
