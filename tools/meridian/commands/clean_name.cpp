// meridian clean-name: names without the characters that LTFS tapes or the desktop do not allow.
#include <iostream>

#include "meridian/base/printable.h"
#include "meridian/fs/name_rules.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

std::string cleaned(const std::string& name, const Arguments& arguments) {
  if (arguments.has("ltfs")) return removingInvalidLtfsCharacters(name);
  if (arguments.has("desktop")) return removingDisallowedMacOSFilesystemCharacters(name);
  return removingInvalidLtfsCharacters(removingDisallowedMacOSFilesystemCharacters(name));
}

/// Returns the characters, each after a space.
std::string listOf(std::string_view characters) {
  std::string list;
  for (const char character : characters) list.append(" ").push_back(character);
  return list;
}

Status cleanNames(const Arguments& arguments) {
  if (arguments.has("ltfs") && arguments.has("desktop")) {
    throw UsageError("--ltfs and --desktop cannot be combined; without them a name is made valid for both");
  }
  Status status = done;
  std::vector<std::string> names;
  for (const std::string& name : arguments.given.at("name")) {
    names.push_back(cleaned(name, arguments));
    if (names.back().empty()) {
      std::cerr << "meridian: " << inQuotes(name) << ": nothing is left of the name" << '\n';
      status = failed;
    }
  }
  printVector(names, arguments);
  return status;
}

}  // namespace

Subcommand cleanNameCommand() {
  using enum Option::Kind;
  return {
      .name = "clean-name",
      .description = "Remove the characters from names that LTFS tapes or the desktop do not allow",
      .details =
          "Without --ltfs and --desktop a name is made valid for both. Removed characters are not replaced. If\n"
          "nothing is left of a name, an empty one is printed and the exit status is 1. Neither the length of a name\n"
          "nor the names \".\" and \"..\" are checked. Put names with a leading dash after \"--\".",
      .example = "meridian clean-name 'Café: Take 1/2.mov'",
      .options = {{flag, "ltfs",
                   "For LTFS tapes: only ASCII, without control characters and" +
                       listOf(standardIllegalLtfsCharacters)},
                  {flag, "desktop",
                   "For the desktop's file system: without" + listOf(disallowedMacOSFilesystemCharacters)},
                  {flag, "json", "Print a JSON list"},
                  {flag, "null", "End each name with a NUL, for names with newlines and for xargs -0"},
                  {.kind = positional, .name = "name", .help = "A name", .valueName = "NAME", .repeated = true}},
      .exclusive = {"json", "null"},
      .action = cleanNames,
  };
}

}  // namespace meridian::command
