/// \file
/// The transcoder's flags, group by group: which there are, and which of them accept a value.
///
///     findFlag("-vr")->takesValue();            // true
///     SAVTranscodeVideoArgumentFlag::allCases();  // "-vn", "-vcodec", "-vr", ...
///     normalizedFlag(" -VR");                    // "-vr"
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "meridian/base/enumeration.h"
#include "meridian/base/precondition.h"
#include "meridian/base/text_index.h"
#include "meridian/base/typed_text.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The groups of flags, in the order in which the list of all known flags has them.
enum class FlagGroup : std::uint8_t {
  command,
  general,
  video,
  audio,
  timecode,
  watermarkFile,
  watermarkText,
  cameraLook,
};

template <>
struct EnumerationTable<FlagGroup> {
  static constexpr auto rows = std::to_array<EnumerationRow<FlagGroup>>({
      {FlagGroup::command, "command", "Listing commands"},
      {FlagGroup::general, "general", "General"},
      {FlagGroup::video, "video", "Video"},
      {FlagGroup::audio, "audio", "Audio"},
      {FlagGroup::timecode, "timecode", "Timecode"},
      {FlagGroup::watermarkFile, "watermarkFile", "Watermark file"},
      {FlagGroup::watermarkText, "watermarkText", "Watermark text"},
      {FlagGroup::cameraLook, "cameraLook", "Camera look"},
  });
};

/// Whether a flag is followed by a value on the command line, and what reading does to that value.
enum class FlagValue : std::uint8_t {
  none,
  /// Lower-cased, deliberately also where it is a path or free text ("-progress_prefix", "-wmf_path", "-wmt_text").
  lowercase,
  /// A path that keeps its case.
  path,
};

/// One line of a group's table. A flag that is not a case is a public constant, but not in the list of all known flags.
template <typename Flag>
struct FlagRow {
  Flag flag;
  FlagValue value = FlagValue::none;
  /// What the flag does, where it stores no property of its own; empty where it does.
  std::string_view meaning = {};
  bool isCase = true;
};

/// Specialised for each group's type with the members `group` and `rows`, the group's flags in the order of its cases.
template <typename Flag>
struct FlagTable;

namespace detail {

/// Returns the member of each row that fulfils the predicate, in the order of the rows.
template <const auto& rows, auto member, auto predicate>
consteval auto membersWhere() {
  constexpr auto count = static_cast<std::size_t>(std::ranges::count_if(rows, predicate));
  std::array<std::size_t, count> chosen{};
  std::size_t end = 0;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (predicate(rows[row])) chosen[end++] = row;
  }
  return [&]<std::size_t... Place>(std::index_sequence<Place...>) {
    return std::array{rows[chosen[Place]].*member...};
  }(std::make_index_sequence<count>{});
}

template <typename Flag>
inline constexpr auto flagCases =
    membersWhere<FlagTable<Flag>::rows, &FlagRow<Flag>::flag, [](const auto& row) { return row.isCase; }>();

}  // namespace detail

/// Base of the flag groups' types: a typed text with the facts of its group's table.
template <typename Flag>
class FlagText : public TypedText<Flag> {
 public:
  using TypedText<Flag>::TypedText;

  /// Returns the group's cases.
  [[nodiscard]] static constexpr std::span<const Flag> allCases() noexcept { return detail::flagCases<Flag>; }

  /// Returns whether a value follows the flag. False only for the group's flags without a value; true for a text that
  /// is not a flag of the group.
  [[nodiscard]] constexpr bool acceptsArguments() const noexcept {
    return std::ranges::none_of(FlagTable<Flag>::rows, [this](const FlagRow<Flag>& row) {
      return row.value == FlagValue::none && row.flag.rawValue() == this->rawValue();
    });
  }
};

/// Listing commands: the transcoder prints a list or a piece of information and exits. None accepts a value.
/// "-wmf_burn_anchors" is deliberately not a case: the parser does not know it.
class SAVTranscodeCliCommand : public FlagText<SAVTranscodeCliCommand> {
 public:
  using FlagText::FlagText;
};

#define MERIDIAN_COMMAND_FLAG(name, text, ...) inline constexpr SAVTranscodeCliCommand name{text};
#include "meridian/cli/transcode_flags.def"

template <>
struct FlagTable<SAVTranscodeCliCommand> {
  static constexpr FlagGroup group = FlagGroup::command;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeCliCommand>>({
#define MERIDIAN_COMMAND_FLAG(name, text, value, ...) {name, FlagValue::value __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_flags.def"
  });
};

