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

#define MERIDIAN_FILE_FORMAT(name, text, ...) inline constexpr SAVTranscodeArgumentFileFormatValue name{text};
#include "meridian/cli/transcode_values.def"

struct FileFormatRow {
  SAVTranscodeArgumentFileFormatValue value;
  ExtensionList extensions;
  bool isCase = true;
};

template <>
struct ValueTable<SAVTranscodeArgumentFileFormatValue> {
  static constexpr auto rows = std::to_array<FileFormatRow>({
#define MERIDIAN_FILE_FORMAT(name, text, extensions) {name, extensions},
#include "meridian/cli/transcode_values.def"
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

#define MERIDIAN_VIDEO_CODEC(name, text, ...) inline constexpr SAVTranscodeArgumentVideoCodecValue name{text};
#include "meridian/cli/transcode_values.def"

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
#define MERIDIAN_VIDEO_CODEC(name, text, codec, extensions, family) \
  {name, ConversionCodecType::codec, extensions, VideoCodecFamily::family},
#include "meridian/cli/transcode_values.def"
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

#define MERIDIAN_ASPECT_RATIO(name, text, ...) inline constexpr SAVTranscodeArgumentAspectRatioValue name{text};
#include "meridian/cli/transcode_values.def"

template <>
struct ValueTable<SAVTranscodeArgumentAspectRatioValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentAspectRatioValue>>({
#define MERIDIAN_ASPECT_RATIO(name, text) {name},
#include "meridian/cli/transcode_values.def"
  });
};

/// The anchor of a crop, a burn-in or a watermark: its place in the frame.
class SAVTranscodeArgumentOverlayAnchorValue : public ValueText<SAVTranscodeArgumentOverlayAnchorValue> {
 public:
  using ValueText::ValueText;
};

#define MERIDIAN_OVERLAY_ANCHOR(name, text, ...) inline constexpr SAVTranscodeArgumentOverlayAnchorValue name{text};
#include "meridian/cli/transcode_values.def"

template <>
struct ValueTable<SAVTranscodeArgumentOverlayAnchorValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentOverlayAnchorValue>>({
#define MERIDIAN_OVERLAY_ANCHOR(name, text) {name},
#include "meridian/cli/transcode_values.def"
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

#define MERIDIAN_COLOR_SPACE(name, text, ...) inline constexpr SAVTranscodeArgumentColorSpaceValue name{text};
#include "meridian/cli/transcode_values.def"

template <>
struct ValueTable<SAVTranscodeArgumentColorSpaceValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentColorSpaceValue>>({
#define MERIDIAN_COLOR_SPACE(name, text) {name},
#include "meridian/cli/transcode_values.def"
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

#define MERIDIAN_AUDIO_FORMAT(name, text, ...) inline constexpr SAVTranscodeArgumentAudioFormatValue name{text};
#include "meridian/cli/transcode_values.def"

template <>
struct ValueTable<SAVTranscodeArgumentAudioFormatValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentAudioFormatValue>>({
#define MERIDIAN_AUDIO_FORMAT(name, text, ...) {name __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_values.def"
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

#define MERIDIAN_CHANNEL_LAYOUT(name, text, ...) \
  inline constexpr SAVTranscodeArgumentAudioChannelLayoutValue name{text};
#include "meridian/cli/transcode_values.def"

template <>
struct ValueTable<SAVTranscodeArgumentAudioChannelLayoutValue> {
  static constexpr auto rows = std::to_array<ValueRow<SAVTranscodeArgumentAudioChannelLayoutValue>>({
#define MERIDIAN_CHANNEL_LAYOUT(name, text) {name},
#include "meridian/cli/transcode_values.def"
  });
};

// Values without a type of their own.
#define MERIDIAN_VALUE_TEXT(name, text) inline constexpr std::string_view name = text;
#include "meridian/cli/transcode_values.def"

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
