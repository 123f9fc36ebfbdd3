#include "meridian/presets/stored_preset.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string>

#include "meridian/base/numbers.h"
#include "meridian/base/text.h"
#include "meridian/cli/dimensions_text.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_values.h"

namespace meridian::inline v0_2 {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using stored::AudioConversionOptions;
using stored::PresetInformation;
using stored::VideoConversionOptions;

struct CodecRow {
  ConversionCodecType codec;
  stored::CodecType stored;
};

constexpr auto codecs = std::to_array<CodecRow>({
    {ConversionCodecType::dnxhd, stored::CODEC_TYPE_DNXHD},
    {ConversionCodecType::h264, stored::CODEC_TYPE_H264},
    {ConversionCodecType::h265, stored::CODEC_TYPE_H265},
    {ConversionCodecType::motionJpeg, stored::CODEC_TYPE_MOTION_JPEG},
    {ConversionCodecType::mpeg4, stored::CODEC_TYPE_MPEG4},
    {ConversionCodecType::proRes4444, stored::CODEC_TYPE_PRORES_4444},
    {ConversionCodecType::proRes4444XQ, stored::CODEC_TYPE_PRORES_4444_XQ},
    {ConversionCodecType::proRes422, stored::CODEC_TYPE_PRORES_422},
    {ConversionCodecType::proRes422HQ, stored::CODEC_TYPE_PRORES_422_HQ},
    {ConversionCodecType::proRes422LT, stored::CODEC_TYPE_PRORES_422_LT},
    {ConversionCodecType::proRes422Proxy, stored::CODEC_TYPE_PRORES_422_PROXY},
});
static_assert(std::ranges::is_permutation(codecs, allCases<ConversionCodecType>(), {}, &CodecRow::codec));

struct SizingRow {
  VideoSizingKind sizing;
  stored::SizingKind stored;
};

constexpr auto sizings = std::to_array<SizingRow>({
    {VideoSizingKind::match, stored::SIZING_KIND_MATCH_SOURCE},
    {VideoSizingKind::scale, stored::SIZING_KIND_SCALE},
    {VideoSizingKind::pixels, stored::SIZING_KIND_PIXELS},
});

enum class Holder : std::uint8_t { options, video, audio };

/// A setting that has a field of its own.
struct FieldRow {
  std::string_view flag;
  Holder holder;
  int field;
};

/// Ordered as the settings of the built-in presets are.
constexpr auto fields = std::to_array<FieldRow>({
    {SAVFileFormatFlag.rawValue(), Holder::options, stored::TranscodeOptions::kFileFormatFieldNumber},
    {SAVNoVideoFlag.rawValue(), Holder::video, VideoConversionOptions::kOmitFieldNumber},
    {SAVVideoFormatFlag.rawValue(), Holder::video, VideoConversionOptions::kCodecTypeFieldNumber},
    {SAVVideoFrameRateFlag.rawValue(), Holder::video, VideoConversionOptions::kFrameRateFieldNumber},
    {SAVVideoDimensionsFlag.rawValue(), Holder::video, VideoConversionOptions::kSizingKindFieldNumber},
    {SAVVideoAspectScalingFlag.rawValue(), Holder::video, VideoConversionOptions::kAspectScalingFieldNumber},
    {SAVVideoAspectCropAnchorFlag.rawValue(), Holder::video, VideoConversionOptions::kCropAnchorFieldNumber},
    {SAVVideoBitRateFlag.rawValue(), Holder::video, VideoConversionOptions::kBitRateFieldNumber},
    {SAVVideoBitDepthFlag.rawValue(), Holder::video, VideoConversionOptions::kBitDepthFieldNumber},
    {SAVVideoKeyFramesFlag.rawValue(), Holder::video, VideoConversionOptions::kKeyFrameIntervalFieldNumber},
    {SAVVideoColorSpaceFlag.rawValue(), Holder::video, VideoConversionOptions::kColorSpaceFieldNumber},
    {SAVVideoProfileFlag.rawValue(), Holder::video, VideoConversionOptions::kProfileFieldNumber},
    {SAVColorLutFileFlag.rawValue(), Holder::video, VideoConversionOptions::kLutFileFieldNumber},
    {SAVVideoGPUDecodingFlag.rawValue(), Holder::video, VideoConversionOptions::kGpuDecodeFieldNumber},
    {SAVVideoGPUEncodingFlag.rawValue(), Holder::video, VideoConversionOptions::kGpuEncodeFieldNumber},
    {SAVPrepareForWebFlag.rawValue(), Holder::options, stored::TranscodeOptions::kPrepareForWebFieldNumber},
    {SAVNoAudioFlag.rawValue(), Holder::audio, AudioConversionOptions::kOmitFieldNumber},
    {SAVCopyAudioFlag.rawValue(), Holder::audio, AudioConversionOptions::kCopyFieldNumber},
    {SAVAudioFormatFlag.rawValue(), Holder::audio, AudioConversionOptions::kFormatFieldNumber},
    {SAVAudioQualityFlag.rawValue(), Holder::audio, AudioConversionOptions::kQualityFieldNumber},
    {SAVAudioSampleRateFlag.rawValue(), Holder::audio, AudioConversionOptions::kSampleRateFieldNumber},
    {SAVAudioBitRateFlag.rawValue(), Holder::audio, AudioConversionOptions::kBitRateFieldNumber},
    {SAVAudioBitsPerChannelFlag.rawValue(), Holder::audio, AudioConversionOptions::kBitsPerChannelFieldNumber},
    {SAVDiscreteAudioFlag.rawValue(), Holder::audio, AudioConversionOptions::kDiscreteFieldNumber},
    {SAVAudioChannelLayoutFlag.rawValue(), Holder::audio, AudioConversionOptions::kChannelLayoutFieldNumber},
    {SAVAudioChannelLayoutTagFlag.rawValue(), Holder::audio, AudioConversionOptions::kChannelLayoutTagFieldNumber},
});

const FieldRow* fieldOf(std::string_view flag) {
  const auto found = std::ranges::find(fields, flag, &FieldRow::flag);
  return found == fields.end() ? nullptr : &*found;
}

/// Returns true if a flag in normal form belongs to one job rather than to a preset.
bool isOfOneJob(std::string_view flag) {
  constexpr auto jobFlags = std::to_array<std::string_view>({
      SAVOutputFileFlag.rawValue(),
      SAVProgressFileFlag.rawValue(),
      SAVProgressOutputPrefixFlag.rawValue(),
      SAVOverwriteExistingFlag.rawValue(),
      SAVWorkDirectoryFlag.rawValue(),
  });
  const FlagDescription* const known = findFlag(flag);
  return flag.starts_with(SAVInputPrefixFlag.rawValue()) || std::ranges::find(jobFlags, flag) != jobFlags.end() ||
         (known != nullptr && known->group == FlagGroup::command);
}

const Message& holderOf(const stored::TranscodeOptions& options, Holder holder) {
  if (holder == Holder::video) return options.video();
  if (holder == Holder::audio) return options.audio();
  return options;
}

Message& mutableHolderOf(stored::TranscodeOptions& options, Holder holder) {
  if (holder == Holder::video) return *options.mutable_video();
  if (holder == Holder::audio) return *options.mutable_audio();
  return options;
}

std::optional<VideoDimension> dimensionOf(const VideoConversionOptions& video) {
  const auto row = std::ranges::find(sizings, video.sizing_kind(), &SizingRow::stored);
  if (row == sizings.end()) return std::nullopt;
  return VideoDimension::fromStored(row->sizing, {video.width(), video.height()});
}

void setDimension(VideoConversionOptions& video, const VideoDimension& dimension) {
  video.set_sizing_kind(std::ranges::find(sizings, dimension.sizing(), &SizingRow::sizing)->stored);
  video.set_width(dimension.size().width);
  video.set_height(dimension.size().height);
}

std::optional<std::string> dimensionsText(const VideoConversionOptions& video) {
  const auto dimension = dimensionOf(video);
  if (!dimension || dimension->isScaleOption()) return std::nullopt;
  return dimensionsTextOfSize(dimension->size());
}

std::optional<ConversionCodecType> codecOf(const VideoConversionOptions& video) {
  const auto row = std::ranges::find(codecs, video.codec_type(), &CodecRow::stored);
  if (row == codecs.end()) return std::nullopt;
  return row->codec;
}

void setCodec(VideoConversionOptions& video, ConversionCodecType codec) {
  video.set_codec_type(std::ranges::find(codecs, codec, &CodecRow::codec)->stored);
}

std::optional<std::string> codecText(const VideoConversionOptions& video) {
  const auto codec = codecOf(video);
  if (!codec) return std::nullopt;
  return SAVTranscodeArgumentVideoCodecValue::fromConversionCodecType(*codec).string();
}

/// Returns the field as text of a command line; absent if it is empty, or a command line cannot express it.
std::optional<std::string> textOfField(const stored::TranscodeOptions& options, const FieldRow& row) {
  if (row.flag == SAVVideoFormatFlag.rawValue()) return codecText(options.video());
  if (row.flag == SAVVideoDimensionsFlag.rawValue()) return dimensionsText(options.video());
  if (row.flag == SAVVideoFrameRateFlag.rawValue() && !FrameRate::isFramesPerSecond(options.video().frame_rate())) {
    return std::nullopt;
  }
  const Message& holder = holderOf(options, row.holder);
  const FieldDescriptor* const field = holder.GetDescriptor()->FindFieldByNumber(row.field);
  const google::protobuf::Reflection& reflection = *holder.GetReflection();
  if (!reflection.HasField(holder, field)) return std::nullopt;
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_BOOL:
      return std::string();
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return shortestDecimalText(reflection.GetDouble(holder, field));
    case FieldDescriptor::CPPTYPE_INT64:
      return std::to_string(reflection.GetInt64(holder, field));
    default:
      return reflection.GetString(holder, field);
  }
}

