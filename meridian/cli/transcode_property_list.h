/// \file
/// The list of all properties of a transcode: for each its name, flag, kind, unit, default, an example and what it
/// means. A property is looked up at compile time or at run time:
///
///     const TranscodeProperty* property = findTranscodeProperty("videoFrameRate");
///     property->flag;  // "-vr"
///     property->unit;  // "frames per second"
///
/// transcode_properties.h reads and sets the properties of a store by these names.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/base/text_index.h"
#include "meridian/cli/transcode_flags.h"

namespace meridian::inline v0_2 {

/// How a property is written as text. The kinds from `fileFormat` to `timecodeSource` accept one of a list of texts.
enum class PropertyKind : std::uint8_t {
  /// On while the flag is stored, whatever its text.
  onOff,
  /// Any text.
  text,
  /// A path, kept as the text that it is.
  path,
  /// A path, read as a file URL.
  file,
  /// A 32-bit floating-point number: "25.0".
  number,
  /// Frames per second as a 32-bit floating-point number: "23.976".
  frameRate,
  /// A signed 64-bit integer: "10".
  integer,
  /// Width and height: "1920.000000x1080.000000".
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
  timecodeSource,
  /// Paths, each on a line of its own.
  files,
  /// Numbers of tracks from 0, separated by commas: "0,2".
  trackNumbers,
};

template <>
struct EnumerationTable<PropertyKind> {
  /// The description is a noun with its article, for messages.
  static constexpr auto rows = std::to_array<EnumerationRow<PropertyKind>>({
      {PropertyKind::onOff, "switch", "a switch"},
      {PropertyKind::text, "text", "a text"},
      {PropertyKind::path, "path", "a path"},
      {PropertyKind::file, "file", "a path"},
      {PropertyKind::number, "number", "a number"},
      {PropertyKind::frameRate, "frameRate", "a frame rate"},
      {PropertyKind::integer, "integer", "a whole number"},
      {PropertyKind::dimensions, "dimensions", "a size"},
      {PropertyKind::timecode, "timecode", "a timecode"},
      {PropertyKind::color, "color", "a colour"},
      {PropertyKind::fileFormat, "fileFormat", "a file format"},
      {PropertyKind::videoCodec, "videoCodec", "a video codec"},
      {PropertyKind::aspectRatio, "aspectRatio", "an aspect scaling"},
      {PropertyKind::cropAnchor, "cropAnchor", "an anchor"},
      {PropertyKind::overlayAnchor, "overlayAnchor", "an anchor"},
      {PropertyKind::colorSpace, "colorSpace", "a colour space"},
      {PropertyKind::audioFormat, "audioFormat", "an audio format"},
      {PropertyKind::audioQuality, "audioQuality", "an audio quality"},
      {PropertyKind::channelLayout, "channelLayout", "a channel layout"},
      {PropertyKind::timecodeSource, "timecodeSource", "a timecode source"},
      {PropertyKind::files, "files", "a list of paths"},
      {PropertyKind::trackNumbers, "trackNumbers", "a list of track numbers"},
  });
};

/// A property of a transcode: its name, where it is stored, and what it means.
struct TranscodeProperty {
  std::string_view name;
  /// The flag that stores the property; empty for a joint property, which several or numbered flags make up.
  std::string_view flag;
  PropertyKind kind;
  /// The unit of a number or size; empty where there is none.
  std::string_view unit;
  /// What happens without the property: "as the source".
  std::string_view whenAbsent;
  /// A valid value of this very property.
  std::string_view example;
  /// What the property does, as an imperative line: "Set the number of frames per second".
  std::string_view meaning;
  /// The flags that make up a joint property, or their prefix where they are numbered; empty texts otherwise.
  std::array<std::string_view, 3> jointFlags = {};

  [[nodiscard]] constexpr bool isJoint() const noexcept { return flag.empty(); }
  /// Returns the flag, or the flags of a joint property.
  [[nodiscard]] constexpr std::span<const std::string_view> flags() const noexcept {
    if (!isJoint()) return {&flag, 1};
    const auto end = std::ranges::find(jointFlags, std::string_view());
    return std::span(jointFlags).first(static_cast<std::size_t>(end - jointFlags.begin()));
  }
};

namespace detail {

consteval std::array<std::string_view, 3> textsOfFlags(const auto&... flags) { return {flags.rawValue()...}; }

}  // namespace detail

/// Every property, in the order of the groups of flags. `channelLayout` and `outputChannels` share "-acl" deliberately:
/// setting one replaces the other, and removing either removes the flag.
inline constexpr auto transcodeProperties = std::to_array<TranscodeProperty>({
#define MERIDIAN_FLAG_PROPERTY(name, kind, flag, unit, whenAbsent, example, meaning) \
  {#name, (flag).rawValue(), PropertyKind::kind, unit, whenAbsent, example, meaning},
#define MERIDIAN_JOINT_PROPERTY(name, kind, unit, whenAbsent, example, meaning, ...) \
  {#name, "", PropertyKind::kind, unit, whenAbsent, example, meaning, detail::textsOfFlags(__VA_ARGS__)},
#include "meridian/cli/transcode_properties.def"
});

namespace detail {

consteval auto indexOfTranscodeProperties() {
  std::array<std::string_view, transcodeProperties.size()> names{};
  std::ranges::transform(transcodeProperties, names.begin(), &TranscodeProperty::name);
  return TextIndex(names);
}

inline constexpr auto transcodePropertyIndex = indexOfTranscodeProperties();

}  // namespace detail

/// Returns the property of exactly this name; null when there is none. O(1).
[[nodiscard]] constexpr const TranscodeProperty* findTranscodeProperty(std::string_view name) noexcept {
  const auto place = detail::transcodePropertyIndex.find(name);
  return place ? &transcodeProperties[*place] : nullptr;
}

}  // namespace meridian::inline v0_2
