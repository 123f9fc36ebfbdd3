// Reads the media-analysis tool's argument vector back into options, and tells what a vector cannot carry.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/function_ref.h"
#include "meridian/cli/media_analysis_argument_factory.h"
#include "meridian/cli/media_analysis_options.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// What reading could not put into the options.
enum class MediaAnalysisCLIRemarkKind : std::uint8_t {
  strayWord,
  unknownFlag,
  missingValue,
  unexpectedValue,
  unreadableNumber,
  unreadableInteger,
  replacedValue,
  withoutParentPid,
};

template <>
struct EnumerationTable<MediaAnalysisCLIRemarkKind> {
  static constexpr auto rows = std::to_array<EnumerationRow<MediaAnalysisCLIRemarkKind>>({
      {MediaAnalysisCLIRemarkKind::strayWord, "strayWord", "it stands before the first flag and is dropped"},
      {MediaAnalysisCLIRemarkKind::unknownFlag, "unknownFlag", "no flag of the analysis tool"},
      {MediaAnalysisCLIRemarkKind::missingValue, "missingValue",
       "it needs a value, which cannot begin with \"-\"; a path can begin with \"./\""},
      {MediaAnalysisCLIRemarkKind::unexpectedValue, "unexpectedValue", "it takes no value; this one is dropped"},
      {MediaAnalysisCLIRemarkKind::unreadableNumber, "unreadableNumber",
       "it takes a number from 0 to 3.4e38; this value is dropped"},
      {MediaAnalysisCLIRemarkKind::unreadableInteger, "unreadableInteger",
       "it takes a whole number from 0 to 2147483647; this value is dropped"},
      {MediaAnalysisCLIRemarkKind::replacedValue, "replacedValue",
       "it takes one value, and the last one stays; this one is dropped"},
      {MediaAnalysisCLIRemarkKind::withoutParentPid, "withoutParentPid",
       "it says nothing without -parentPid and is dropped"},
  });
};

struct MediaAnalysisCLIRemark {
  MediaAnalysisCLIRemarkKind kind = MediaAnalysisCLIRemarkKind::strayWord;
  /// As it is written before the value; empty for a stray word.
  std::string flag;
  /// Absent where the flag has none; a stray word.
  std::optional<std::string> value;

  /// For an unknown flag the known one that comes nearest; absent when none is near.
  [[nodiscard]] MERIDIAN_API std::optional<std::string> suggestion() const;
  /// The remark for a person, safe for a terminal, with the flag and the value.
  [[nodiscard]] MERIDIAN_API std::string message() const;

  friend bool operator==(const MediaAnalysisCLIRemark&, const MediaAnalysisCLIRemark&) = default;
};

/// An argument vector as options, with whatever is none of them.
struct MediaAnalysisCLIReading {
  MediaAnalysisCLIArgumentFactory::BasicOptions basic;
  /// Absent where no image flag stands in the vector. The width is 0 where there is none.
  std::optional<MediaAnalysisCLIArgumentFactory::ImageOptions> image;
  MediaAnalysisCLIArgumentFactory::CustodialOptions custodial;
  /// In the order of the vector, that a value is replaced where the next one stands; at the end that there is no
  /// process identifier to an application's number.
  std::vector<MediaAnalysisCLIRemark> remarks;

  /// The flags that are none of the tool's, in order, each once; absent when there are none.
  [[nodiscard]] MERIDIAN_API std::optional<std::vector<std::string>> unknownFlags() const;
  [[nodiscard]] MERIDIAN_API bool allFlagsAreValid() const noexcept;
  /// Calls the block with each unknown flag and each of its values, or the empty text.
  MERIDIAN_API void enumerateUnknownFlags(
      FunctionRef<void(std::string_view flag, std::string_view value)> unknownFlagFound) const;
};

/// Reads an argument vector, without a program path, through the sanitizer.
///
/// Flags may stand in any order and any case. A word that begins with "-" is a flag, as it stands, and takes all words
/// up to the next one; a path to analyze and a snapshot location take them all, every other flag the last one. Texts
/// stay as they are, blanks at their ends too, since a file's name may end in one; numbers are trimmed. What a number
/// cannot be ("nan", "inf", "1e999", below 0, any other text) is dropped with a remark. Never fails: a setting that is
/// not there is absent, empty or 0, and `faultsOf` and `errorsOf` say whether the tool can do without.
[[nodiscard]] MERIDIAN_API MediaAnalysisCLIReading readMediaAnalysisArguments(std::span<const std::string_view> words);

/// Why an argument does not come out of a vector as it went in.
enum class MediaAnalysisCLILossReason : std::uint8_t { readAsFlag, belowZero, holdsNul, notFinite, withoutParentPid };

template <>
struct EnumerationTable<MediaAnalysisCLILossReason> {
  static constexpr auto rows = std::to_array<EnumerationRow<MediaAnalysisCLILossReason>>({
      {MediaAnalysisCLILossReason::readAsFlag, "readAsFlag",
       "what begins with \"-\" is read as a flag; a path can begin with \"./\""},
      {MediaAnalysisCLILossReason::belowZero, "belowZero",
       "no number below 0 is read, since what begins with \"-\" is a flag"},
      {MediaAnalysisCLILossReason::holdsNul, "holdsNul", "a word of a command line ends at its first NUL"},
      {MediaAnalysisCLILossReason::notFinite, "notFinite", "only finite numbers are read"},
      {MediaAnalysisCLILossReason::withoutParentPid, "withoutParentPid", "it is not written without -parentPid"},
  });
};

struct MediaAnalysisCLILoss {
  MediaAnalysisCLILossReason reason = MediaAnalysisCLILossReason::readAsFlag;
  std::string flag;
  std::string value;

  /// The loss for a person, safe for a terminal, with the flag and the value.
  [[nodiscard]] MERIDIAN_API std::string message() const;
};

/// The options that a program started with their vector does not read as they are, in the vector's order. With none,
/// reading the vector gives the same options.
[[nodiscard]] MERIDIAN_API std::vector<MediaAnalysisCLILoss> lossesInReading(const MediaAnalysisCLIOptions& options);

}  // namespace meridian::inline v0_2
