// meridian farm cancel: ends a list that was handed over.
#include <iostream>

#include "tools/meridian/command.h"
#include "tools/meridian/farm.h"

namespace meridian::command {

Subcommand farmCancelCommand() {
  using enum Option::Kind;
  return {
      .group = "farm",
      .name = "cancel",
      .description = "End a list that was handed over",
      .details =
          "Jobs that wait do not begin, and those that run leave nothing. What is complete stays, and is left out when "
          "the\n"
          "list is handed over once more.",
      .example = "meridian farm cancel night.txt",
      .options =
          {{.kind = positional, .name = "list", .help = "The list of vectors", .valueName = "LIST", .path = true}},
      .action =
          [](const Arguments& arguments) {
            const FarmRun run = farmRunOf(*arguments.value("list"));
            const bool isCancelled = cancelFarm(run);
            std::cout << "Slurm's job " << run.array << (isCancelled ? " is cancelled\n" : " had ended before\n");
            return done;
          },
  };
}

}  // namespace meridian::command