/// Returns true if the field holds a value, even one that a command line cannot express.
bool isSet(const stored::TranscodeOptions& options, const FieldRow& row) {
  if (row.flag == SAVVideoDimensionsFlag.rawValue()) return dimensionOf(options.video()) != VideoDimension::match;
  const Message& holder = holderOf(options, row.holder);
  return holder.GetReflection()->HasField(holder, holder.GetDescriptor()->FindFieldByNumber(row.field));
}

/// Sets the field from the text; clears it if the text does not parse as the field's type. Without a text the field is
/// cleared too, unless it holds a value that a command line cannot express.
void setField(stored::TranscodeOptions& options, const FieldRow& row, std::optional<std::string_view> text) {
  // A field may be more precise than its text, such as a size beyond the precision of a float: keep it as it is.
  if (text == textOfField(options, row)) return;
  Message& holder = mutableHolderOf(options, row.holder);
  const FieldDescriptor* const field = holder.GetDescriptor()->FindFieldByNumber(row.field);
  const google::protobuf::Reflection& reflection = *holder.GetReflection();
  reflection.ClearField(&holder, field);
  if (row.flag == SAVVideoDimensionsFlag.rawValue()) {
    const auto size = text ? sizeFromDimensionsText(*text) : std::nullopt;
    const auto dimension = size ? VideoDimension::fromStored(VideoSizingKind::pixels, *size) : std::nullopt;
    setDimension(*options.mutable_video(), dimension.value_or(VideoDimension::match));
    return;
  }
  if (!text) return;
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_BOOL:
      reflection.SetBool(&holder, field, true);
      break;
    case FieldDescriptor::CPPTYPE_DOUBLE:
      if (const auto number = doubleFromText(*text)) {
        const bool isRate = row.flag == SAVVideoFrameRateFlag.rawValue();
        if (!isRate || FrameRate::isFramesPerSecond(*number)) reflection.SetDouble(&holder, field, *number);
      }
      break;
    case FieldDescriptor::CPPTYPE_INT64:
      if (const auto number = integerFromText(*text)) reflection.SetInt64(&holder, field, *number);
      break;
    case FieldDescriptor::CPPTYPE_ENUM:
      if (const auto codec = SAVTranscodeArgumentVideoCodecValue(*text).conversionCodecType()) {
        setCodec(*options.mutable_video(), *codec);
      }
      break;
    default:
      reflection.SetString(&holder, field, std::string(*text));
  }
}

