// meridian farm status: shows how far a list is that was handed over.
#include <iostream>
#include <nlohmann/json.hpp>

#include "tools/meridian/command.h"
#include "tools/meridian/farm.h"
#include "tools/meridian/output.h"

namespace meridian::command {

Subcommand farmStatusCommand() {
  using enum Option::Kind;
  return {
      .group = "farm",
      .name = "status",
      .description = "Show how far a list is that was handed over",
      .details =
          "Prints a line for each job that runs, failed or was lost, and the counts. The status is 1 if all have ended "
          "and\n"
          "not every job has its output.",
      .example = "meridian farm status night.txt",
      .options =
          {{.kind = positional, .name = "list", .help = "The list of vectors", .valueName = "LIST", .path = true},
           {flag, "json", "Print JSON: list, engine, array, counts, jobs"}},
      .action =
          [](const Arguments& arguments) {
            const FarmReport report = reportOf(farmRunOf(*arguments.value("list")));
            if (arguments.has("json")) {
              printJson(documentOf(report));
            } else {
              std::cout << textOf(report);
            }
            return report.hasEnded() && !report.isFlawless() ? failed : done;
          },
  };
}

}  // namespace meridian::command
