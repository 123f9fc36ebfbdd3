// The meridian command: the rules of the library for people and scripts.
#include <iostream>

#include "tools/meridian/command.h"
#include "tools/meridian/parser.h"
#include "tools/meridian/program.h"

namespace meridian::command {
namespace {

Status runCommand(std::span<const std::string_view> words) {
  if (words.empty()) {
    demonstrate();
    return done;
  }
  const std::vector<Subcommand> subcommands = allSubcommands();
  const Parsed parsed = parseWords(subcommands, words);
  if (parsed.subcommand != nullptr) return parsed.subcommand->action(parsed.arguments);
  std::cout << parsed.text;
  return done;
}

}  // namespace
}  // namespace meridian::command

int main(int argc, char** argv) {
  return meridian::command::runProgram("meridian", argc, argv, meridian::command::runCommand);
}
