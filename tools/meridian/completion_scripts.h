/// \file
/// Generates the completion scripts of shells from the definitions of the subcommands and the transcoder's vocabulary.
/// For example:
///
///     std::cout << fishCompletion();  // complete -c meridian -n '__meridian_in parse' -l strict -d ...
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/meridian/command.h"

namespace meridian::command {

[[nodiscard]] std::string bashCompletion();
[[nodiscard]] std::string zshCompletion();
[[nodiscard]] std::string fishCompletion();

/// What a shell offers, with a line of explanation; the text needs no quotes in a shell.
struct Candidate {
  std::string text;
  std::string description;
};

/// Returns the first words of the subcommands: their names and those of groups.
[[nodiscard]] std::vector<Candidate> firstWords(const std::vector<Subcommand>& subcommands);

/// Returns the names of a group's subcommands.
[[nodiscard]] std::vector<Candidate> membersOf(const CommandGroup& group, const std::vector<Subcommand>& subcommands);

/// Returns the transcoder's flags, numbered where they need it.
[[nodiscard]] std::vector<Candidate> transcoderFlags();

/// A flag of the transcoder with the values that it accepts.
struct FlagValues {
  std::string_view flag;
  std::vector<std::string_view> values;
};

/// Returns the flags that accept one of a list of values.
[[nodiscard]] std::vector<FlagValues> valuesOfFlags();

/// Returns the texts of the candidates.
[[nodiscard]] std::vector<std::string> textsOf(const std::vector<Candidate>& candidates);

}  // namespace meridian::command
