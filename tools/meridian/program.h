/// \file
/// What the main functions of the programs have in common. For example:
///
///     int main(int argc, char** argv) { return runProgram("meridian", argc, argv, runCommand); }
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "tools/meridian/command.h"

namespace meridian::command {

/// Calls the function with the words after the program's path, and returns the exit status. Reports what the function
/// throws on standard error, after the program's name: a UsageError with the status `wrongUsage`, and everything else,
/// also a standard output that cannot be written, with `failed`. What the library logs is not printed, since a program
/// reports errors itself.
[[nodiscard]] int runProgram(std::string_view name, int argc, char** argv,
                             const std::function<Status(std::span<const std::string_view> words)>& run);

}  // namespace meridian::command
