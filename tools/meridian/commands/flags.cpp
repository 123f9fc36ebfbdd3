// meridian flags: the transcoder's flags, group by group.
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/cli/transcode_flags.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

void printFlagsAsJson() {
  Json flags = Json::array();
  for (const FlagDescription& flag : flagDescriptions) {
    flags.push_back({{"group", rawValue(flag.group)},
                     {"text", flag.text},
                     {"takesValue", flag.takesValue()},
                     {"isKnown", flag.isCase}});
  }
  printJson(flags);
}

void printFlagsForPeople() {
  for (const FlagGroup group : allCases<FlagGroup>()) {
    std::cout << styled(Style::heading, description(group)) << '\n';
    std::vector<std::vector<Cell>> rows;
    for (const FlagDescription& flag : flagDescriptions) {
      if (flag.group != group) continue;
      rows.push_back({{std::string(flag.text), Style::name},
                      {flag.takesValue() ? "VALUE" : "", Style::plain},
                      {flag.isCase ? "" : "not offered", Style::faint}});
    }
    printTable(rows);
  }
}

}  // namespace

Subcommand flagsCommand() {
  return {
      .name = "flags",
      .description = "List the transcoder's flags and which of them take a value",
      .example = "meridian flags --json",
      .options = {{Option::Kind::flag, "json",
                   "Print a JSON list: group, text, takesValue, isKnown (offered, and known to the parser)"}},
      .action =
          [](const Arguments& arguments) {
            arguments.has("json") ? printFlagsAsJson() : printFlagsForPeople();
            return done;
          },
  };
}

}  // namespace meridian::command
