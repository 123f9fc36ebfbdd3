/// \file
/// Carries out the words of a transcoder, for every program that is given them. For example:
///
///     return transcode(words, {.program = "meridian-transcoder"});
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "meridian/engine/transcode.h"
#include "tools/meridian/command.h"

namespace meridian::command {

/// How words are carried out and reported.
struct TranscodeRequest {
  /// What begins each message.
  std::string_view program;
  /// The line that the words are from, from 1; 0 if they are not from a file.
  std::size_t line = 0;
  /// Plans, and prints the plan.
  bool isPlanOnly = false;
  /// Prints the plan, or the result, and the errors as JSON; on one line if the words are from a file.
  bool isJson = false;
  /// Goes on where a source is damaged or ends early.
  bool acceptsDamaged = false;
};

/// Prints the listings that the words ask for, or carries the transcode out and tells how far it is; with `isPlanOnly`
/// prints the plan instead. Errors and warnings go to standard error, a line each. Returns `failed` for words that
/// cannot be planned and for a transcode that fails. A signal ends the process when nothing is left of the transcode.
/// Throws CommandError if the engine is missing, and if the progress file cannot be written.
[[nodiscard]] Status transcode(std::span<const std::string_view> words, const TranscodeRequest& request);

/// Returns a line about a transcode that is done: "/out/a.mov: 250 frames, 10.00 s, 4.12 MB in 3.10 s (3.23x)".
[[nodiscard]] std::string summaryOf(const TranscodeResult& result);

}  // namespace meridian::command