/// Returns the text that a field of this row gives back after it was set from the text.
std::optional<std::string> textThroughField(const FieldRow& row, std::string_view text) {
  stored::TranscodeOptions options;
  setField(options, row, text);
  return textOfField(options, row);
}

/// Returns the store's settings that belong in a preset, keyed by flags in normal form. If flags differ only in form,
/// the one in normal form wins, and a valid setting wins over a rejected one.
TextDictionary presetSettingsOf(const TranscodeCliArguments& arguments) {
  TextDictionary settings;
  const auto add = [&settings](const TextDictionary& entries, bool inNormalForm) {
    for (const auto& [flag, value] : entries) {
      std::string normal = normalizedFlag(flag);
      if ((normal == flag) == inNormalForm && !isOfOneJob(normal)) settings.setIfAbsent(std::move(normal), value);
    }
  };
  const auto addAll = [&add](const TextDictionary& entries) {
    add(entries, true);
    add(entries, false);
  };
  addAll(arguments.flagValueLookup());
  if (const auto& rejected = arguments.stored().invalidKeyValueLookup) addAll(*rejected);
  return settings;
}

/// Updates the settings beside the fields: sets the values of those that the dictionary holds and erases them there,
/// and removes the others. Messages are updated in place, so that fields unknown to this library survive.
void updateOtherSettings(stored::TranscodeOptions& options, TextDictionary& beside) {
  auto& settings = *options.mutable_other_settings();
  const auto isGone = [&beside](stored::Setting& setting) {
    const std::string flag = normalizedFlag(setting.flag());
    const std::string* const value = beside.find(flag);
    if (value == nullptr) return true;
    setting.set_flag(flag);
    setting.set_value(*value);
    beside.erase(flag);
    return false;
  };
  settings.erase(std::remove_if(settings.begin(), settings.end(), isGone), settings.end());
}

