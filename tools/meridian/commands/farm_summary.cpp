// meridian farm summary: writes what became of a list when all of its tasks have ended.
#include <iostream>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/farm.h"

namespace meridian::command {

Subcommand farmSummaryCommand() {
  using enum Option::Kind;
  return {
      .group = "farm",
      .name = "summary",
      .description = "Write what became of a list to LIST.summary",
      .details =
          "Reads LIST.results, and counts jobs without a result as lost. The last job of \"meridian farm submit\" does "
          "this;\n"
          "after another engine, run it once its tasks have ended. The status is 1 if not every job has its output.",
      .example = "meridian farm summary night.txt",
      .options =
          {{.kind = positional, .name = "list", .help = "The list of vectors", .valueName = "LIST", .path = true}},
      .action =
          [](const Arguments& arguments) {
            const FarmReport report = resultsOf(*arguments.value("list"));
            std::cout << textOf(report);
            writeSummary(report);
            return report.isFlawless() ? done : failed;
          },
  };
}

}  // namespace meridian::command
