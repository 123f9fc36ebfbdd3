// Runs a real program and collects what it wrote.
#pragma once

#include <string>
#include <vector>

namespace meridian::test {

struct Outcome {
  /// The exit status; 128 and more for a program that a signal ended.
  int status = 0;
  std::string output;
  std::string errors;
};

struct Surroundings {
  /// "NAME=value" in place of, or beside, the test's own environment.
  std::vector<std::string> environment;
  /// A file to write standard output to instead of collecting it.
  std::string outputFile;
};

/// Runs the program with these words, without a shell, and waits for it.
Outcome run(const std::vector<std::string>& command, const Surroundings& surroundings = {});

/// Runs the program on a terminal of its own; `output` is what it wrote there.
Outcome runOnTerminal(const std::vector<std::string>& command, const Surroundings& surroundings = {});

}  // namespace meridian::test
