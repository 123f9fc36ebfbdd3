/// \file
/// The values of the transcoder's flags that accept one of a list: codecs, formats, scalings, anchors, colour spaces
/// and channel layouts.
///
///     SAVTranscodeArgumentVideoCodecValue::fromRawValue("h264");  // SAVAvcH264Codec
///     SAVMp4Format.preferredFileExtension();                      // FileExtension::mp4
///     SAVAvcH264Codec.cliFlag();                                  // "-vcodec"
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "meridian/base/text_index.h"
#include "meridian/base/typed_text.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/media/conversion_codec_type.h"
#include "meridian/media/file_extension.h"

namespace meridian::inline v0_2 {

/// Specialised for each value type with the member `rows`, whose elements have at least the members of ValueRow.
template <typename Value>
struct ValueTable;

/// One line of a value type's table. A value that is not a case is a public constant that is not offered as a choice.
template <typename Value>
struct ValueRow {
  Value value;
  bool isCase = true;
};

namespace detail {

/// The values of the rows that fulfil the predicate, in the order of the table.
template <typename Value, auto predicate>
inline constexpr auto valuesWhere =
    membersWhere<ValueTable<Value>::rows, &std::ranges::range_value_t<decltype(ValueTable<Value>::rows)>::value,
                 predicate>();

template <typename Value>
inline constexpr auto valueCases = valuesWhere<Value, [](const auto& row) { return row.isCase; }>;

template <typename Value>
consteval auto valueTexts() {
  std::array<std::string_view, valueCases<Value>.size()> texts{};
  std::ranges::transform(valueCases<Value>, texts.begin(), [](const Value& value) { return value.rawValue(); });
  return texts;
}

template <typename Value>
inline constexpr auto valueIndex = TextIndex(valueTexts<Value>());

}  // namespace detail

/// Base of the value types: a typed text with the facts of its type's table.
template <typename Value>
class ValueText : public TypedText<Value> {
 public:
  using TypedText<Value>::TypedText;

  /// Returns the values offered as choices, in the order of the table.
  [[nodiscard]] static constexpr std::span<const Value> allCases() noexcept { return detail::valueCases<Value>; }

  /// Returns the case with exactly this text; absent when the text is not one of `allCases`. Case-sensitive.
  [[nodiscard]] static constexpr std::optional<Value> fromRawValue(std::string_view text) noexcept {
    const auto place = detail::valueIndex<Value>.find(text);
    if (!place) return std::nullopt;
    return detail::valueCases<Value>[*place];
  }
};

/// At most two file extensions in order of preference.
struct ExtensionList {
  // NOLINTNEXTLINE(google-explicit-constructor): rows of tables have one extension as it is.
  constexpr ExtensionList(FileExtension only) noexcept : extensions{only, only}, count(1) {}
  constexpr ExtensionList(FileExtension first, FileExtension second) noexcept : extensions{first, second}, count(2) {}

  std::array<FileExtension, 2> extensions;
  std::size_t count;

  [[nodiscard]] constexpr std::span<const FileExtension> list() const noexcept {
    return std::span<const FileExtension>(extensions).first(count);
  }
};

/// Value of "-file_format": the container of the output file.
class SAVTranscodeArgumentFileFormatValue : public ValueText<SAVTranscodeArgumentFileFormatValue> {
 public:
  using ValueText::ValueText;

  [[nodiscard]] static constexpr SAVTranscodeArgumentFlag fileFlag() noexcept { return SAVFileFormatFlag; }
  [[nodiscard]] static constexpr std::string_view cliFlag() noexcept { return fileFlag().rawValue(); }

  /// Returns the extensions a file of this format may have, the preferred one first; empty for an unknown text.
  [[nodiscard]] constexpr std::span<const FileExtension> validExtensions() const noexcept;
  /// Returns the first of the valid extensions; absent for an unknown text.
  [[nodiscard]] constexpr std::optional<FileExtension> preferredFileExtension() const noexcept;
};

inline constexpr SAVTranscodeArgumentFileFormatValue SAVQuickTimeFileFormat{"qt"};
inline constexpr SAVTranscodeArgumentFileFormatValue SAVMp4Format{"mp4"};
inline constexpr SAVTranscodeArgumentFileFormatValue SAVWaveFileFormat{"wav"};

struct FileFormatRow {
  SAVTranscodeArgumentFileFormatValue value;
  ExtensionList extensions;
  bool isCase = true;
};

template <>
struct ValueTable<SAVTranscodeArgumentFileFormatValue> {
  static constexpr auto rows = std::to_array<FileFormatRow>({
      {SAVQuickTimeFileFormat, {FileExtension::mov, FileExtension::mp4}},
      {SAVMp4Format, {FileExtension::mp4, FileExtension::mov}},
      {SAVWaveFileFormat, {FileExtension::wav}},
  });
};

/// Value of "-vcodec": the video codec.
class SAVTranscodeArgumentVideoCodecValue : public ValueText<SAVTranscodeArgumentVideoCodecValue> {
 public:
  using ValueText::ValueText;

