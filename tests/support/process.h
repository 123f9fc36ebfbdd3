/// \file
/// Run a real program and collect its output.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace meridian::test {

struct Outcome {
  /// The exit status; 128 plus the signal for a program that a signal ended.
  int status = 0;
  std::string output;
  std::string errors;
};

struct RunOptions {
  /// "NAME=value" settings, added to the test's own environment or replacing it there.
  std::vector<std::string> environment;
  /// The file that receives standard output; if empty, it is collected.
  std::string outputFile;
};

/// Runs the program with these arguments, without a shell, and waits for it.
Outcome run(const std::vector<std::string>& command, const RunOptions& options = {});

/// Waits for a child to end and returns its status as in `Outcome`.
int waitForStatus(pid_t child);

/// Runs the program on its own terminal; `output` is what it wrote there.
Outcome runOnTerminal(const std::vector<std::string>& command, const RunOptions& options = {});

}  // namespace meridian::test
