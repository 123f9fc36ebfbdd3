// Reads the command's own words against the definitions of its subcommands.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/meridian/command.h"

namespace meridian::command {

/// The outcome of reading: a subcommand to run with its arguments, or, when help was asked for, a text to print.
struct Parsed {
  const Subcommand* subcommand = nullptr;
  Arguments arguments;
  std::string text;
};

/// Reads the words behind the command's name. Throws UsageError when they fit no subcommand.
[[nodiscard]] Parsed parseWords(std::span<const Subcommand> subcommands, std::span<const std::string_view> all);

}  // namespace meridian::command
