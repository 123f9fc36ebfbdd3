/// \file
/// Reports what of an argument vector has no effect as written. For example:
///
///     const TranscodeExplanation explanation = explain(words);
///     if (reportFindings(explanation, "line 3: ", Findings::all)) return failed;
#pragma once

#include <cstdint>
#include <string_view>

#include "meridian/cli/transcode_explanation.h"
#include "tools/meridian/command.h"

namespace meridian::command {

enum class Findings : std::uint8_t {
  /// Words that belong to no flag, as warnings.
  strayWords,
  /// These and rejected flags and presets, as warnings.
  unusedWords,
  /// These and values that cannot be parsed or will not be used, as errors.
  all,
};

/// Writes a line for each finding to standard error; `place` begins each message. Returns true if there is any.
bool reportFindings(const TranscodeExplanation& explanation, std::string_view place, Findings findings);

/// The option --strict, with which `Findings::all` are reported and fail the subcommand.
[[nodiscard]] Option strictOption();

/// Warns on standard error of each value that a reader of the store's rendered vector gets differently.
void warnOfReadingBack(const TranscodeCliArguments& store, std::string_view place);

}  // namespace meridian::command
