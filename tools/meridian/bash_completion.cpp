#include <algorithm>

#include "meridian/base/joined.h"
#include "tools/meridian/completion_scripts.h"

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
std::string wordFlagCases(const std::vector<Subcommand>& subcommands) {
  std::string cases;
  for (const Subcommand& subcommand : subcommands) {
    if (subcommand.wordFlags.empty()) continue;
    cases +=
        "      " + subcommand.name + ") [[ $word == -* ]] && words='" + joined(subcommand.wordFlags, " ") + "' ;;\n";
  }
  return cases;
}

/// The line of a case statement that offers options, and what else a word may be: a path, which bash completes by
/// itself, or the beginning of a value.
std::string optionCase(const Subcommand& subcommand) {
  const bool takesPath = std::ranges::any_of(subcommand.options, &Option::path);
  const auto begun = std::ranges::find_if(subcommand.options, [](const Option& each) { return !each.names.empty(); });
  std::string line = "    '" + subcommand.fullName() + "':*) ";
  if (begun != subcommand.options.end()) {
    std::vector<std::string> beginnings;
    for (const Option::Name& name : begun->names) beginnings.push_back(std::string(name.text) + "=");
    line += "if [[ $word != -* ]]; then words='" + joined(beginnings, " ") +
            "'; compopt -o nospace 2>/dev/null; else words='" + optionNames(subcommand) + "'; fi ;;\n";
    return line;
  }
  return line + (takesPath ? "[[ $word == -* ]] && " : "") + "words='" + optionNames(subcommand) + "' ;;\n";
}

/// The lines of a case statement over "subcommand:preceding word": the choices of an option.
std::string choiceCases(const Subcommand& subcommand) {
  std::string cases;
  for (const Option& option : subcommand.options) {
    const bool positional = option.kind == Option::Kind::positional;
    const std::string before = positional ? subcommand.name : "--" + option.name;
    const std::string head = "    '" + subcommand.fullName() + "':" + before + ") ";
    if (!option.choices.empty()) cases += head + "words='" + joined(option.choices, " ") + "' ;;\n";
    if (option.path && !positional) cases += head + ";;\n";  // file names only
  }
  return cases;
}

/// The lines of a case statement over "subcommand:name", for the value after "name=".
std::string valueCases(const Subcommand& subcommand) {
  std::string cases;
  for (const Option& option : subcommand.options) {
    for (const Option::Name& name : option.names) {
      if (name.values.empty()) continue;
      cases += "    '" + subcommand.fullName() + "':" + std::string(name.text) + ") words='" +
               joined(name.values, " ") + "' ;;\n";
    }
  }
  return cases;
}

/// The lines of a case statement over the first word: the subcommands of a group, for the second word.
std::string groupCases(const std::vector<Subcommand>& subcommands) {
  std::string cases;
  for (const CommandGroup& group : commandGroups) {
    cases += "    " + std::string(group.name) + ") ((COMP_CWORD == 2)) && words='" +
             joined(textsOf(membersOf(group, subcommands)), " ") + " --help' || command+=\" ${COMP_WORDS[2]}\" ;;\n";
  }
  return cases;
}

}  // namespace

std::string bashCompletion() {
  const std::vector<Subcommand> subcommands = allSubcommands();
  std::string options;
  std::string choices;
  std::string values;
  for (const Subcommand& subcommand : subcommands) {
    options += optionCase(subcommand);
    choices += choiceCases(subcommand);
    values += valueCases(subcommand);
  }
  std::string flagCases;
  for (const FlagValues& each : valuesOfFlags()) {
    flagCases += "      " + std::string(each.flag) + ") words='" + joined(each.values, " ") + "' ;;\n";
  }
  return R"(# Completion of the meridian command for bash. Made by "meridian completion bash".
_meridian() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} words= name= i
  COMPREPLY=()
  for ((i = 2; i < COMP_CWORD; i++)); do
    [[ ${COMP_WORDS[i]} == -- ]] || continue
    # After "--" come the words of an argument vector, mostly the transcoder's.
    case ${COMP_WORDS[1]} in
)" + wordFlagCases(subcommands) +
         R"(      *) case $previous in
)" + flagCases +
         R"(      *) [[ $word == -* ]] && words=')" + joined(textsOf(transcoderFlags()), " ") + R"(' ;;
      esac ;;
    esac
    [[ -n $words ]] && COMPREPLY=($(compgen -W "$words" -- "$word"))
    return
  done
  if ((COMP_CWORD == 1)); then
    COMPREPLY=($(compgen -W ')" +
         joined(textsOf(firstWords(subcommands)), " ") + R"( --help --version' -- "$word"))
    return
  fi
  local command=${COMP_WORDS[1]}
  case $command in
)" + groupCases(subcommands) +
         R"(  esac
  # bash makes "=" a word of its own.
  if [[ $word == = ]]; then
    name=$previous word=
  elif [[ $previous == = ]]; then
    name=${COMP_WORDS[COMP_CWORD-2]}
  fi
  if [[ -n $name ]]; then
    case $command:$name in
)" + values +
         R"(    esac
    [[ -n $words ]] && COMPREPLY=($(compgen -W "$words" -- "$word"))
    return
  fi
  case $command:$previous in
)" + choices +
         options + R"(  esac
  COMPREPLY=($(compgen -W "$words" -- "$word"))
}
complete -o default -F _meridian meridian
)";
}

}  // namespace meridian::command
