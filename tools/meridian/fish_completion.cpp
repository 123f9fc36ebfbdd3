#include "meridian/base/joined.h"
#include "tools/meridian/completion_scripts.h"

namespace meridian::command {
namespace {

/// Quotes a text for fish, where a backslash within single quotes escapes a quote and a backslash.
std::string fishQuoted(std::string_view text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' || c == '\\' ? std::string{'\\', c} : std::string(1, c);
  return result + "'";
}

std::string offer(std::string_view condition, std::string_view text, std::string_view description) {
  return "complete -c meridian -n " + fishQuoted(condition) + " -a " + fishQuoted(text) +
         (description.empty() ? "" : " -d " + fishQuoted(description)) + "\n";
}

std::string optionLine(const std::string& condition, const Option& option) {
  std::string line = "complete -c meridian -n " + fishQuoted(condition) + " -l " + option.name;
  if (option.kind == Option::Kind::value) {
    if (!option.choices.empty()) {
      line += " -x -a " + fishQuoted(joined(option.choices, " "));
    } else {
      line += option.path ? " -r -F" : " -x";
    }
  }
  return line + " -d " + fishQuoted(option.help) + "\n";
}

std::string positionalLines(const std::string& condition, const Option& option) {
  std::string lines;
  if (!option.choices.empty()) lines += offer(condition, joined(option.choices, " "), "");
  for (const Option::Name& name : option.names) {
    lines += offer(condition, std::string(name.text) + "=", name.meaning);
    for (const std::string_view value : name.values) {
      lines += offer(condition, std::string(name.text) + "=" + std::string(value), name.meaning);
    }
  }
  if (option.path) lines += "complete -c meridian -n " + fishQuoted(condition) + " -F\n";
  return lines;
}

}  // namespace

std::string fishCompletion() {
  const std::vector<Subcommand> subcommands = allSubcommands();
  std::string script = R"(# Completion of the meridian command for fish. Made by "meridian completion fish".
# True if the words before the cursor are exactly these, after the command's name.
function __meridian_at
    set -l given (commandline -opc)
    test "$given[2..-1]" = "$argv"
end
# True for an option or a positional of this subcommand.
function __meridian_in
    set -l given (commandline -opc)
    contains -- -- $given; and return 1
    set -l last (math 1 + (count $argv))
    test (count $given) -ge $last; and test "$given[2..$last]" = "$argv"
end
# True after "--", where an argument vector begins: of this subcommand, or of one that reads the transcoder's words.
function __meridian_vector_of
    set -l given (commandline -opc)
    contains -- -- $given; and contains -- "$given[2]" $argv
end
# True for the value of one of these flags of the transcoder.
function __meridian_after
    set -l given (commandline -opc)
    contains -- -- $given; and contains -- "$given[-1]" $argv
end
complete -c meridian -f
complete -c meridian -n __meridian_at -l version -d 'Print the version'
complete -c meridian -l help -d 'Print the help'
)";
  for (const Candidate& each : firstWords(subcommands)) script += offer("__meridian_at", each.text, each.description);
  for (const CommandGroup& group : commandGroups) {
    for (const Candidate& each : membersOf(group, subcommands)) {
      script += offer("__meridian_at " + std::string(group.name), each.text, each.description);
    }
  }
  std::string flagsWithValues;
  for (const FlagValues& each : valuesOfFlags()) flagsWithValues += " " + std::string(each.flag);
  std::vector<std::string> readers;
  for (const Subcommand& each : subcommands) {
    const std::string condition = "__meridian_in " + each.fullName();
    for (const Option& option : each.options) {
      script +=
          option.kind == Option::Kind::positional ? positionalLines(condition, option) : optionLine(condition, option);
    }
    if (!each.takesWords) continue;
    const std::string inVector = "__meridian_vector_of " + each.name;
    std::string isFile = inVector;
    isFile.append("; and not __meridian_after").append(flagsWithValues);
    script += "complete -c meridian -n " + fishQuoted(isFile) + " -F\n";
    if (each.wordFlags.empty()) readers.push_back(each.name);
    for (const std::string& flag : each.wordFlags) script += offer(inVector, flag, "");
  }
  for (const Candidate& each : transcoderFlags()) {
    script += offer("__meridian_vector_of " + joined(readers, " "), each.text, each.description);
  }
  for (const FlagValues& each : valuesOfFlags()) {
    script += offer("__meridian_after " + std::string(each.flag), joined(each.values, " "), "");
  }
  return script;
}

}  // namespace meridian::command
