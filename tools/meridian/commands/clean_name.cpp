// meridian clean-name: names without the characters that a tape or the desktop does not take.
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

/// The characters with blanks before them.
std::string listOf(std::string_view characters) {
  std::string list;
  for (const char character : characters) list.append(" ").push_back(character);
  return list;
}

Status cleanNames(const Arguments& arguments) {
  if (arguments.has("ltfs") && arguments.has("desktop")) {
    throw UsageError("--ltfs and --desktop exclude each other; with neither, a name is made fit for both");
  }
  Status status = done;
  std::vector<std::string> names;
  for (const std::string& name : arguments.given.at("name")) {
    names.push_back(cleaned(name, arguments));
    if (names.back().empty()) {
      std::cerr << "meridian: nothing is left of " << inQuotes(name) << '\n';
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
      .description = "Print names without the characters that a tape or the desktop does not take",
      .details =
          "With neither --ltfs nor --desktop a name is made fit for both. Nothing is put in the place of what goes.\n"
          "A name of which nothing is left gives an empty one, and the exit status 1. Neither a length nor the names\n"
          "\".\" and \"..\" are looked at. Behind \"--\" a name may begin with a dash.",
      .example = "meridian clean-name 'Café: Take 1/2.mov'",
      .options = {{flag, "ltfs",
                   "For a tape: ASCII alone, without control characters and" + listOf(standardIllegalLtfsCharacters)},
                  {flag, "desktop",
                   "For the desktop's file system: without" + listOf(disallowedMacOSFilesystemCharacters)},
                  {flag, "json", "Print a JSON list"},
                  {flag, "null", "End each name with a NUL, for xargs -0; a name may hold line ends"},
                  {.kind = positional, .name = "name", .help = "A name", .valueName = "NAME", .repeated = true}},
      .exclusive = {"json", "null"},
      .action = cleanNames,
  };
}

}  // namespace meridian::command