  [[nodiscard]] static constexpr SAVTranscodeVideoArgumentFlag videoFlag() noexcept { return SAVVideoFormatFlag; }
  [[nodiscard]] static constexpr std::string_view cliFlag() noexcept { return videoFlag().rawValue(); }

  /// Returns the extensions a file with this codec may have; empty for an unknown text.
  [[nodiscard]] constexpr std::span<const FileExtension> permittedExtensions() const noexcept;

  /// Returns the codec of conversion settings that the text names; absent for an unknown text.
  [[nodiscard]] constexpr std::optional<ConversionCodecType> conversionCodecType() const noexcept;
  /// Returns the text that names the codec of conversion settings.
  [[nodiscard]] static constexpr SAVTranscodeArgumentVideoCodecValue fromConversionCodecType(
      ConversionCodecType codec) noexcept;

  [[nodiscard]] static constexpr std::span<const SAVTranscodeArgumentVideoCodecValue> allAvidDNxFormats() noexcept;
  /// Motion JPEG is deliberately a web format.
  [[nodiscard]] static constexpr std::span<const SAVTranscodeArgumentVideoCodecValue> allWebFormats() noexcept;
  [[nodiscard]] static constexpr std::span<const SAVTranscodeArgumentVideoCodecValue> allProResFormats() noexcept;
};

inline constexpr SAVTranscodeArgumentVideoCodecValue SAVDnxhdCodec{"dnxhd"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVAvcH264Codec{"h264"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVHevcCodec{"h265"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVMotionJpegCodec{"mjpeg"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVMpeg4Codec{"mp4"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVProRes4444{"prores4444"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVProRes4444XQ{"prores4444xq"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVProRes422{"prores422"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVProRes422HQ{"prores422hq"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVProRes422LT{"prores422lt"};
inline constexpr SAVTranscodeArgumentVideoCodecValue SAVProRes422Proxy{"prores422proxy"};

enum class VideoCodecFamily { none, avidDNx, web, proRes };

struct VideoCodecRow {
  SAVTranscodeArgumentVideoCodecValue value;
  ConversionCodecType codec;
  ExtensionList extensions;
  VideoCodecFamily family;
  bool isCase = true;
};

template <>
struct ValueTable<SAVTranscodeArgumentVideoCodecValue> {
  static constexpr auto rows = std::to_array<VideoCodecRow>({
      {SAVDnxhdCodec, ConversionCodecType::dnxhd, {FileExtension::mxf}, VideoCodecFamily::avidDNx},
      {SAVAvcH264Codec, ConversionCodecType::h264, {FileExtension::mp4, FileExtension::mov}, VideoCodecFamily::web},
      {SAVHevcCodec, ConversionCodecType::h265, {FileExtension::mov}, VideoCodecFamily::web},
      {SAVMotionJpegCodec,
       ConversionCodecType::motionJpeg,
       {FileExtension::mov, FileExtension::mjpeg},
       VideoCodecFamily::web},
      {SAVMpeg4Codec, ConversionCodecType::mpeg4, {FileExtension::mov}, VideoCodecFamily::none},
      {SAVProRes4444, ConversionCodecType::proRes4444, {FileExtension::mov}, VideoCodecFamily::proRes},
      {SAVProRes4444XQ, ConversionCodecType::proRes4444XQ, {FileExtension::mov}, VideoCodecFamily::proRes},
      {SAVProRes422, ConversionCodecType::proRes422, {FileExtension::mov}, VideoCodecFamily::proRes},
      {SAVProRes422HQ, ConversionCodecType::proRes422HQ, {FileExtension::mov}, VideoCodecFamily::proRes},
      {SAVProRes422LT, ConversionCodecType::proRes422LT, {FileExtension::mov}, VideoCodecFamily::proRes},
      {SAVProRes422Proxy, ConversionCodecType::proRes422Proxy, {FileExtension::mov}, VideoCodecFamily::proRes},
  });
};

/// Value of "-aspect_scaling": how an image fits a frame of another aspect ratio.
class SAVTranscodeArgumentAspectRatioValue : public ValueText<SAVTranscodeArgumentAspectRatioValue> {
 public:
  using ValueText::ValueText;

  [[nodiscard]] static constexpr SAVTranscodeVideoArgumentFlag videoFlag() noexcept {
    return SAVVideoAspectScalingFlag;
  }
  [[nodiscard]] static constexpr std::string_view cliFlag() noexcept { return videoFlag().rawValue(); }
};

inline constexpr SAVTranscodeArgumentAspectRatioValue SAVMatchSourceRatio{"match"};
inline constexpr SAVTranscodeArgumentAspectRatioValue SAVStretchAspect{"stretch"};
inline constexpr SAVTranscodeArgumentAspectRatioValue SAVLetterboxAspect{"letterbox"};
inline constexpr SAVTranscodeArgumentAspectRatioValue SAVCropAspect{"crop"};

template <>
struct ValueTable<SAVTranscodeArgumentAspectRatioValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentAspectRatioValue>>(
      {{SAVMatchSourceRatio}, {SAVStretchAspect}, {SAVLetterboxAspect}, {SAVCropAspect}});
};

/// The anchor of a crop, a burn-in or a watermark: its place in the frame.
class SAVTranscodeArgumentOverlayAnchorValue : public ValueText<SAVTranscodeArgumentOverlayAnchorValue> {
 public:
  using ValueText::ValueText;
};

inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorTopLeft{"tl"};
inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorTopCenter{"tc"};
inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorTopRight{"tr"};
inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorCenterLeft{"cl"};
inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorCenter{"c"};
inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorCenterRight{"cr"};
inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorBottomLeft{"bl"};
inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorBottomCenter{"bc"};
inline constexpr SAVTranscodeArgumentOverlayAnchorValue SAVAnchorBottomRight{"br"};

template <>
struct ValueTable<SAVTranscodeArgumentOverlayAnchorValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentOverlayAnchorValue>>({
      {SAVAnchorTopLeft},
      {SAVAnchorTopCenter},
      {SAVAnchorTopRight},
      {SAVAnchorCenterLeft},
      {SAVAnchorCenter},
      {SAVAnchorCenterRight},
      {SAVAnchorBottomLeft},
      {SAVAnchorBottomCenter},
      {SAVAnchorBottomRight},
  });
};

/// Value of "-c_space": the colour space of the output. Values are lower-cased in reading and "sRGB" has capitals, so
/// an argument vector cannot carry it.
class SAVTranscodeArgumentColorSpaceValue : public ValueText<SAVTranscodeArgumentColorSpaceValue> {
 public:
  using ValueText::ValueText;

  [[nodiscard]] static constexpr SAVTranscodeVideoArgumentFlag videoFlag() noexcept { return SAVVideoColorSpaceFlag; }
  [[nodiscard]] static constexpr std::string_view cliFlag() noexcept { return videoFlag().rawValue(); }
};

inline constexpr SAVTranscodeArgumentColorSpaceValue SAVRec2020ColorSpace{"rec_2020"};
inline constexpr SAVTranscodeArgumentColorSpaceValue SAVRec709ColorSpace{"rec_709"};
inline constexpr SAVTranscodeArgumentColorSpaceValue SAVSrgbColorSpace{"sRGB"};
inline constexpr SAVTranscodeArgumentColorSpaceValue SAVSmptecColorSpace{"smpte_c"};
inline constexpr SAVTranscodeArgumentColorSpaceValue SAVEbu3213ColorSpace{"ebu_3213"};

template <>
struct ValueTable<SAVTranscodeArgumentColorSpaceValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentColorSpaceValue>>({
      {SAVRec2020ColorSpace},
      {SAVRec709ColorSpace},
      {SAVSrgbColorSpace},
      {SAVSmptecColorSpace},
      {SAVEbu3213ColorSpace},
  });
};

/// Value of "-acodec": the audio format. Three of the six constants are deliberately not cases: they are not offered as
/// choices.
class SAVTranscodeArgumentAudioFormatValue : public ValueText<SAVTranscodeArgumentAudioFormatValue> {
 public:
  using ValueText::ValueText;

  [[nodiscard]] static constexpr SAVTranscodeAudioArgumentFlag audioFlag() noexcept { return SAVAudioFormatFlag; }
  [[nodiscard]] static constexpr std::string_view cliFlag() noexcept { return audioFlag().rawValue(); }
};

inline constexpr SAVTranscodeArgumentAudioFormatValue SAVLpcmAudioFormatValue{"lpcm"};
inline constexpr SAVTranscodeArgumentAudioFormatValue SAVAacAudioFormatValue{"aac"};
inline constexpr SAVTranscodeArgumentAudioFormatValue SAVAppleLosslessAudioFormatValue{"apple_lossless"};
inline constexpr SAVTranscodeArgumentAudioFormatValue SAVAacHEAudioFormatValue{"aac_he"};
inline constexpr SAVTranscodeArgumentAudioFormatValue SAVAacELDLosslessAudioFormatValue{"aac_eld"};
inline constexpr SAVTranscodeArgumentAudioFormatValue SAVAppleIMA41ADPCMAudioFormatValue{"apple_ima4"};

template <>
struct ValueTable<SAVTranscodeArgumentAudioFormatValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentAudioFormatValue>>({
      {SAVLpcmAudioFormatValue},
      {SAVAacAudioFormatValue},
      {SAVAppleLosslessAudioFormatValue},
      {SAVAacHEAudioFormatValue, false},
      {SAVAacELDLosslessAudioFormatValue, false},
      {SAVAppleIMA41ADPCMAudioFormatValue, false},
  });
};

/// Value of "-acl": the layout of the audio channels.
class SAVTranscodeArgumentAudioChannelLayoutValue : public ValueText<SAVTranscodeArgumentAudioChannelLayoutValue> {
 public:
  using ValueText::ValueText;

  [[nodiscard]] static constexpr SAVTranscodeAudioArgumentFlag audioFlag() noexcept {
    return SAVAudioChannelLayoutFlag;
  }
  [[nodiscard]] static constexpr std::string_view cliFlag() noexcept { return audioFlag().rawValue(); }
};

inline constexpr SAVTranscodeArgumentAudioChannelLayoutValue SAVMonoAudioLayout{"mono"};
inline constexpr SAVTranscodeArgumentAudioChannelLayoutValue SAVStereoAudioLayout{"stereo"};
inline constexpr SAVTranscodeArgumentAudioChannelLayoutValue SAVQuadraphonicAudioLayout{"quad"};
inline constexpr SAVTranscodeArgumentAudioChannelLayoutValue SAVPentagonalAudioLayout{"pent"};
inline constexpr SAVTranscodeArgumentAudioChannelLayoutValue SAVHexagonalAudioLayout{"hex"};
inline constexpr SAVTranscodeArgumentAudioChannelLayoutValue SAVOctagonalAudioLayout{"oct"};

template <>
struct ValueTable<SAVTranscodeArgumentAudioChannelLayoutValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentAudioChannelLayoutValue>>({
      {SAVMonoAudioLayout},
      {SAVStereoAudioLayout},
      {SAVQuadraphonicAudioLayout},
      {SAVPentagonalAudioLayout},
      {SAVHexagonalAudioLayout},
      {SAVOctagonalAudioLayout},
  });
};

/// The value that means "as the source": copy a codec or a rate unchanged.
inline constexpr std::string_view SAVCopySourceValue = "copy";

/// Values of "-preset".
inline constexpr std::string_view SAVSolvaneCloudPresetValue = "solvane_cloud";
inline constexpr std::string_view SAVSolvaneProRes4444XQPresetValue = "solvane_4444xq";

/// Names of GPU platforms, as "-gpu_platforms" prints them. Not values of "-gpu_decoding" and "-gpu_encoding", which
/// are switches.
inline constexpr std::string_view SAVGpuPlatformOpenCLFlag = "opencl";
inline constexpr std::string_view SAVGpuPlatformMetalFlag = "metal";
inline constexpr std::string_view SAVGpuPlatformDefaultPlatformFlag = "default";

/// Values of "-arri_cs": primaries.
inline constexpr std::string_view SAVArriLookColorSpaceRec709 = "rec709";
inline constexpr std::string_view SAVArriLookColorSpaceRec2020 = "rec2020";
inline constexpr std::string_view SAVArriLookColorSpaceP3 = "p3";
inline constexpr std::string_view SAVArriLookColorSpaceAP0 = "ap0";
inline constexpr std::string_view SAVArriLookColorSpaceAWG3 = "awg3";
inline constexpr std::string_view SAVArriLookColorSpaceAWG4 = "awg4";

/// Values of "-arri_curve": transfer curves.
inline constexpr std::string_view SAVArriCurveBT1886 = "bt1886";
inline constexpr std::string_view SAVArriCurveDCI = "dci";
inline constexpr std::string_view SAVArriCurvePQ = "pq";
inline constexpr std::string_view SAVArriCurveHLG = "hlg";
inline constexpr std::string_view SAVArriCurveLogC3 = "logc3";
inline constexpr std::string_view SAVArriCurveLogC4 = "logc4";
inline constexpr std::string_view SAVArriCurveLinear = "linear";

/// Values of "-arri_wp": white points.
inline constexpr std::string_view SAVArriWhitePointD60 = "d60";
inline constexpr std::string_view SAVArriWhitePointDCI = "dci";
inline constexpr std::string_view SAVArriWhitePointD65 = "d65";

/// Values of "-arri_inv_res".
inline constexpr std::string_view SAVArriLookResolutionIgnore = "ignore";
inline constexpr std::string_view SAVArriLookResolutionFirst = "first";

namespace detail {

/// Returns the extensions in the row of the value; empty for a text without a row.
template <typename Value>
[[nodiscard]] constexpr std::span<const FileExtension> extensionsOf(const Value& value) noexcept {
  for (const auto& row : ValueTable<Value>::rows) {
    if (row.value == value) return row.extensions.list();
  }
  return {};
}

template <VideoCodecFamily family>
inline constexpr auto codecsOfFamily =
    valuesWhere<SAVTranscodeArgumentVideoCodecValue, [](const auto& row) { return row.family == family; }>;

}  // namespace detail

constexpr std::span<const FileExtension> SAVTranscodeArgumentFileFormatValue::validExtensions() const noexcept {
  return detail::extensionsOf(*this);
}

constexpr std::optional<FileExtension> SAVTranscodeArgumentFileFormatValue::preferredFileExtension() const noexcept {
  const auto extensions = validExtensions();
  if (extensions.empty()) return std::nullopt;
  return extensions.front();
}

constexpr std::span<const FileExtension> SAVTranscodeArgumentVideoCodecValue::permittedExtensions() const noexcept {
  return detail::extensionsOf(*this);
}

constexpr std::optional<ConversionCodecType> SAVTranscodeArgumentVideoCodecValue::conversionCodecType() const noexcept {
  for (const VideoCodecRow& row : ValueTable<SAVTranscodeArgumentVideoCodecValue>::rows) {
    if (row.value == *this) return row.codec;
  }
  return std::nullopt;
}

constexpr SAVTranscodeArgumentVideoCodecValue SAVTranscodeArgumentVideoCodecValue::fromConversionCodecType(
    ConversionCodecType codec) noexcept {
  return std::ranges::find(ValueTable<SAVTranscodeArgumentVideoCodecValue>::rows, codec, &VideoCodecRow::codec)->value;
}

static_assert(std::ranges::is_permutation(ValueTable<SAVTranscodeArgumentVideoCodecValue>::rows,
                                          allCases<ConversionCodecType>(), {}, &VideoCodecRow::codec),
              "each codec of conversion settings has one text");

constexpr std::span<const SAVTranscodeArgumentVideoCodecValue>
SAVTranscodeArgumentVideoCodecValue::allAvidDNxFormats() noexcept {
  return detail::codecsOfFamily<VideoCodecFamily::avidDNx>;
}

constexpr std::span<const SAVTranscodeArgumentVideoCodecValue>
SAVTranscodeArgumentVideoCodecValue::allWebFormats() noexcept {
  return detail::codecsOfFamily<VideoCodecFamily::web>;
}

constexpr std::span<const SAVTranscodeArgumentVideoCodecValue>
SAVTranscodeArgumentVideoCodecValue::allProResFormats() noexcept {
  return detail::codecsOfFamily<VideoCodecFamily::proRes>;
}

}  // namespace meridian::inline v0_2
