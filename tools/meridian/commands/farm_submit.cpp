// meridian farm submit: hands a list of transcodes to Slurm.
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/farm.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

int numberOf(const std::string& text, int most) {
  const auto number = integerFromText(text);
  if (!number || *number < 1 || *number > most) {
    throw CommandError(text, "is not a number from 1 to " + std::to_string(most));
  }
  return static_cast<int>(*number);
}

Status submit(const Arguments& arguments) {
  FarmRequest request{.list = *arguments.value("list"), .acceptsDamaged = arguments.has("accept-damaged")};
  constexpr int mostCpus = 1024;
  constexpr int mostJobs = 1'000'000;
  if (const auto cpus = arguments.value("cpus")) request.cpus = numberOf(*cpus, mostCpus);
  if (const auto jobs = arguments.value("per-task")) {
    request.jobsPerTask = static_cast<std::size_t>(numberOf(*jobs, mostJobs));
  }
  if (const auto parallel = arguments.value("parallel")) request.parallel = numberOf(*parallel, mostJobs);
  if (arguments.has("option")) request.options = arguments.given.at("option");
  const FarmRun run = submitFarm(request);
  if (arguments.has("json")) {
    printJson({{"list", run.list},
               {"engine", "slurm"},
               {"array", run.array},
               {"summary", run.summary},
               {"jobs", run.jobCount},
               {"jobsPerTask", run.jobsPerTask}});
  } else {
    std::cout << run.jobCount << (run.jobCount == 1 ? " job" : " jobs") << " handed over as Slurm's job " << run.array
              << "; the summary will be in " << inQuotes(run.list + ".summary") << '\n';
  }
  return done;
}

}  // namespace

Subcommand farmSubmitCommand() {
  using enum Option::Kind;
  return {
      .group = "farm",
      .name = "submit",
      .description = "Hand a list of transcodes to Slurm",
      .details =
          "LIST has argument vectors, as for \"meridian transcode --jobs\". The machines need the same paths to it, to "
          "the\n"
          "media and to this program. Each task carries out one job, or --per-task of them, by \"meridian transcode "
          "--job K\n"
          "--resume LIST\": a job that is begun again, because its machine failed or was taken away, leaves out what "
          "is\n"
          "complete. LIST.results keeps what becomes of each, LIST.farm the logs; a last job writes LIST.summary when "
          "all\n"
          "have ended. Handing a list over once more carries out what is not complete.",
      .example =
          "meridian farm submit night.txt\n"
          "meridian farm submit --cpus 8 --option --partition=render --option --time=4:00:00 night.txt",
      .options =
          {{.kind = positional, .name = "list", .help = "The list of vectors", .valueName = "LIST", .path = true},
           {.kind = value,
            .name = "engine",
            .help = "What carries it out; Slurm if left out",
            .valueName = "ENGINE",
            .choices = {"slurm"}},
           {.kind = value,
            .name = "cpus",
            .help = "CPUs of each task; 1 if left out, which does most in a night; more for few long clips",
            .valueName = "N"},
           {.kind = value,
            .name = "per-task",
            .help = "Jobs of each task, one after the other; 1 if left out, more beyond 1000 jobs",
            .valueName = "N"},
           {.kind = value, .name = "parallel", .help = "Tasks at a time", .valueName = "N"},
           {.kind = value,
            .name = "option",
            .help = "A further option for sbatch; again for more",
            .valueName = "OPTION",
            .severalTimes = true},
           {flag, "accept-damaged", "Go on where a source is damaged or ends early, with a warning"},
           {flag, "json", "Print JSON: list, engine, array, summary, jobs, jobsPerTask"}},
      .action = submit,
  };
}

}  // namespace meridian::command
