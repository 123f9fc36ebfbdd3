// meridian completion: the shell's completion script, made from the definitions of the command and the vocabulary.
#include <algorithm>
#include <iostream>
#include <vector>

#include "meridian/base/joined.h"
#include "meridian/cli/transcode_flags.h"
#include "meridian/cli/transcode_properties.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

/// The options of a subcommand, as typed.
std::string optionNames(const Subcommand& subcommand) {
  std::vector<std::string> names{"--help"};
  for (const Option& option : subcommand.options) {
    if (option.kind != Option::Kind::positional) names.push_back("--" + option.name);
  }
  return joined(names, " ");
}

/// The lines of a case statement over the first word: the flags of argument vectors that are not the transcoder's.
std::string wordFlagCases() {
  std::string cases;
  for (const Subcommand& subcommand : allSubcommands()) {
    if (subcommand.wordFlags.empty()) continue;
    cases +=
        "      " + subcommand.name + ") [[ $word == -* ]] && words='" + joined(subcommand.wordFlags, " ") + "' ;;\n";
  }
  return cases;
}

/// The line of a case statement that offers options; file names too where the subcommand accepts paths.
std::string optionCase(const Subcommand& subcommand) {
  const bool takesPath = std::ranges::any_of(subcommand.options, &Option::path);
  return "    '" + subcommand.fullName() + "':*) " + (takesPath ? "[[ $word == -* ]] && " : "") + "words='" +
         optionNames(subcommand) + "' ;;\n";
}

/// The lines of a case statement over "subcommand:preceding word": the choices of an option.
std::string choiceCases(const Subcommand& subcommand) {
  std::string cases;
  for (const Option& option : subcommand.options) {
    if (option.choices.empty()) continue;
    const bool positional = option.kind == Option::Kind::positional;
    const std::string before = positional ? subcommand.name : "--" + option.name;
    cases += "    '" + subcommand.fullName() + "':" + before + ") words='" + joined(option.choices, " ") + "' ;;\n";
  }
  return cases;
}

/// The lines of a case statement over the first word: the subcommands of a group, for the second word.
std::string groupCases() {
  std::string cases;
  for (const CommandGroup& group : commandGroups) {
    std::vector<std::string> members;
    for (const Subcommand& subcommand : allSubcommands()) {
      if (subcommand.group == group.name) members.push_back(subcommand.name);
    }
    cases += "    " + std::string(group.name) + ") ((COMP_CWORD == 2)) && words='" + joined(members, " ") +
             " --help' || command+=\" ${COMP_WORDS[2]}\" ;;\n";
  }
  return cases;
}

void printBash() {
  std::vector<std::string> names;
  std::string optionCases;
  std::string valueCases;
  for (const Subcommand& subcommand : allSubcommands()) {
    std::string first = subcommand.group.empty() ? subcommand.name : subcommand.group;
    if (names.empty() || names.back() != first) names.push_back(std::move(first));
    optionCases += optionCase(subcommand);
    valueCases += choiceCases(subcommand);
  }
  std::string flagCases;
  std::vector<std::string> flags;
  for (const FlagDescription& flag : flagDescriptions) {
    // The prefix of the inputs is useless without its numbers.
    flags.emplace_back(flag.text == SAVInputPrefixFlag.rawValue() ? "-in_0_0" : flag.text);
    if (const auto values = allowedTextsOfFlag(flag.text); !values.empty()) {
      flagCases += "      " + std::string(flag.text) + ") words='" + joined(values, " ") + "' ;;\n";
    }
  }

  std::cout << R"(# Completion of the meridian command for bash. Made by "meridian completion bash".
_meridian() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} words= i
  COMPREPLY=()
  for ((i = 2; i < COMP_CWORD; i++)); do
    [[ ${COMP_WORDS[i]} == -- ]] || continue
    # After "--" come the words of an argument vector, mostly the transcoder's.
    case ${COMP_WORDS[1]} in
)" << wordFlagCases()
            << R"(      *) case $previous in
)" << flagCases
            << R"(      *) [[ $word == -* ]] && words=')" << joined(flags, " ") << R"(' ;;
      esac ;;
    esac
    [[ -n $words ]] && COMPREPLY=($(compgen -W "$words" -- "$word"))
    return
  done
  if ((COMP_CWORD == 1)); then
    COMPREPLY=($(compgen -W ')"
            << joined(names, " ") << R"( --help --version' -- "$word"))
    return
  fi
  local command=${COMP_WORDS[1]}
  case $command in
)" << groupCases()
            << R"(  esac
  case $command:$previous in
)" << valueCases
            << optionCases << R"(  esac
  COMPREPLY=($(compgen -W "$words" -- "$word"))
}
complete -o default -F _meridian meridian
)";
}

}  // namespace

Subcommand completionCommand() {
  return {
      .name = "completion",
      .description = "Print the completion script for a shell",
      .example = "source <(meridian completion bash)",
      .options = {{Option::Kind::positional, "shell", "The shell: bash", "SHELL", {"bash"}}},
      .action =
          [](const Arguments&) {
            printBash();
            return done;
          },
  };
}

}  // namespace meridian::command
