/// \file
/// Parses the command's own words by the definitions of its subcommands. For example:
///
///     const std::vector<Subcommand> subcommands = allSubcommands();
///     const Parsed parsed = parseWords(subcommands, words);
///     if (parsed.subcommand != nullptr) return parsed.subcommand->action(parsed.arguments);
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/meridian/command.h"

namespace meridian::command {

/// Holds a subcommand to run with its arguments, or a text to print if help or the version was requested.
struct Parsed {
  const Subcommand* subcommand = nullptr;
  Arguments arguments;
  std::string text;
};

/// Parses the words after the command's name. Throws UsageError if they fit no subcommand. The subcommands must outlive
/// the result.
[[nodiscard]] Parsed parseWords(std::span<const Subcommand> subcommands, std::span<const std::string_view> all);

}  // namespace meridian::command
