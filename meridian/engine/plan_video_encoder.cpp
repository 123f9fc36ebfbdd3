// The encoder of the video: profile, depth, bit rate and options.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <set>

#include "meridian/base/is_in.h"
#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/cli/transcode_properties.h"
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
  if (choice.profile == nullptr || std::ranges::find(levels, choice.level, &VideoLevelRow::name) != levels.end())
    return;
  std::vector<std::string_view> names;
  std::ranges::transform(levels, std::back_inserter(names), &VideoLevelRow::name);
  context.fail(profileNotAvailable, profileFlag, {},
               levels.empty() ? codec.string() + " has no levels; leave out \"@\" and what follows"
                              : "the levels of " + codec.string() + " are " + joined(names, ", "));
}

/// Reports a level that is too low for the images.
void checkLevel(PlanContext& context, const EncoderChoice& choice, const ImageForm& image) {
  const auto levels = videoLevelsOf(choice.row->codec);
  const auto holds = [&image](const VideoLevelRow& level) {
    return level.holds(image.width, image.height, image.frameRate.rawValue().rawValue());
  };
  const auto chosen = std::ranges::find(levels, choice.level, &VideoLevelRow::name);
  if (chosen == levels.end() || holds(*chosen)) return;
  const auto enough = std::ranges::find_if(levels, holds);
  const std::string subject = sizeText(image) + " at " + frameRateText(image.frameRate);
  context.fail(profileNotAvailable, profileFlag, {},
               enough != levels.end() ? subject + " needs level " + std::string(enough->name) + " or higher"
                                      : "no level holds " + subject + "; leave out \"@\" and what follows");
}

