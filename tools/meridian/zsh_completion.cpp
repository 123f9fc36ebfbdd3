#include <algorithm>

#include "meridian/base/joined.h"
#include "tools/meridian/completion_scripts.h"
#include "tools/meridian/shell_words.h"

namespace meridian::command {
namespace {

/// An array for _describe: 'text:description' for each candidate.
std::string arrayOf(const std::vector<Candidate>& candidates) {
  std::string array = "candidates=(";
  for (const Candidate& each : candidates) array += "\n      " + shellQuoted(each.text + ":" + each.description);
  return array + ")";
}

std::vector<Candidate> optionsOf(const Subcommand& subcommand) {
  std::vector<Candidate> options{{"--help", "Print the help"}};
  for (const Option& option : subcommand.options) {
    if (option.kind != Option::Kind::positional) options.push_back({"--" + option.name, option.help});
  }
  return options;
}

/// A line of a case statement over "subcommand:preceding word", for the value of an option.
std::string optionValueCases(const Subcommand& subcommand) {
  std::string cases;
  for (const Option& option : subcommand.options) {
    if (option.kind != Option::Kind::value) continue;
    cases += "    '" + subcommand.fullName() + ":--" + option.name + "') ";
    if (!option.choices.empty()) {
      cases += "compadd -- " + joined(option.choices, " ");
    } else {
      cases += option.path ? "_files" : "_message " + shellQuoted(option.valueName);
    }
    cases += "; return ;;\n";
  }
  return cases;
}

/// Lines of a case statement over the subcommand, for a word that is not an option.
std::string positionalCases(const Subcommand& subcommand) {
  for (const Option& option : subcommand.options) {
    const std::string head = "    '" + subcommand.fullName() + "')";
    if (!option.choices.empty() && option.kind == Option::Kind::positional) {
      return head + " compadd -- " + joined(option.choices, " ") + " ;;\n";
    }
    if (option.names.empty()) continue;
    std::vector<Candidate> beginnings;
    std::string values;
    for (const Option::Name& name : option.names) {
      beginnings.push_back({std::string(name.text) + "=", std::string(name.meaning)});
      if (name.values.empty()) continue;
      values += "        " + std::string(name.text) + ") compadd -- " + joined(name.values, " ") + " ;;\n";
    }
    std::string body = head;
    body += R"(
      local name=${words[CURRENT]%%=*}
      if [[ $words[CURRENT] == *=* ]]; then
        compset -P '*='
        case $name in
)";
    body += values;
    body += R"(        *) _files ;;
        esac
        return
      fi
      )";
    body += arrayOf(beginnings);
    return body += "\n      _describe 'property' candidates -S '' ;;\n";
  }
  const bool takesPath = std::ranges::any_of(subcommand.options, &Option::path);
  return takesPath ? "    '" + subcommand.fullName() + "') _files ;;\n" : "";
}

}  // namespace

std::string zshCompletion() {
  const std::vector<Subcommand> subcommands = allSubcommands();
  std::string groups;
  for (const CommandGroup& group : commandGroups) {
    groups += "    " + std::string(group.name) + ")\n      if ((CURRENT == 3)); then\n      " +
              arrayOf(membersOf(group, subcommands)) +
              "\n      _describe 'command' candidates\n      return\n      fi\n      command+=\" $words[3]\" ;;\n";
  }
  std::string flagValues;
  for (const FlagValues& each : valuesOfFlags()) {
    flagValues += "      " + std::string(each.flag) + ") compadd -- " + joined(each.values, " ") + "; return ;;\n";
  }
  std::string wordFlags;
  std::string optionValues;
  std::string options;
  std::string positionals;
  for (const Subcommand& each : subcommands) {
    if (!each.wordFlags.empty()) {
      wordFlags +=
          "      '" + each.fullName() + "') compadd -- " + joined(each.wordFlags, " ") + "; _files; return ;;\n";
    }
    optionValues += optionValueCases(each);
    options += "    '" + each.fullName() + "') " + arrayOf(optionsOf(each)) + " ;;\n";
    positionals += positionalCases(each);
  }
  return R"(#compdef meridian
# Completion of the meridian command for zsh. Made by "meridian completion zsh".
_meridian() {
  local -a candidates
  local command=$words[2]
  if ((CURRENT == 2)); then
    )" + arrayOf(firstWords(subcommands)) +
         R"(
    _describe 'command' candidates
    return
  fi
  case $command in
)" + groups +
         R"(  esac
  if ((${words[(ie)--]} < CURRENT)); then
    # After "--" come the words of an argument vector, mostly the transcoder's.
    case $command in
)" + wordFlags +
         R"(    esac
    case $words[CURRENT-1] in
)" + flagValues +
         R"(    esac
    if [[ $words[CURRENT] == -* ]]; then
      )" +
         arrayOf(transcoderFlags()) +
         R"(
      _describe -o 'flag' candidates
    else
      _files
    fi
    return
  fi
  case $command:$words[CURRENT-1] in
)" + optionValues +
         R"(  esac
  if [[ $words[CURRENT] == -* ]]; then
    case $command in
)" + options +
         R"(    esac
    _describe -o 'option' candidates
    return
  fi
  case $command in
)" + positionals +
         R"(  esac
}
if [[ $funcstack[1] == _meridian ]]; then
  _meridian "$@"
else
  compdef _meridian meridian
fi
)";
}

}  // namespace meridian::command
