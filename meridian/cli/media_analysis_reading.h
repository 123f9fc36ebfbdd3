/// \file
/// Reads the media-analysis tool's argument vector back into options, and warns of options that would not read back.
/// For example:
///
///     const auto read = readMediaAnalysisArguments(words);
///     for (const auto& warning : read.warnings) std::cerr << warning.message() << '\n';
///     // "-maxImageWidth": needs a number from 0 to 3.4e38: "wide"
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/error.h"
#include "meridian/base/function_ref.h"
#include "meridian/cli/argument_words.h"
#include "meridian/cli/media_analysis_argument_factory.h"
#include "meridian/cli/media_analysis_options.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Which words of a vector are not in the options that were read from it, and why.
enum class MediaAnalysisCLIWarningCode : std::uint8_t {
  /// A word comes before the first flag.
  strayWord,
  /// The tool does not know the flag; once for each of its values.
  unknownFlag,
  /// A flag that needs a value has none.
  missingValue,
  /// A switch is followed by a value.
  unexpectedValue,
  /// A value is not a valid number, or not a valid integer.
  unreadableNumber,
  unreadableInteger,
  /// A later value replaced this one.
  replacedValue,
  /// There is an application's number without a process identifier.
  withoutParentPid,
};

template <>
struct EnumerationTable<MediaAnalysisCLIWarningCode> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaAnalysisCLIWarningCode>>({
      {MediaAnalysisCLIWarningCode::strayWord, "strayWord", "comes before the first flag and is ignored"},
      {MediaAnalysisCLIWarningCode::unknownFlag, "unknownFlag", "is not a flag of the analysis tool"},
      {MediaAnalysisCLIWarningCode::missingValue, "missingValue", "needs a value",
       "put \"./\" before a path that begins with \"-\""},
      {MediaAnalysisCLIWarningCode::unexpectedValue, "unexpectedValue", "is a switch, so its value is ignored"},
      {MediaAnalysisCLIWarningCode::unreadableNumber, "unreadableNumber", "needs a number from 0 to 3.4e38"},
      {MediaAnalysisCLIWarningCode::unreadableInteger, "unreadableInteger",
       "needs a whole number from 0 to 2147483647"},
      {MediaAnalysisCLIWarningCode::replacedValue, "replacedValue",
       "keeps only its last value, so this one is ignored"},
      {MediaAnalysisCLIWarningCode::withoutParentPid, "withoutParentPid", "is ignored without -parentPid"},
  });
};

/// Says which word of a vector is not in the options, and why. `place` is the flag as written, or the stray word;
/// `detail` is empty.
struct MediaAnalysisCLIWarning : Warning<MediaAnalysisCLIWarningCode> {
  /// The flag's value as it was read; absent if the flag has none, and for a stray word.
  std::optional<std::string> value{};

  /// Returns the known flag that is nearest to an unknown one; absent if none is near, and for every other code.
  [[nodiscard]] MERIDIAN_API std::optional<std::string> suggestion() const;
  /// Returns the whole warning for a person, safe for a terminal, with the value and the suggestion.
  [[nodiscard]] MERIDIAN_API std::string message() const;

  friend bool operator==(const MediaAnalysisCLIWarning&, const MediaAnalysisCLIWarning&) = default;
};

/// An argument vector as options, with warnings of the words that are not in them.
struct MediaAnalysisCLIReading {
  MediaAnalysisCLIArgumentFactory::BasicOptions basic;
  /// Absent if the vector has no image flag. The width is 0 if the vector has none.
  std::optional<MediaAnalysisCLIArgumentFactory::ImageOptions> image;
  MediaAnalysisCLIArgumentFactory::CustodialOptions custodial;
  /// In the order of the vector. A replaced value is reported at the value that replaces it, and `withoutParentPid`
  /// comes last.
  std::vector<MediaAnalysisCLIWarning> warnings;

  /// Returns the flags that the tool does not know, in order, each once; absent if there are none.
  [[nodiscard]] MERIDIAN_API std::optional<std::vector<std::string>> unknownFlags() const;
  /// Returns true if the tool knows every flag of the vector.
  [[nodiscard]] MERIDIAN_API bool allFlagsAreValid() const noexcept;
  /// Calls the block with each unknown flag and each of its values, or with the empty text if it has none.
  MERIDIAN_API void enumerateUnknownFlags(
      FunctionRef<void(std::string_view flag, std::string_view value)> unknownFlagFound) const;
};

/// Reads an argument vector, without a program path, through the sanitizer.
///
/// Flags may come in any order and any case. A word whose first character is "-" is a flag, and every word up to the
/// next flag is one of its values: all values count for a path to analyze and a snapshot location, and the last one for
/// every other flag. Texts keep the white space at their ends, since a file's name may end in white space; numbers are
/// trimmed. A value that is not a valid number ("nan", "inf", "1e999", a number below 0, any other text) is ignored
/// with a warning. Never fails: a setting that is not in the vector is absent, empty or 0, and `errorsOf` finds what
/// the tool needs.
[[nodiscard]] MERIDIAN_API MediaAnalysisCLIReading readMediaAnalysisArguments(const ArgumentWords& words);

/// Why an option does not read back from its own vector.
enum class MediaAnalysisCLIWritingWarningCode : std::uint8_t {
  /// A text begins with "-", so it is read as a flag.
  readAsFlag,
  /// A number is below 0, or is -0.0, and so begins with "-".
  belowZero,
  /// A text contains a NUL, which ends a word of a command line.
  holdsNul,
  notFinite,
  /// There is an application's number without a process identifier, so it is not written.
  withoutParentPid
};

template <>
struct EnumerationTable<MediaAnalysisCLIWritingWarningCode> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaAnalysisCLIWritingWarningCode>>({
      {MediaAnalysisCLIWritingWarningCode::readAsFlag, "readAsFlag",
       "has a value that begins with \"-\", which is read as a flag",
       "put \"./\" before a path that begins with \"-\""},
      {MediaAnalysisCLIWritingWarningCode::belowZero, "belowZero",
       "has a value below 0, which is read as a flag because it begins with \"-\""},
      {MediaAnalysisCLIWritingWarningCode::holdsNul, "holdsNul",
       "has a value with a NUL, which ends a word of a command line"},
      {MediaAnalysisCLIWritingWarningCode::notFinite, "notFinite", "has a value that is not a finite number"},
      {MediaAnalysisCLIWritingWarningCode::withoutParentPid, "withoutParentPid", "is not written without -parentPid"},
  });
};

/// Says which option does not read back, and why. `place` is the flag, `detail` the value.
using MediaAnalysisCLIWritingWarning = Warning<MediaAnalysisCLIWritingWarningCode>;

/// Returns a warning for each option that a program started with the options' vector would not read as it is, in the
/// vector's order. Without warnings, reading the vector gives the same options.
[[nodiscard]] MERIDIAN_API std::vector<MediaAnalysisCLIWritingWarning> warningsOfWriting(
    const MediaAnalysisCLIOptions& options);

}  // namespace meridian::inline v0_2