/// Returns how the samples of colour lie in the output: as the profile has them, or as the codec's first format, or as
/// much of the source's as the codec has.
ChromaSubsampling chosenChroma(const EncoderChoice& choice, const ImageForm& source) {
  if (choice.profile != nullptr) return tableRow(choice.profile->formats.front()).chroma;
  if (choice.row->followsChroma && source.chroma != ChromaSubsampling::yuv420 &&
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
  if (depths.contains(source.bitDepth)) {
    depth = source.bitDepth;
  } else if (choice.profile != nullptr) {
    // A profile of more than 8 bits is chosen for them.
    for (const std::int64_t each : depths) {
      if (each <= source.bitDepth) depth = each;
    }
  }
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
                 std::to_string(source.bitDepth) + " become " + std::to_string(depth), "set -vbd to choose the depth");
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

constexpr double leastBitRate = 0.001;
constexpr double greatestBitRate = 2000;

/// Returns the bit rate that "-vbr" asks for, in megabits a second; absent if it is not set or out of range, and for
/// the source's if that is not stated.
std::optional<double> askedBitRate(PlanContext& context) {
  if (isCopyOfSource(bitRateFlag, context.text(bitRateFlag))) {
    context.use(bitRateFlag);
    const auto stated = context.image->stream->bitRate;
    if (stated) return std::clamp(static_cast<double>(*stated) / 1e6, leastBitRate, greatestBitRate);
    context.warn(TranscodePlanWarningCode::withoutEffect, bitRateFlag, "the source does not state its bit rate");
    return std::nullopt;
  }
  const auto asked = context.value<float>(bitRateFlag);
  if (!asked) return std::nullopt;
  // The number as written, of which the float is a rounding.
  const double rate = doubleFromText(context.text(bitRateFlag)).value_or(*asked);
  if (rate >= leastBitRate && rate <= greatestBitRate) return rate;
  std::string advice = "use at least " + plainDecimalText(leastBitRate) + " megabits a second";
  if (rate > greatestBitRate && std::isfinite(rate)) {
    const double meant = rate < 1e5 ? rate / 1e3 : rate / 1e6;
    advice = "the unit is megabits a second: did you mean " + plainDecimalText(meant) + "?";
  }
  context.fail(bitRateOutOfRange, bitRateFlag, {}, std::move(advice));
  return std::nullopt;
}

std::string bitsText(double megabits) { return std::to_string(std::llround(megabits * 1e6)); }

/// Returns the rates next to one that the codec does not have: "90 or 115".
std::string nearestRates(std::span<const int> rates, double asked) {
  const auto above = std::ranges::find_if(rates, [asked](int rate) { return rate > asked; });
  std::string text;
  if (above != rates.begin()) text = std::to_string(*std::prev(above));
  if (above != rates.end()) text += (text.empty() ? "" : " or ") + std::to_string(*above);
  return text;
}

void planDnxhdRate(PlanContext& context, const EncoderChoice& choice, const ImageForm& image,
                   PlannedVideoEncoder& encoder) {
  const std::string_view sizeFlag =
      context.isSet(videoDimensionsFlag) ? videoDimensionsFlag : context.image->part->flag;
  if (isDnxhr(choice)) {
    context.ignore(bitRateFlag, "the profile decides the bit rate");
    if (image.width < 256 || image.height < 120) {
      context.fail(sizeNotAvailable, sizeFlag, sizeText(image) + " is too small for DNxHR", "use at least 256 x 120");
    }
    return;
  }
  const int depth = tableRow(choice.format).bitDepth;
  const DnxhdRateRow* const row = dnxhdRatesOf(image.width, image.height, depth, encoder.keepsFields);
  if (row == nullptr) {
    context.fail(sizeNotAvailable, sizeFlag, "DNxHD has no " + sizeText(image),
                 "use 1920 x 1080 or 1280 x 720, or a profile for any size, such as -vprofile dnxhr_sq");
    context.use(bitRateFlag);
    return;
  }
  encoder.bitRate = defaultDnxhdRate(*row, image.frameRate.rawValue().rawValue());
  const auto rates = row->rates();
  const bool isCopy = isCopyOfSource(bitRateFlag, context.text(bitRateFlag));
  const auto asked = askedBitRate(context);
  const auto distance = [&asked](int rate) { return std::abs(rate - *asked); };
  if (asked && isCopy) {
    encoder.bitRate = *std::ranges::min_element(rates, {}, distance);
  } else if (asked && std::ranges::any_of(rates, [&](int rate) { return rate == *asked; })) {
    encoder.bitRate = asked;
  } else if (asked) {
    constexpr int least = 8;
    const DnxhdRateRow* const other = dnxhdRatesOf(image.width, image.height, least, encoder.keepsFields);
    const bool hasOther = depth != least && other != nullptr &&
                          std::ranges::any_of(other->rates(), [&](int rate) { return rate == *asked; });
    context.fail(bitRateNotAvailable, bitRateFlag, "for " + std::to_string(depth) + " bits and " + sizeText(image),
                 "use " + nearestRates(rates, *asked) + " megabits a second" + (hasOther ? ", or -vbd 8" : ""));
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
    context.ignore(bitRateFlag, "each ProRes codec has its own bit rate");
    return;
  }
  encoder.bitRate = askedBitRate(context);
  if (!encoder.bitRate) {
    if (!row.quality.name.empty()) {
      encoder.options.push_back({std::string(row.quality.name), std::string(row.quality.value)});
    }
    if (row.quantizer > 0) encoder.quantizer = row.quantizer;
    return;
  }
  encoder.options.push_back({"b", bitsText(*encoder.bitRate)});
  if (!row.limitsRate) return;
  // FFmpeg hands both on as 32-bit integers.
  constexpr double greatest = std::numeric_limits<std::int32_t>::max() / 1e6;
  encoder.options.push_back({"maxrate", bitsText(std::min(*encoder.bitRate * 1.5, greatest))});
  encoder.options.push_back({"bufsize", bitsText(std::min(*encoder.bitRate * 2, greatest))});
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
  const std::string_view profile = choice.profile != nullptr ? choice.profile->option : row.profile;
  if (!profile.empty()) add("profile", profile);
  if (!row.vendor.empty()) add("vendor", row.vendor);
  if (encoder.keepsFields) add("flags", "+ildct");
  const auto interval = keyFrameInterval(context, row);
  if (interval) add("g", std::to_string(*interval));
  if (!row.parameters.empty()) {
    std::string parameters = "log-level=error";
    if (interval) parameters += ":keyint=" + std::to_string(*interval);
    if (!choice.level.empty()) parameters += ":level-idc=" + std::string(choice.level);
    add(row.parameters, parameters);
  } else if (!choice.level.empty()) {
    add("level", choice.level);
  }
}

/// Chooses an encoder of a GPU that can be opened here; returns whether there is one.
bool chooseGpuEncoder(PlanContext& context, const EncoderChoice& choice, const std::string& interval,
                      PlannedVideoEncoder& encoder) {
  const std::string_view flag = SAVVideoGPUEncodingFlag.rawValue();
  if (!context.has(flag)) return false;
  const SAVTranscodeArgumentVideoCodecValue& codec = choice.row->codec;
  const bool isFormat = choice.format == PixelFormat::yuv420p;
  const auto hasProfile = [&choice](const GpuEncoderRow& row) {
    return choice.profile == nullptr || isIn(row.profiles, choice.profile->option);
  };
  for (const GpuEncoderRow& row : gpuEncoderRows) {
    if (row.codec != codec || !isFormat || !hasProfile(row)) continue;
    if (!isIn(context.surroundings.openDevices, std::string(row.device)) ||
        context.inventory.encoder(row.encoder) == nullptr) {
      continue;
    }
    encoder.name = row.encoder;
    encoder.usesGpu = true;
    if (encoder.bitRate) {
      encoder.options.push_back({"b", bitsText(*encoder.bitRate)});
    } else {
      encoder.options.push_back({std::string(row.quality), std::string(choice.row->quality.value)});
    }
    if (choice.profile != nullptr) encoder.options.push_back({"profile", std::string(choice.profile->option)});
    if (!choice.level.empty()) encoder.options.push_back({"level", std::string(choice.level)});
    if (!interval.empty()) encoder.options.push_back({"g", interval});
    return true;
  }
  if (std::ranges::find(gpuEncoderRows, codec, &GpuEncoderRow::codec) == gpuEncoderRows.end()) {
    context.warn(TranscodePlanWarningCode::gpuNotUsed, flag, "no GPU encodes " + codec.string());
  } else if (std::ranges::none_of(gpuEncoderRows,
                                  [&](const GpuEncoderRow& row) { return row.codec == codec && hasProfile(row); })) {
    context.warn(TranscodePlanWarningCode::gpuNotUsed, flag,
                 "no GPU encodes the profile " + std::string(choice.profile->name));
  } else if (!isFormat) {
    context.warn(TranscodePlanWarningCode::gpuNotUsed, flag, "GPUs encode 8 bits of 4:2:0 alone", "set -vbd 8");
  } else {
    context.warn(TranscodePlanWarningCode::gpuNotUsed, flag, "no GPU that encodes can be used here");
  }
  return false;
}

/// Returns the encoder for images of this size; null if this FFmpeg lacks it.
const VideoEncoder* encoderFor(const PlanContext& context, const EncoderChoice& choice, const ImageForm& image,
                               bool keepsFields) {
  const auto encodes = [&](const VideoEncoder& each) { return each.encodes(image.height, keepsFields, image.color); };
  if (choice.encoder == nullptr || encodes(*choice.encoder)) return choice.encoder;
  const auto& encoders = choice.row->encoders;
  const auto other = std::ranges::find_if(encoders, [&](const VideoEncoder& each) {
    return !each.name.empty() && encodes(each) && context.inventory.encoder(each.name) != nullptr;
  });
  return other != encoders.end() ? &*other : nullptr;
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
  const std::string format(rawValue(choice.format));
  for (const VideoEncoder& each : choice.row->encoders) {
    const EncoderDescription* const found = each.name.empty() ? nullptr : context.inventory.encoder(each.name);
    if (found == nullptr || !(found->pixelFormats.empty() || isIn(found->pixelFormats, format))) continue;
    choice.encoder = &each;
    break;
  }
  return choice;
}

bool keepsFields(const EncoderChoice& choice, ImageSize size) {
  if (choice.row == nullptr || !choice.row->keepsFields) return false;
  if (choice.row->codec != SAVDnxhdCodec) return true;
  return !isDnxhr(choice) && dnxhdRatesOf(size.width, size.height, tableRow(choice.format).bitDepth, true) != nullptr;
}

std::optional<PlannedVideoEncoder> planGpuEncoder(PlanContext& context, const EncoderChoice& choice,
                                                  const PlannedVideoEncoder& encoder) {
  PlannedVideoEncoder gpu = encoder;
  const auto interval = std::ranges::find(encoder.options, "g", &PlannedOption::name);
  gpu.options.clear();
  gpu.quantizer.reset();
  const bool isChosen =
      choice.row != nullptr &&
      chooseGpuEncoder(context, choice, interval != encoder.options.end() ? interval->value : "", gpu);
  return isChosen ? std::optional(std::move(gpu)) : std::nullopt;
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
  if (keepsFields) encoder.fieldOrder = context.image->stream->fieldOrder;
  const bool isReported =
      std::ranges::find(context.errors, wrongExtension, &TranscodePlanError::code) != context.errors.end();
  if (context.container && !isReported && !holdsEncoded(*context.container, row.codec)) {
    context.fail(notInContainer, videoCodecFlag, "in " + std::string(description(*context.container)));
  }
  const auto rate = inLowestTerms(image.frameRate.rawValue());
  if (row.greatestTimeScale != 0 && rate && rate->numerator > row.greatestTimeScale) {
    context.failRate(row.codec.string() + " cannot count " + frameRateText(image.frameRate));
  }
  checkLevel(context, choice, image);
  if (const VideoEncoder* const chosen = encoderFor(context, choice, image, keepsFields)) {
    encoder.name = chosen->name;
  } else {
    const std::string name(row.encoders.front().name);
    const bool lacksFormat = context.inventory.encoder(name) != nullptr;
    context.fail(encoderMissing, videoCodecFlag,
                 name + (lacksFormat ? " with " + std::string(rawValue(choice.format)) : ""));
  }
  planRateControl(context, choice, image, encoder);
  planOptions(context, choice, encoder);
  return encoder;
}

}  // namespace meridian::inline v0_2