/// General flags: the files of a transcode and how it reports. "-in" is a prefix: the flag of an input file is "-in_",
/// the number of its group, "_" and its place in the group.
class SAVTranscodeArgumentFlag : public FlagText<SAVTranscodeArgumentFlag> {
 public:
  using FlagText::FlagText;
};

#define MERIDIAN_GENERAL_FLAG(name, text, ...) inline constexpr SAVTranscodeArgumentFlag name{text};
#include "meridian/cli/transcode_flags.def"

template <>
struct FlagTable<SAVTranscodeArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::general;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeArgumentFlag>>({
#define MERIDIAN_GENERAL_FLAG(name, text, value, ...) {name, FlagValue::value __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_flags.def"
  });
};

/// Video flags.
class SAVTranscodeVideoArgumentFlag : public FlagText<SAVTranscodeVideoArgumentFlag> {
 public:
  using FlagText::FlagText;
};

#define MERIDIAN_VIDEO_FLAG(name, text, ...) inline constexpr SAVTranscodeVideoArgumentFlag name{text};
#include "meridian/cli/transcode_flags.def"

template <>
struct FlagTable<SAVTranscodeVideoArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::video;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeVideoArgumentFlag>>({
#define MERIDIAN_VIDEO_FLAG(name, text, value, ...) {name, FlagValue::value __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_flags.def"
  });
};

/// Audio flags. "-ac_omit" is a prefix, for the tracks to be left out. "-acl_descs" and "-acl_bitmap" are deliberately
/// not cases: the parser accepts them because they contain "-acl".
class SAVTranscodeAudioArgumentFlag : public FlagText<SAVTranscodeAudioArgumentFlag> {
 public:
  using FlagText::FlagText;
};

#define MERIDIAN_AUDIO_FLAG(name, text, ...) inline constexpr SAVTranscodeAudioArgumentFlag name{text};
#include "meridian/cli/transcode_flags.def"

template <>
struct FlagTable<SAVTranscodeAudioArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::audio;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeAudioArgumentFlag>>({
#define MERIDIAN_AUDIO_FLAG(name, text, value, ...) {name, FlagValue::value __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_flags.def"
  });
};

/// Timecode flags. "-tc_burn_anchor" is deliberately not a case: the parser accepts it because it contains "-tc_burn".
class SAVTranscodeTimecodeArgumentFlag : public FlagText<SAVTranscodeTimecodeArgumentFlag> {
 public:
  using FlagText::FlagText;
};

#define MERIDIAN_TIMECODE_FLAG(name, text, ...) inline constexpr SAVTranscodeTimecodeArgumentFlag name{text};
#include "meridian/cli/transcode_flags.def"

template <>
struct FlagTable<SAVTranscodeTimecodeArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::timecode;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeTimecodeArgumentFlag>>({
#define MERIDIAN_TIMECODE_FLAG(name, text, value, ...) {name, FlagValue::value __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_flags.def"
  });
};

/// Watermark-file flags, all with a value: an anchor, a path, a scale.
class SAVTranscodeWatermarkFileArgumentFlag : public FlagText<SAVTranscodeWatermarkFileArgumentFlag> {
 public:
  using FlagText::FlagText;
};

#define MERIDIAN_WATERMARK_FILE_FLAG(name, text, ...) inline constexpr SAVTranscodeWatermarkFileArgumentFlag name{text};
#include "meridian/cli/transcode_flags.def"

template <>
struct FlagTable<SAVTranscodeWatermarkFileArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::watermarkFile;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeWatermarkFileArgumentFlag>>({
#define MERIDIAN_WATERMARK_FILE_FLAG(name, text, value, ...) {name, FlagValue::value __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_flags.def"
  });
};

/// Watermark-text flags.
class SAVTranscodeWatermarkTextArgumentFlag : public FlagText<SAVTranscodeWatermarkTextArgumentFlag> {
 public:
  using FlagText::FlagText;
};

#define MERIDIAN_WATERMARK_TEXT_FLAG(name, text, ...) inline constexpr SAVTranscodeWatermarkTextArgumentFlag name{text};
#include "meridian/cli/transcode_flags.def"

template <>
struct FlagTable<SAVTranscodeWatermarkTextArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::watermarkText;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeWatermarkTextArgumentFlag>>({
#define MERIDIAN_WATERMARK_TEXT_FLAG(name, text, value, ...) {name, FlagValue::value __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_flags.def"
  });
};