/// Removes the text that is stored beside the flag's field.
void removeOtherSetting(stored::TranscodeOptions& options, std::string_view flag) {
  auto& settings = *options.mutable_other_settings();
  const auto isOfFlag = [flag](const stored::Setting& setting) { return normalizedFlag(setting.flag()) == flag; };
  settings.erase(std::remove_if(settings.begin(), settings.end(), isOfFlag), settings.end());
}

}  // namespace

PresetInformation storedPreset(std::string_view name, const TranscodeCliArguments& arguments) {
  PresetInformation preset;
  preset.set_name(std::string(name));
  updateStoredPreset(preset, arguments);
  return preset;
}

void updateStoredPreset(PresetInformation& preset, const TranscodeCliArguments& arguments) {
  stored::TranscodeOptions& options = *preset.mutable_transcode_options();
  const TextDictionary settings = presetSettingsOf(arguments);
  TextDictionary beside = settings;
  for (const FieldRow& row : fields) {
    const std::string* const text = settings.find(row.flag);
    setField(options, row, text == nullptr ? std::nullopt : std::optional<std::string_view>(*text));
    if (text != nullptr && textOfField(options, row) == *text) beside.erase(row.flag);
  }
  updateOtherSettings(options, beside);
  for (const auto& [flag, value] : beside) {
    stored::Setting& setting = *options.add_other_settings();
    setting.set_flag(flag);
    setting.set_value(value);
  }
}

