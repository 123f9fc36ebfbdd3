// The typed properties of a transcoder command line: which flag each stands under, and how its text reads.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/export.h"
#include "meridian/media/rgb_color.h"
#include "meridian/media/size.h"
#include "meridian/media/timecode_components.h"

namespace meridian::inline v0_2 {

/// How a property stands in the text of its flag. The kinds from `fileFormat` on take one of a list of texts.
enum class PropertyKind : std::uint8_t {
  /// On while the flag is there, whatever its text.
  onOff,
  /// The text as it stands.
  text,
  /// The text as a path in the file system.
  file,
  /// A 32-bit floating-point number: "25.0".
  number,
  /// A signed 64-bit integer: "10".
  integer,
  /// Width and height in pixels: "1920.000000x1080.000000".
  dimensions,
  /// A timecode of proper form: "01:02:03;04".
  timecode,
  /// Red, green and blue: "255,128,0".
  color,
  fileFormat,
  videoCodec,
  aspectRatio,
  cropAnchor,
  overlayAnchor,
  colorSpace,
  audioFormat,
  audioQuality,
  channelLayout,
};

struct PropertyKindRow {
  PropertyKind value;
  std::string_view rawValue;
  /// With its article, for messages.
  std::string_view description;
  /// A text that reads as the kind; empty for a kind that takes one of a list of texts.
  std::string_view example = {};
};

template <>
struct EnumerationTable<PropertyKind> {
  static constexpr auto rows = std::to_array<PropertyKindRow>({
      {PropertyKind::onOff, "onOff", "a switch", "true"},
      {PropertyKind::text, "text", "a text", "abc"},
      {PropertyKind::file, "file", "a path", "/Looks/Rec709.cube"},
      {PropertyKind::number, "number", "a number", "23.976"},
      {PropertyKind::integer, "integer", "a whole number", "10"},
      {PropertyKind::dimensions, "dimensions", "a size", "1920x1080"},
      {PropertyKind::timecode, "timecode", "a timecode", "01:00:00:00"},
      {PropertyKind::color, "color", "a colour", "255,128,0"},
      {PropertyKind::fileFormat, "fileFormat", "a file format"},
      {PropertyKind::videoCodec, "videoCodec", "a video codec"},
      {PropertyKind::aspectRatio, "aspectRatio", "an aspect scaling"},
      {PropertyKind::cropAnchor, "cropAnchor", "an anchor"},
      {PropertyKind::overlayAnchor, "overlayAnchor", "an anchor"},
      {PropertyKind::colorSpace, "colorSpace", "a colour space"},
      {PropertyKind::audioFormat, "audioFormat", "an audio format"},
      {PropertyKind::audioQuality, "audioQuality", "an audio quality"},
      {PropertyKind::channelLayout, "channelLayout", "a channel layout"},
  });
};

struct TranscodeProperty {
  std::string_view name;
  std::string_view flag;
  PropertyKind kind;
};

/// Every property that stands under a flag of its own. `channelLayout` and `outputChannels` share "-acl" on purpose.
inline constexpr auto transcodeProperties = std::to_array<TranscodeProperty>({
    {"outputFile", SAVOutputFileFlag.rawValue(), PropertyKind::text},
    {"outputFileFormat", SAVFileFormatFlag.rawValue(), PropertyKind::fileFormat},
    {"progressFile", SAVProgressFileFlag.rawValue(), PropertyKind::text},
    {"progressOutputPrefix", SAVProgressOutputPrefixFlag.rawValue(), PropertyKind::text},
    {"shouldOverwrite", SAVOverwriteExistingFlag.rawValue(), PropertyKind::onOff},
    {"workDirectory", SAVWorkDirectoryFlag.rawValue(), PropertyKind::text},

    {"omitVideo", SAVNoVideoFlag.rawValue(), PropertyKind::onOff},
    {"videoFormat", SAVVideoFormatFlag.rawValue(), PropertyKind::videoCodec},
    {"videoFrameRate", SAVVideoFrameRateFlag.rawValue(), PropertyKind::number},
    {"videoDimensions", SAVVideoDimensionsFlag.rawValue(), PropertyKind::dimensions},
    {"videoBitRate", SAVVideoBitRateFlag.rawValue(), PropertyKind::number},
    {"videoBitDepth", SAVVideoBitDepthFlag.rawValue(), PropertyKind::integer},
    {"prepareForWeb", SAVPrepareForWebFlag.rawValue(), PropertyKind::onOff},
    {"gpuDecode", SAVVideoGPUDecodingFlag.rawValue(), PropertyKind::onOff},
    {"gpuEncode", SAVVideoGPUEncodingFlag.rawValue(), PropertyKind::onOff},
    {"keyFrames", SAVVideoKeyFramesFlag.rawValue(), PropertyKind::integer},
    {"lutFile", SAVColorLutFileFlag.rawValue(), PropertyKind::file},
    {"aspectScaling", SAVVideoAspectScalingFlag.rawValue(), PropertyKind::aspectRatio},
    {"videoCropAnchor", SAVVideoAspectCropAnchorFlag.rawValue(), PropertyKind::cropAnchor},
    {"colorSpace", SAVVideoColorSpaceFlag.rawValue(), PropertyKind::colorSpace},
    {"videoProfile", SAVVideoProfileFlag.rawValue(), PropertyKind::text},

    {"omitAudio", SAVNoAudioFlag.rawValue(), PropertyKind::onOff},
    {"audioFormat", SAVAudioFormatFlag.rawValue(), PropertyKind::audioFormat},
    {"audioQuality", SAVAudioQualityFlag.rawValue(), PropertyKind::audioQuality},
    {"sampleRate", SAVAudioSampleRateFlag.rawValue(), PropertyKind::integer},
    {"audioBitRate", SAVAudioBitRateFlag.rawValue(), PropertyKind::integer},
    {"audioBitsPerChannel", SAVAudioBitsPerChannelFlag.rawValue(), PropertyKind::integer},
    {"audioOutputIsDiscrete", SAVDiscreteAudioFlag.rawValue(), PropertyKind::onOff},
    {"channelLayout", SAVAudioChannelLayoutFlag.rawValue(), PropertyKind::channelLayout},
    {"channelLayoutTag", SAVAudioChannelLayoutTagFlag.rawValue(), PropertyKind::integer},
    {"outputChannels", SAVAudioChannelLayoutFlag.rawValue(), PropertyKind::integer},
    {"channelLayoutDescriptions", SAVAudioChannelLayoutDescriptionsFlag.rawValue(), PropertyKind::text},
    {"channelLayoutBitmap", SAVAudioChannelLayoutBitmapFlag.rawValue(), PropertyKind::integer},

    {"timecode", SAVTimecodeCustomFlag.rawValue(), PropertyKind::timecode},
    {"timecodeFrameRate", SAVTimecodeFrameRateFlag.rawValue(), PropertyKind::number},
    {"timecodeIsDropFrame", SAVTimecodeIsDropFlag.rawValue(), PropertyKind::onOff},
    {"addTimecodeTrack", SAVTimecodeAddTrackFlag.rawValue(), PropertyKind::onOff},
    {"addTimecodeBurn", SAVTimecodeAddBurnFlag.rawValue(), PropertyKind::onOff},
    {"timecodeBurnAnchor", SAVTimecodeBurnAnchorFlag.rawValue(), PropertyKind::overlayAnchor},
    {"timecodeBurnFontSize", SAVTimecodeBurnFontSize.rawValue(), PropertyKind::integer},
    {"timecodeBurnFontColor", SAVTimecodeBurnFontRGB.rawValue(), PropertyKind::color},
    {"timecodeBurnBoxColor", SAVTimecodeBurnBoxRGB.rawValue(), PropertyKind::color},

    {"watermarkFile", SAVWatermarkFileBurnFilePathFlag.rawValue(), PropertyKind::file},
    {"watermarkFileAnchor", SAVWatermarkFileBurnAnchorFlag.rawValue(), PropertyKind::overlayAnchor},
    {"watermarkFileScale", SAVWatermarkFileBurnScaleFlag.rawValue(), PropertyKind::number},
    {"addWatermarkText", SAVWatermarkTextAddBurnFlag.rawValue(), PropertyKind::onOff},
    {"watermarkText", SAVWatermarkTextBurnTextFlag.rawValue(), PropertyKind::text},
    {"watermarkTextFontSize", SAVWatermarkTextBurnFontSizeFlag.rawValue(), PropertyKind::integer},
    {"watermarkTextAnchor", SAVWatermarkTextBurnAnchorFlag.rawValue(), PropertyKind::overlayAnchor},
    {"watermarkTextFontColor", SAVWatermarkTextBurnFontRGBFlag.rawValue(), PropertyKind::color},
    {"watermarkTextBoxColor", SAVWatermarkTextBurnBoxRGBFlag.rawValue(), PropertyKind::color},

    {"lookColorSpace", SAVArriLookColorSpacePrimaryFlag.rawValue(), PropertyKind::text},
    {"lookWhitePoint", SAVArriLookColorSpaceWhitePointFlag.rawValue(), PropertyKind::text},
    {"lookCurve", SAVArriLookColorSpaceCurveFlag.rawValue(), PropertyKind::text},
    {"lookInvalidResolution", SAVArriLookInvalidLookResolutionFlag.rawValue(), PropertyKind::text},
});

/// A property's value, of any kind; those that take one of a list of texts, and paths, are texts.
using PropertyValue = std::variant<bool, std::int64_t, float, Size, TimecodeComponents, RgbColor, std::string>;

/// The property of this name; null when there is none.
[[nodiscard]] constexpr const TranscodeProperty* findProperty(std::string_view name) noexcept {
  const auto found = std::ranges::find(transcodeProperties, name, &TranscodeProperty::name);
  return found == transcodeProperties.end() ? nullptr : &*found;
}

/// What the flag's text reads as, by the property's own reading; absent when it does not read.
[[nodiscard]] MERIDIAN_API std::optional<PropertyValue> valueOfText(const TranscodeProperty& property,
                                                                    std::string_view text);

/// What a person's input sets a property to.
struct PropertyInput {
  /// The flag's text, in the property's own form ("25.0" for "25"); absent to take the flag away.
  std::optional<std::string> text;
};

/// Reads a person's input, more leniently than a stored text: blanks around it and, where the property takes one of a
/// list of texts, letter case are ignored, and an `onOff` property takes "true", "false", "on", "off", "yes" and "no".
/// The empty input takes the flag away. Absent where the input does not read, and for a number or size that is not
/// finite.
[[nodiscard]] MERIDIAN_API std::optional<PropertyInput> readInput(const TranscodeProperty& property,
                                                                  std::string_view input);

/// What a property takes, for messages: "a size, such as 1920x1080", "an audio format: lpcm, aac, apple_lossless".
[[nodiscard]] MERIDIAN_API std::string expectedForm(const TranscodeProperty& property);

/// The same for all properties under a flag: "a channel layout: mono, stereo, or a whole number, such as 10".
[[nodiscard]] MERIDIAN_API std::string expectedFormOfFlag(std::string_view flag);

/// The texts that a property takes one of, in their order; empty for a property of another kind.
[[nodiscard]] MERIDIAN_API std::vector<std::string_view> allowedTexts(const TranscodeProperty& property);

}  // namespace meridian::inline v0_2
