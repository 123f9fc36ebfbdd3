/// \file
/// Carries out the words of a transcoder, for every program that is given them. For example:
///
///     return transcode(words, {.program = "meridian-transcoder"});
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

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
  /// Prints the plan and the errors as JSON; on one line if the words are from a file.
  bool isJson = false;
};

/// Prints the listings that the words ask for, or plans the transcode, and with `isPlanOnly` prints the plan. Errors
/// and warnings go to standard error, a line each. Returns `failed` for words that cannot be planned. Throws
/// CommandError if the engine is missing, and otherwise without `isPlanOnly`, since there is only planning yet.
[[nodiscard]] Status transcode(std::span<const std::string_view> words, const TranscodeRequest& request);

}  // namespace meridian::command