/// Camera look flags: the colour settings of ARRI look files, all with a value.
class SAVTranscodeArriLookArgumentFlag : public FlagText<SAVTranscodeArriLookArgumentFlag> {
 public:
  using FlagText::FlagText;
};

#define MERIDIAN_CAMERA_LOOK_FLAG(name, text, ...) inline constexpr SAVTranscodeArriLookArgumentFlag name{text};
#include "meridian/cli/transcode_flags.def"

template <>
struct FlagTable<SAVTranscodeArriLookArgumentFlag> {
  static constexpr FlagGroup group = FlagGroup::cameraLook;
  static constexpr auto rows = std::to_array<FlagRow<SAVTranscodeArriLookArgumentFlag>>({
#define MERIDIAN_CAMERA_LOOK_FLAG(name, text, value, ...) {name, FlagValue::value __VA_OPT__(, ) __VA_ARGS__},
#include "meridian/cli/transcode_flags.def"
  });
};

/// A flag of any group, for code that treats all flags alike.
struct FlagDescription {
  FlagGroup group;
  std::string_view text;
  FlagValue value;
  /// What the flag does, where it is a listing command, "-preset" or a part of a joint property; empty for a flag that
  /// stores a property of its own: `TranscodeProperty::meaning` says it.
  std::string_view meaning;
  /// Whether the flag is one of its group's cases.
  bool isCase;

  [[nodiscard]] constexpr bool takesValue() const noexcept { return value != FlagValue::none; }
};

namespace detail {

template <typename... Flags>
struct FlagGroups {
  static constexpr std::size_t flagCount = (FlagTable<Flags>::rows.size() + ...);
  static constexpr std::size_t caseCount = (flagCases<Flags>.size() + ...);

  static consteval auto descriptions() {
    std::size_t place = 0;
    if (((FlagTable<Flags>::group != allCases<FlagGroup>()[place++]) || ...)) {
      preconditionFailed("flagDescriptions: the groups are not in the order of their cases");
    }
    std::array<FlagDescription, flagCount> result{};
    std::size_t count = 0;
    const auto append = [&]<typename Flag>(std::type_identity<Flag>) {
      for (const FlagRow<Flag>& row : FlagTable<Flag>::rows) {
        result[count++] = {FlagTable<Flag>::group, row.flag.rawValue(), row.value, row.meaning, row.isCase};
      }
    };
    (append(std::type_identity<Flags>{}), ...);
    return result;
  }

  static consteval auto texts() {
    std::array<std::string_view, flagCount> result{};
    std::ranges::transform(descriptions(), result.begin(), &FlagDescription::text);
    return result;
  }

  static consteval auto caseTexts() {
    std::array<std::string_view, caseCount> result{};
    auto end = result.begin();
    ((end = std::ranges::transform(flagCases<Flags>, end, [](const Flags& flag) { return flag.rawValue(); }).out), ...);
    return result;
  }
};

using AllFlagGroups =
    FlagGroups<SAVTranscodeCliCommand, SAVTranscodeArgumentFlag, SAVTranscodeVideoArgumentFlag,
               SAVTranscodeAudioArgumentFlag, SAVTranscodeTimecodeArgumentFlag, SAVTranscodeWatermarkFileArgumentFlag,
               SAVTranscodeWatermarkTextArgumentFlag, SAVTranscodeArriLookArgumentFlag>;

inline constexpr auto flagTexts = AllFlagGroups::texts();
inline constexpr auto flagTextIndex = TextIndex(flagTexts);

}  // namespace detail

/// Every flag, group by group.
inline constexpr auto flagDescriptions = detail::AllFlagGroups::descriptions();

/// The texts of all groups' cases, group by group: the flags that the parser knows.
inline constexpr auto allKnownCommandFlags = detail::AllFlagGroups::caseTexts();

/// Returns the flag with exactly this text; null when there is none. O(1).
[[nodiscard]] constexpr const FlagDescription* findFlag(std::string_view text) noexcept {
  const auto place = detail::flagTextIndex.find(text);
  return place ? &flagDescriptions[*place] : nullptr;
}

/// Returns the form in which flags are stored and compared: lower-cased and trimmed.
[[nodiscard]] MERIDIAN_API std::string normalizedFlag(std::string_view word);

}  // namespace meridian::inline v0_2
