// meridian transcode: transcodes planned and carried out, one or many, and the transcoder's listings.
#include "meridian/base/numbers.h"
#include "tools/meridian/transcode_jobs.h"
#include "tools/meridian/transcoding.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {
namespace {

void checkOptions(const Arguments& arguments) {
  if (arguments.has("parallel") && !arguments.has("jobs")) throw UsageError("--parallel is for --jobs");
  if (arguments.has("resume") && !arguments.has("jobs") && !arguments.has("job")) {
    throw UsageError("--resume is for --jobs and --job");
  }
  if (arguments.has("job") != arguments.has("list")) {
    throw UsageError(arguments.has("job") ? "--job needs the LIST that has the job" : "LIST is for --job");
  }
  if (arguments.has("job") && arguments.has("plan")) throw UsageError("--job and --plan cannot be used together");
  if (arguments.has("accept-damaged") && arguments.has("plan")) {
    throw UsageError("--accept-damaged is for a transcode that is carried out, not for --plan");
  }
  if (arguments.has("resume") && arguments.value("jobs") == "-") {
    throw UsageError("--resume needs a file of jobs, beside which it keeps what is complete; not standard input");
  }
}

Status carryOutJobs(const Arguments& arguments) {
  const std::string list = arguments.value("jobs").value_or(arguments.value("list").value_or(""));
  JobsRequest request{.path = list,
                      .resumes = arguments.has("resume"),
                      .isJson = arguments.has("json"),
                      .acceptsDamaged = arguments.has("accept-damaged")};
  if (const auto parallel = arguments.value("parallel")) {
    const auto number = integerFromText(*parallel);
    constexpr std::int64_t most = 256;
    if (!number || *number < 1 || *number > most)
      throw CommandError(*parallel, "is not a number of jobs from 1 to 256");
    request.parallel = static_cast<int>(*number);
  }
  if (const auto job = arguments.value("job")) {
    const auto number = integerFromText(*job);
    if (!number || *number < 1) throw CommandError(*job, "is not the number of a job, counted from 1");
    request.only = static_cast<std::size_t>(*number);
  }
  return transcodeJobs(request);
}

}  // namespace

Subcommand transcodeCommand() {
  using enum Option::Kind;
  return {
      .name = "transcode",
      .description = "Transcode clips, or show what would be decoded, changed, encoded and written",
      .details =
          "The output appears under its name when it is complete. A source that is damaged or ends early is an error,\n"
          "unless --accept-damaged is given. Every error of a plan is printed at once, before any work; the exit "
          "status\n"
          "is then 1. Progress is shown on a terminal; -progress_file writes it as JSON Lines, and -progress_prefix\n"
          "prints lines on standard output.\n"
          "\n"
          "--jobs transcodes several vectors, as many at a time as cores and memory allow, goes on after one that "
          "fails,\n"
          "and prints a line for each. With --resume it leaves out those that are complete, whose sources and "
          "settings\n"
          "have not changed; FILE.state keeps what is complete.\n"
          "\n"
          "--job carries out one job of a list alone, as a task on one of many machines does, and keeps what becomes "
          "of it\n"
          "in LIST.results. \"meridian farm\" hands a whole list to such machines.\n"
          "\n"
          "The transcoder's listing commands, such as -codecs, print their listing in place of a transcode.\n"
          "\"meridian-transcoder WORD...\" does the same with the vector alone, for applications.",
      .example =
          "meridian transcode -- -in_0_0 a.mov -out b.mov -vcodec h264 -dims 1280x720\n"
          "meridian transcode --plan -- -in_0_0 a.mov -out b.mov -preset solvane_cloud\n"
          "meridian transcode --jobs night.txt --resume\n"
          "meridian transcode -- -codecs",
      .takesWords = true,
      .wordsAlternative = "list",
      .fileOptions = {"from", "jobs"},
      .options = {{.kind = positional,
                   .name = "list",
                   .help = "With --job, the list of vectors",
                   .valueName = "LIST",
                   .optional = true,
                   .path = true},
                  {flag, "plan", "Print what would be done, and do nothing"},
                  {flag, "json", "Print JSON: the result, or with --plan the plan, and the errors; or the listing"},
                  {flag, "accept-damaged", "Go on where a source is damaged or ends early, with a warning"},
                  {value,
                   "jobs",
                   "Transcode the vectors in FILE, a line each, or in standard input for \"-\"",
                   "FILE",
                   {},
                   false,
                   false,
                   false,
                   true},
                  {value, "parallel", "With --jobs, how many at a time", "N"},
                  {value, "job", "Transcode the vector of this number in LIST alone, counted from 1", "K"},
                  {flag, "resume", "With --jobs or --job, leave out what is complete"},
                  fromOption()},
      .exclusive = {"from", "jobs", "job"},
      .checkNames = checkOptions,
      .action =
          [](const Arguments& arguments) {
            if (arguments.has("jobs") || arguments.has("job")) return carryOutJobs(arguments);
            return forEachVector(arguments, [&arguments](const GivenVector& given) {
              return transcode(given.wordViews(), {.program = "meridian",
                                                   .line = given.line,
                                                   .isPlanOnly = arguments.has("plan"),
                                                   .isJson = arguments.has("json"),
                                                   .acceptsDamaged = arguments.has("accept-damaged")});
            });
          },
  };
}

}  // namespace meridian::command
