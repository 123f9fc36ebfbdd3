/// \file
/// Runs another program and reads what it says. For example:
///
///     const ChildOutcome outcome = runChild({"squeue", "--version"});
///     if (outcome.status != 0) throw CommandError("squeue", outcome.errors);
#pragma once

#include <string>
#include <vector>

namespace meridian::command {

struct ChildOutcome {
  /// The exit status; 128 and the signal's number for a program that a signal ended.
  int status = 0;
  std::string output;
  std::string errors;
};

/// Runs the program, which is looked for along PATH, with nothing on its standard input. Throws CommandError if it
/// cannot be started, as when it is not installed.
[[nodiscard]] ChildOutcome runChild(const std::vector<std::string>& words);

}  // namespace meridian::command
