// The encoder of the video: profile, depth, bit rate and options.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <set>

#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/engine/dnxhd_rates.h"
#include "meridian/engine/plan_video.h"

namespace meridian::inline v0_2 {
namespace {

using enum TranscodePlanErrorCode;

constexpr std::string_view profileFlag = SAVVideoProfileFlag.rawValue();
constexpr std::string_view bitRateFlag = SAVVideoBitRateFlag.rawValue();
constexpr std::string_view keyFramesFlag = SAVVideoKeyFramesFlag.rawValue();

std::string profileNames(const SAVTranscodeArgumentVideoCodecValue& codec) {
  std::vector<std::string_view> names;
  for (const VideoProfileRow& row : videoProfileRows) {
    if (row.codec == codec) names.push_back(row.name);
  }
  return joined(names, ", ");
}

/// Reads "-vprofile": a profile, or a profile, "@" and a level.
void chooseProfile(PlanContext& context, EncoderChoice& choice) {
  const auto text = context.value<std::string>(profileFlag);
  if (!text || text->empty()) return;
  const SAVTranscodeArgumentVideoCodecValue& codec = choice.row->codec;
  // The text of the setting, which lives as long as the words.
  const std::string_view written = context.text(profileFlag);
  const std::size_t separator = written.find('@');
  choice.profile = videoProfileNamed(codec, written.substr(0, separator));
  if (choice.profile == nullptr) {
    const std::string names = profileNames(codec);
    context.fail(profileNotAvailable, profileFlag, {},
                 names.empty() ? codec.string() + " has no profiles; remove -vprofile"
                               : "the profiles of " + codec.string() + " are " + names);
  }
  if (separator == std::string_view::npos) return;
  choice.level = written.substr(separator + 1);
  const auto levels = videoLevelsOf(codec);
  if (std::ranges::find(levels, choice.level) != levels.end() || choice.profile == nullptr) return;
  context.fail(profileNotAvailable, profileFlag, {},
               levels.empty() ? codec.string() + " has no levels; leave out \"@\" and what follows"
                              : "the levels of " + codec.string() + " are " + joined(levels, ", "));
}

/// Returns how the samples of colour lie in the output: as the profile has them, or as the codec's first format, or for
/// Motion JPEG as much of the source's as it has.
ChromaSubsampling chosenChroma(const EncoderChoice& choice, const ImageForm& source) {
  if (choice.profile != nullptr) return tableRow(choice.profile->formats.front()).chroma;
  if (choice.row->codec == SAVMotionJpegCodec && source.chroma != ChromaSubsampling::yuv420 &&
      source.chroma != ChromaSubsampling::yuv400) {
    return ChromaSubsampling::yuv422;
  }
  return tableRow(choice.row->formats.front()).chroma;
}

void chooseFormat(PlanContext& context, EncoderChoice& choice, const ImageForm& source) {
  const ChromaSubsampling chroma = chosenChroma(choice, source);
  const auto formats = choice.profile != nullptr ? choice.profile->formats : choice.row->formats;
  std::set<std::int64_t> depths;
  bool hasAlpha = false;
  for (const PixelFormat format : formats) {
    // H.265 has 10 bits of 4:2:2 by its profile alone.
    if (tableRow(format).chroma != chroma) continue;
    depths.insert(tableRow(format).bitDepth);
    hasAlpha = hasAlpha || tableRow(format).hasAlpha;
  }
  const auto asked = context.value<std::int64_t>(videoDepthFlag);
  std::int64_t depth = depths.contains(8) ? 8 : *depths.rbegin();
  if (depths.contains(source.bitDepth)) depth = source.bitDepth;
  if (asked && depths.contains(*asked)) {
    depth = *asked;
  } else if (asked) {
    std::vector<std::string> texts;
    std::ranges::transform(depths, std::back_inserter(texts), [](std::int64_t each) { return std::to_string(each); });
    const std::string subject =
        choice.row->codec.string() + (choice.profile != nullptr ? " " + std::string(choice.profile->name) : "");
    context.fail(bitDepthNotAvailable, videoDepthFlag, {}, subject + " has " + joined(texts, ", "));
  } else if (depth < source.bitDepth && *depths.rbegin() > depth) {
    context.warn(TranscodePlanWarningCode::depthReduced, context.image->part->flag,
                 std::to_string(source.bitDepth) + " become " + std::to_string(depth));
  }
  for (const PixelFormat format : formats) {
    const PixelFormatRow& row = tableRow(format);
    if (row.chroma == chroma && row.bitDepth == depth && row.hasAlpha == (hasAlpha && source.hasAlpha)) {
      choice.format = format;
    }
  }
  if (source.hasAlpha && !hasAlpha) {
    context.warn(TranscodePlanWarningCode::alphaLeftOut, context.image->part->flag);
  }
}

bool isDnxhr(const EncoderChoice& choice) {
  return choice.profile != nullptr && choice.profile->name.starts_with("dnxhr");
}

std::string sizeWithCross(const ImageForm& image) {
  return std::to_string(image.width) + " x " + std::to_string(image.height);
}

/// Returns the bit rate in megabits a second; absent if it is not set or out of range.
std::optional<double> askedBitRate(PlanContext& context) {
  const auto asked = context.value<float>(bitRateFlag);
  if (!asked) return std::nullopt;
  constexpr double greatest = 2000;
  // The number as written, of which the float is a rounding.
  const double rate = doubleFromText(context.text(bitRateFlag)).value_or(*asked);
  if (rate > 0 && rate <= greatest) return rate;
  std::string advice = "use more than 0 megabits a second";
  if (rate > greatest && std::isfinite(rate)) {
    const double meant = rate < 1e5 ? rate / 1e3 : rate / 1e6;
    advice = "the unit is megabits a second: did you mean " + plainDecimalText(meant) + "?";
  }
  context.fail(bitRateOutOfRange, bitRateFlag, {}, std::move(advice));
  return std::nullopt;
}

std::string bitsText(double megabits) { return std::to_string(std::llround(megabits * 1e6)); }

void planDnxhdRate(PlanContext& context, const EncoderChoice& choice, const ImageForm& image,
                   PlannedVideoEncoder& encoder) {
  const std::string_view sizeFlag = context.isSet(videoDimensionsFlag) ? videoDimensionsFlag : videoCodecFlag;
  if (isDnxhr(choice)) {
    context.ignore(bitRateFlag, "the profile decides the bit rate");
    if (image.width < 256 || image.height < 120) {
      context.fail(sizeNotAvailable, sizeFlag, sizeWithCross(image) + " is too small for DNxHR",
                   "use at least 256 x 120");
    }
    return;
  }
  const int depth = tableRow(choice.format).bitDepth;
  const DnxhdRateRow* const row = dnxhdRatesOf(image.width, image.height, depth, encoder.keepsFields);
  if (row == nullptr) {
    context.fail(sizeNotAvailable, sizeFlag, "DNxHD has no " + sizeWithCross(image),
                 "use 1920 x 1080 or 1280 x 720, or a profile for any size, such as -vprofile dnxhr_sq");
    context.use(bitRateFlag);
    return;
  }
  encoder.bitRate = defaultDnxhdRate(*row, image.frameRate.rawValue().rawValue());
  const auto rates = row->rates();
  const auto asked = context.value<float>(bitRateFlag);
  if (asked && std::ranges::any_of(rates, [&](int rate) { return static_cast<float>(rate) == *asked; })) {
    encoder.bitRate = *asked;
  } else if (asked) {
    const auto above = std::ranges::find_if(rates, [&](int rate) { return static_cast<float>(rate) > *asked; });
    std::string nearest;
    if (above != rates.begin()) nearest = std::to_string(*std::prev(above));
    if (above != rates.end()) nearest += (nearest.empty() ? "" : " or ") + std::to_string(*above);
    context.fail(bitRateNotAvailable, bitRateFlag, "for " + std::to_string(depth) + " bits and " + sizeWithCross(image),
                 "use " + nearest + " megabits a second");
  }
  encoder.options.push_back({"b", bitsText(*encoder.bitRate)});
}

void planRateControl(PlanContext& context, const EncoderChoice& choice, const ImageForm& image,
                     PlannedVideoEncoder& encoder) {
  const VideoEncoderRow& row = *choice.row;
  if (row.rateControl == VideoRateControl::listedRate) {
    planDnxhdRate(context, choice, image, encoder);
    return;
  }
  if (row.rateControl == VideoRateControl::none) {
    context.ignore(bitRateFlag, "the codec decides the bit rate of ProRes");
    return;
  }
  encoder.bitRate = askedBitRate(context);
  if (!encoder.bitRate) {
    encoder.options.push_back({std::string(row.quality.name), std::string(row.quality.value)});
    return;
  }
  encoder.options.push_back({"b", bitsText(*encoder.bitRate)});
  if (row.codec != SAVAvcH264Codec && row.codec != SAVHevcCodec) return;
  encoder.options.push_back({"maxrate", bitsText(*encoder.bitRate * 1.5)});
  encoder.options.push_back({"bufsize", bitsText(*encoder.bitRate * 2)});
}

/// Returns the interval between key frames; absent if it is not set or out of range.
std::optional<std::int64_t> keyFrameInterval(PlanContext& context, const VideoEncoderRow& row) {
  if (row.isIntraOnly) {
    context.ignore(keyFramesFlag, "every frame is a key frame");
    return std::nullopt;
  }
  const auto interval = context.value<std::int64_t>(keyFramesFlag);
  if (!interval || (*interval >= 1 && *interval <= std::numeric_limits<std::int32_t>::max())) return interval;
  context.fail(keyFramesOutOfRange, keyFramesFlag);
  return std::nullopt;
}

void planOptions(PlanContext& context, const EncoderChoice& choice, PlannedVideoEncoder& encoder) {
  const VideoEncoderRow& row = *choice.row;
  const auto add = [&encoder](std::string_view name, std::string_view value) {
    encoder.options.push_back({std::string(name), std::string(value)});
  };
  if (!row.variant.name.empty()) {
    add(row.variant.name, row.variant.value);
    add("vendor", "apl0");
  }
  if (choice.profile != nullptr) {
    add("profile", choice.profile->option);
  } else if (row.codec == SAVDnxhdCodec) {
    add("profile", "dnxhd");
  }
  if (encoder.keepsFields) add("flags", "+ildct");
  const auto interval = keyFrameInterval(context, row);
  if (interval) add("g", std::to_string(*interval));
  if (row.codec == SAVHevcCodec) {
    std::string parameters = "log-level=error";
    if (interval) parameters += ":keyint=" + std::to_string(*interval);
    if (!choice.level.empty()) parameters += ":level-idc=" + std::string(choice.level);
    add("x265-params", parameters);
  } else if (!choice.level.empty()) {
    add("level", choice.level);
  }
}

/// A kind of GPU and its encoder of a codec, by FFmpeg's names.
struct GpuEncoderRow {
  SAVTranscodeArgumentVideoCodecValue codec;
  std::string_view device;
  std::string_view encoder;
};

constexpr auto gpuEncoderRows = std::to_array<GpuEncoderRow>({
    {SAVAvcH264Codec, "vaapi", "h264_vaapi"},
    {SAVAvcH264Codec, "cuda", "h264_nvenc"},
    {SAVHevcCodec, "vaapi", "hevc_vaapi"},
    {SAVHevcCodec, "cuda", "hevc_nvenc"},
});

/// Chooses an encoder of a GPU that can be opened here; returns whether there is one.
bool chooseGpuEncoder(PlanContext& context, const EncoderChoice& choice, PlannedVideoEncoder& encoder) {
  const std::string_view flag = SAVVideoGPUEncodingFlag.rawValue();
  if (!context.has(flag)) return false;
  for (const GpuEncoderRow& row : gpuEncoderRows) {
    if (row.codec != choice.row->codec || choice.format != PixelFormat::yuv420p) continue;
    if (std::ranges::find(context.surroundings.openDevices, row.device) == context.surroundings.openDevices.end() ||
        context.inventory.encoder(row.encoder) == nullptr) {
      continue;
    }
    encoder.name = row.encoder;
    encoder.usesGpu = true;
    encoder.bitRate = askedBitRate(context);
    if (encoder.bitRate) {
      encoder.options.push_back({"b", bitsText(*encoder.bitRate)});
    } else {
      encoder.options.push_back({row.device == "vaapi" ? "qp" : "cq", std::string(choice.row->quality.value)});
    }
    if (choice.profile != nullptr) encoder.options.push_back({"profile", std::string(choice.profile->option)});
    if (!choice.level.empty()) encoder.options.push_back({"level", std::string(choice.level)});
    if (const auto interval = keyFrameInterval(context, *choice.row)) {
      encoder.options.push_back({"g", std::to_string(*interval)});
    }
    return true;
  }
  context.warn(TranscodePlanWarningCode::gpuNotUsed, flag);
  return false;
}

}  // namespace

EncoderChoice chooseEncoder(PlanContext& context, const ImageForm& source) {
  EncoderChoice choice;
  const auto codec = context.oneOf<SAVTranscodeArgumentVideoCodecValue>(videoCodecFlag);
  if (codec) choice.row = videoEncoderOf(*codec);
  if (choice.row == nullptr) {
    for (const std::string_view flag : {profileFlag, videoDepthFlag, bitRateFlag, keyFramesFlag}) context.use(flag);
    return choice;
  }
  chooseProfile(context, choice);
  chooseFormat(context, choice, source);
  return choice;
}

bool keepsFields(const EncoderChoice& choice, ImageSize size) {
  if (choice.row == nullptr || !choice.row->keepsFields) return false;
  if (choice.row->codec != SAVDnxhdCodec) return true;
  return !isDnxhr(choice) && dnxhdRatesOf(size.width, size.height, tableRow(choice.format).bitDepth, true) != nullptr;
}

PlannedVideoEncoder planEncoder(PlanContext& context, const EncoderChoice& choice, const ImageForm& image,
                                bool keepsFields) {
  PlannedVideoEncoder encoder;
  if (choice.row == nullptr) return encoder;
  const VideoEncoderRow& row = *choice.row;
  encoder.codec = row.codec;
  encoder.pixelFormat = choice.format;
  encoder.tag = row.tag;
  encoder.profile = context.text(profileFlag);
  encoder.keepsFields = keepsFields;
  const bool isReported =
      std::ranges::find(context.errors, wrongExtension, &TranscodePlanError::code) != context.errors.end();
  if (context.container && !isReported &&
      std::ranges::find(row.containers, *context.container) == row.containers.end()) {
    context.fail(notInContainer, videoCodecFlag, "in " + std::string(description(*context.container)));
  }
  if (chooseGpuEncoder(context, choice, encoder)) return encoder;
  for (const std::string_view name : row.encoders) {
    if (!name.empty() && encoder.name.empty() && context.inventory.encoder(name) != nullptr) encoder.name = name;
  }
  if (encoder.name.empty()) context.fail(encoderMissing, videoCodecFlag, std::string(row.encoders[0]));
  planRateControl(context, choice, image, encoder);
  planOptions(context, choice, encoder);
  return encoder;
}

}  // namespace meridian::inline v0_2
