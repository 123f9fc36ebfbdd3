#include "tools/meridian/farm.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>

#include "meridian/base/printable.h"
#include "meridian/platform/path_text.h"
#include "meridian/platform/whole_file.h"
#include "tools/meridian/child_process.h"
#include "tools/meridian/command.h"
#include "tools/meridian/job_list.h"
#include "tools/meridian/job_results.h"
#include "tools/meridian/job_state.h"
#include "tools/meridian/output.h"
#include "tools/meridian/shell_words.h"

namespace meridian::command {
namespace {

namespace fs = std::filesystem;

/// Slurm's own limit of an array, unless it is configured otherwise, is 1001 tasks.
constexpr std::size_t mostTasks = 1000;

std::string folderOf(const std::string& list) { return list + ".farm"; }
std::string runFileOf(const std::string& list) { return appendingPathComponent(folderOf(list), "run.json"); }

std::string absolute(const std::string& path) {
  std::error_code error;
  const fs::path whole = fs::absolute(path, error);
  return error ? path : whole.lexically_normal().string();
}

void writeWhole(const std::string& path, const std::string& text) {
  auto file = WholeFile::create(path, {.replaces = true});
  std::error_code error = file ? file->write(text) : file.error();
  if (!error) error = file->publish();
  if (error) throw CommandError(inQuotes(path) + " cannot be written: " + error.message());
}

/// Returns a path as Slurm's patterns of file names have it, in which "%" begins a placeholder.
std::string slurmPattern(const std::string& path) {
  std::string pattern;
  for (const char c : path) pattern += c == '%' ? std::string("%%") : std::string(1, c);
  return pattern;
}

std::string checksumOf(const std::string& list) {
  const ChildOutcome outcome = runChild({"sh", "-c", "cksum < \"$0\"", list});
  if (outcome.status != 0) throw CommandError(list, "cannot be read: " + outcome.errors);
  return outcome.output.substr(0, outcome.output.find('\n'));
}

/// Returns the path of the running program, which the tasks run on their machines.
std::string programPath() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (error) throw CommandError("the path of this program is not known: " + error.message());
  return program.string();
}

/// A task carries out its share of the jobs one after the other. A job whose process is killed is begun again: its
/// output appears as a whole or not at all. What fails by itself would fail again.
std::string taskScript(const FarmRequest& request, const FarmRun& run) {
  std::vector<std::string> words{programPath(), "transcode", "--resume"};
  if (request.acceptsDamaged) words.emplace_back("--accept-damaged");
  const std::string list = shellQuoted(run.list);
  const std::string last = std::to_string(run.jobCount);
  const std::string share = std::to_string(run.jobsPerTask);
  return "#!/bin/sh\n"
         "# Jobs of a list of transcodes, as a task of Slurm.\n"
         "first=$((SLURM_ARRAY_TASK_ID * " +
         share +
         " + 1))\n"
         "last=$((first + " +
         share +
         " - 1))\n"
         "if [ $last -gt " +
         last + " ]; then last=" + last +
         "; fi\n"
         "if [ \"$(cksum < " +
         list + ")\" != " + shellQuoted(run.checksum) +
         " ]; then\n"
         "  echo 'the list was changed after it was handed over' >&2\n"
         "  exit 1\n"
         "fi\n"
         "status=0\n"
         "job=$first\n"
         "while [ $job -le $last ]; do\n"
         "  for attempt in 1 2 3; do\n"
         "    " +
         shellLine(words) + " --job $job " + list +
         "\n"
         "    result=$?\n"
         "    if [ $result -lt 128 ]; then break; fi\n"
         "  done\n"
         "  if [ $result -ne 0 ]; then status=1; fi\n"
         "  job=$((job + 1))\n"
         "done\n"
         "exit $status\n";
}

std::string summaryScript(const FarmRun& run) {
  return "#!/bin/sh\n"
         "# Writes the summary of a list of transcodes when all tasks have ended.\n"
         "exec " +
         shellLine({programPath(), "farm", "summary", run.list}) + "\n";
}

void writeRun(const FarmRun& run) {
  const Json document{{"engine", "slurm"},  {"jobs", run.jobCount},   {"jobsPerTask", run.jobsPerTask},
                      {"array", run.array}, {"summary", run.summary}, {"isCancelled", run.isCancelled}};
  writeWhole(runFileOf(run.list), document.dump(2) + '\n');
}

/// Returns a text of a document; empty if it has none of the name.
std::string textIn(const Json& document, const char* name) {
  const auto found = document.find(name);
  return found != document.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::size_t numberIn(const Json& document, const char* name) {
  const auto found = document.find(name);
  return found != document.end() && found->is_number_unsigned() ? found->get<std::size_t>() : 0;
}

FarmJobState stateOf(const Json& result) {
  const std::string state = textIn(result, "state");
  if (state == "done") return FarmJobState::done;
  return state == "complete" ? FarmJobState::complete : FarmJobState::failed;
}

std::vector<FarmJob> jobsWithResults(const std::string& list, std::size_t count) {
  const JobResults results(list);
  std::vector<FarmJob> jobs;
  for (std::size_t number = 1; number <= count; ++number) {
    FarmJob& job = jobs.emplace_back();
    job.number = number;
    job.state = FarmJobState::lost;
    const auto result = results.read(number);
    if (result) {
      job.state = stateOf(*result);
      job.message = textIn(*result, "message");
    }
  }
  return jobs;
}

constexpr std::string_view nameOf(FarmJobState state) noexcept {
  constexpr std::array<std::string_view, 7> names{"done",    "failed",    "complete", "running",
                                                  "waiting", "cancelled", "lost"};
  return names[static_cast<std::size_t>(state)];
}

}  // namespace

std::size_t FarmReport::count(FarmJobState state) const {
  return static_cast<std::size_t>(std::ranges::count(jobs, state, &FarmJob::state));
}

FarmRun submitFarm(const FarmRequest& request) {
  FarmRun run;
  run.list = absolute(request.list);
  std::error_code error;
  if (!fs::is_regular_file(run.list, error)) {
    throw CommandError(inQuotes(request.list) + " is not a file; the tasks read the list on their machines");
  }
  run.jobCount = readJobs(run.list).size();
  if (fs::exists(runFileOf(run.list), error)) {
    const FarmRun before = farmRunOf(run.list);
    if (!slurmTasks({before.array}).empty()) {
      throw CommandError(inQuotes(request.list) + " is being carried out as Slurm's job " + before.array +
                         "; see \"meridian farm status\", or end it by \"meridian farm cancel\"");
    }
  }
  run.jobsPerTask = std::max(request.jobsPerTask.value_or(1), (run.jobCount + mostTasks - 1) / mostTasks);
  run.checksum = checksumOf(run.list);

  const std::string folder = folderOf(run.list);
  const std::string logs = appendingPathComponent(folder, "log");
  fs::create_directories(logs, error);
  if (error) throw CommandError(inQuotes(logs) + " cannot be made: " + error.message());
  const JobResults results(run.list);
  fs::create_directory(results.directory(), error);
  if (!error && !fs::is_directory(results.directory(), error)) error = std::make_error_code(std::errc::not_a_directory);
  if (error) throw CommandError(inQuotes(results.directory()) + " cannot be made: " + error.message());
  // What earlier tasks completed stays known; what became of their jobs is not that of these.
  JobState(run.list).absorb(results);
  const std::string task = appendingPathComponent(folder, "task");
  const std::string summary = appendingPathComponent(folder, "summary");
  writeWhole(task, taskScript(request, run));
  writeWhole(summary, summaryScript(run));

  const std::size_t tasks = (run.jobCount + run.jobsPerTask - 1) / run.jobsPerTask;
  const std::string name = "meridian " + std::string(lastPathComponent(run.list));
  run.array = submitToSlurm({.name = name,
                             .script = task,
                             .array = "0-" + std::to_string(tasks - 1),
                             .log = appendingPathComponent(slurmPattern(logs), "%a"),
                             .cpus = request.cpus,
                             .options = request.options});
  try {
    run.summary = submitToSlurm({.name = name + " summary",
                                 .script = summary,
                                 .after = run.array,
                                 .log = appendingPathComponent(slurmPattern(logs), "summary"),
                                 .options = request.options});
    writeRun(run);
  } catch (const CommandError&) {
    // An array that nobody knows of is not left to run.
    cancelInSlurm({run.array});
    throw;
  }
  return run;
}

FarmRun farmRunOf(const std::string& list) {
  FarmRun run;
  run.list = absolute(list);
  std::ifstream file(runFileOf(run.list), std::ios::binary);
  const Json document = Json::parse(file, nullptr, false);
  if (!document.is_object()) {
    throw CommandError(inQuotes(list) + " was not handed over; do that by \"meridian farm submit\"");
  }
  run.jobCount = numberIn(document, "jobs");
  run.jobsPerTask = std::max(numberIn(document, "jobsPerTask"), std::size_t{1});
  run.array = textIn(document, "array");
  run.summary = textIn(document, "summary");
  run.isCancelled = document.contains("isCancelled") && document["isCancelled"] == true;
  return run;
}

FarmReport reportOf(const FarmRun& run) {
  // Asked before the results are read: a task that ends in between has one.
  const std::vector<SlurmTask> tasks = slurmTasks({run.array});
  FarmReport report{run, jobsWithResults(run.list, run.jobCount)};
  for (const SlurmTask& task : tasks) {
    if (!task.index) continue;
    const std::size_t first = *task.index * run.jobsPerTask;
    const std::size_t last = std::min(first + run.jobsPerTask, report.jobs.size());
    bool isRunning = task.state == "RUNNING" || task.state == "COMPLETING";
    for (std::size_t place = first; place < last; ++place) {
      FarmJob& job = report.jobs[place];
      if (job.state != FarmJobState::lost) continue;
      job.state = isRunning ? FarmJobState::running : FarmJobState::waiting;
      if (isRunning) job.message = "on " + task.machine;
      // Its jobs are carried out one after the other.
      isRunning = false;
    }
  }
  if (!run.isCancelled) return report;
  for (FarmJob& job : report.jobs) {
    if (job.state == FarmJobState::lost) job.state = FarmJobState::cancelled;
  }
  return report;
}

void cancelFarm(FarmRun run) {
  cancelInSlurm({run.array, run.summary});
  run.isCancelled = true;
  writeRun(run);
}

FarmReport resultsOf(const std::string& list) {
  FarmRun run;
  std::error_code error;
  if (fs::exists(runFileOf(absolute(list)), error)) {
    run = farmRunOf(list);
  } else {
    run.list = absolute(list);
    run.jobCount = readJobs(list).size();
  }
  auto jobs = jobsWithResults(run.list, run.jobCount);
  return {std::move(run), std::move(jobs)};
}

Json documentOf(const FarmReport& report) {
  Json counts = Json::object();
  for (const FarmJobState state :
       {FarmJobState::done, FarmJobState::failed, FarmJobState::complete, FarmJobState::running, FarmJobState::waiting,
        FarmJobState::cancelled, FarmJobState::lost}) {
    counts[std::string(nameOf(state))] = report.count(state);
  }
  Json jobs = Json::array();
  for (const FarmJob& job : report.jobs) {
    jobs.push_back({{"job", job.number}, {"state", nameOf(job.state)}, {"message", job.message}});
  }
  return {{"list", report.run.list},
          {"engine", "slurm"},
          {"array", report.run.array},
          {"counts", std::move(counts)},
          {"jobs", std::move(jobs)}};
}

std::string writeSummary(const FarmReport& report) {
  std::string path = report.run.list + ".summary";
  writeWhole(path, textOf(report));
  return path;
}

std::string textOf(const FarmReport& report) {
  std::string text;
  for (const FarmJob& job : report.jobs) {
    const bool isShown =
        job.state == FarmJobState::failed || job.state == FarmJobState::lost || job.state == FarmJobState::running;
    if (!isShown) continue;
    text += std::to_string(job.number) + ": " + std::string(nameOf(job.state));
    std::string message = job.message;
    if (job.state == FarmJobState::lost && !report.run.array.empty()) {
      const std::size_t task = (job.number - 1) / report.run.jobsPerTask;
      message = "its task ended without a result; see " +
                inQuotes(appendingPathComponent(folderOf(report.run.list), "log/" + std::to_string(task)));
    }
    text += (message.empty() ? "" : ": " + printable(message)) + '\n';
  }
  std::string counts;
  for (const FarmJobState state :
       {FarmJobState::done, FarmJobState::failed, FarmJobState::complete, FarmJobState::running, FarmJobState::waiting,
        FarmJobState::cancelled, FarmJobState::lost}) {
    const std::size_t count = report.count(state);
    if (count == 0 && state != FarmJobState::done && state != FarmJobState::failed) continue;
    counts += (counts.empty() ? "" : ", ") + std::to_string(count) + ' ' + std::string(nameOf(state)) +
              (state == FarmJobState::complete ? " before" : "");
  }
  return text + counts + '\n';
}

}  // namespace meridian::command