TranscodeCliArguments argumentsOf(const PresetInformation& preset) {
  const stored::TranscodeOptions& options = preset.transcode_options();
  TextDictionary settings;
  for (const FieldRow& row : fields) {
    if (const auto text = textOfField(options, row)) settings.set(row.flag, *text);
  }
  const TextDictionary ofFields = settings;
  for (const stored::Setting& setting : options.other_settings()) {
    const std::string flag = normalizedFlag(setting.flag());
    if (isOfOneJob(flag)) continue;
    if (const FieldRow* const row = fieldOf(flag)) {
      const auto asField = textThroughField(*row, setting.value());
      const std::string* const ofField = ofFields.find(flag);
      const bool agrees = ofField != nullptr ? asField == *ofField : !asField && !isSet(options, *row);
      if (!agrees) continue;
    }
    settings.set(flag, setting.value());
  }

  // The check rejects unknown flags; it also lower-cases values, which are restored below.
  TranscodeCliArguments::Stored checked = TranscodeCliArguments::fromArgumentLookup(settings).stored();
  for (const auto& [flag, value] : settings) {
    if (!checked.flagValueLookup.contains(flag)) continue;
    if (trimmed(value).starts_with('-')) {
      // On a command line, the value would be read as a flag.
      checked.flagValueLookup.erase(flag);
      if (!checked.invalidKeyValueLookup) checked.invalidKeyValueLookup.emplace();
      checked.invalidKeyValueLookup->set(flag, value);
    } else {
      checked.flagValueLookup.set(flag, value);
    }
  }
  // A built-in preset among the settings does not override a field that a command line cannot express.
  for (const FieldRow& row : fields) {
    if (isSet(options, row) && !settings.contains(row.flag)) checked.flagValueLookup.erase(row.flag);
  }
  return TranscodeCliArguments::fromStored(std::move(checked));
}

VideoDimension videoDimension(const PresetInformation& preset) {
  const VideoConversionOptions& video = preset.transcode_options().video();
  if (const auto dimension = dimensionOf(video)) return *dimension;
  // The wording is fixed, including "orignal" and the missing bracket at the end.
  std::cout << "Proto failed to parse VideoDimension from Proto. Will reset to match orignal! (pWidth:"
            << shortestDecimalText(video.width()) << " - pHeight: " << shortestDecimalText(video.height()) << "\n"
            << std::flush;
  return VideoDimension::match;
}

void setVideoDimension(PresetInformation& preset, const VideoDimension& dimension) {
  stored::TranscodeOptions& options = *preset.mutable_transcode_options();
  setDimension(*options.mutable_video(), dimension);
  removeOtherSetting(options, SAVVideoDimensionsFlag.rawValue());
}

std::optional<FrameRate> frameRate(const PresetInformation& preset) {
  return FrameRate::fromRawValue(preset.transcode_options().video().frame_rate());
}

void setFrameRate(PresetInformation& preset, const FrameRate& rate) {
  stored::TranscodeOptions& options = *preset.mutable_transcode_options();
  options.mutable_video()->set_frame_rate(rate.frameRateForProto());
  removeOtherSetting(options, SAVVideoFrameRateFlag.rawValue());
}

std::optional<ConversionCodecType> codecType(const PresetInformation& preset) {
  return codecOf(preset.transcode_options().video());
}

void setCodecType(PresetInformation& preset, std::optional<ConversionCodecType> codec) {
  stored::TranscodeOptions& options = *preset.mutable_transcode_options();
  removeOtherSetting(options, SAVVideoFormatFlag.rawValue());
  options.mutable_video()->clear_codec_type();
  if (codec) setCodec(*options.mutable_video(), *codec);
}

}  // namespace meridian::inline v0_2
