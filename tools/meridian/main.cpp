// The meridian command: the rules of the library for people and scripts.
#include <algorithm>
#include <exception>
#include <iostream>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/parser.h"

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

Status report(std::string_view message, Status status) {
  std::cerr << "meridian: " << message << '\n';
  return status;
}

}  // namespace
}  // namespace meridian::command

int main(int argc, char** argv) {
  using namespace meridian::command;
  try {
    std::ios::sync_with_stdio(false);
    const std::vector<std::string_view> words(argv + std::min(argc, 1), argv + argc);
    const Status status = runCommand(words);
    if (!std::cout.flush()) throw CommandError("standard output cannot be written");
    return status;
  } catch (const UsageError& error) {
    return report(error.what(), wrongUsage);
  } catch (const CommandError& error) {
    return report(error.what(), failed);
  } catch (const std::exception& error) {
    return report(meridian::printable(error.what()), failed);
  }
}
