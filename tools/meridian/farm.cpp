#include "tools/meridian/farm.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

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

std::string logsOf(const std::string& list) { return appendingPathComponent(folderOf(list), "log"); }

std::string absolute(const std::string& path) {
  std::error_code error;
  const fs::path whole = fs::absolute(path, error);
  return error ? path : whole.string();
}

void writeWhole(const std::string& path, const std::string& text) {
  auto file = WholeFile::create(path, {.replaces = true});
  std::error_code error = file ? file->write(text) : file.error();
  if (!error) error = file->publish();
  if (error) throw CommandError(inQuotes(path) + " cannot be written: " + error.message());
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
         "exec >>" +
         shellQuoted(logsOf(run.list)) +
         "/$SLURM_ARRAY_TASK_ID 2>&1\n"
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
         "exec >>" +
         shellQuoted(logsOf(run.list)) +
         "/summary 2>&1\n"
         "exec " +
         shellLine({programPath(), "farm", "summary", run.list}) + "\n";
}

void writeRun(const FarmRun& run) {
  const Json document{{"engine", "slurm"},       {"jobs", run.jobCount},   {"jobsPerTask", run.jobsPerTask},
                      {"array", run.array},      {"summary", run.summary}, {"isCancelled", run.isCancelled},
                      {"checksum", run.checksum}};
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
  if (state == "complete") return FarmJobState::complete;
  // One that is killed while its output gets its name has no result.
  return state == "failed" ? FarmJobState::failed : FarmJobState::lost;
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
      const bool isDone = job.state == FarmJobState::done || job.state == FarmJobState::complete;
      if (isDone && !JobState::isThere(result->value("completion", Json()))) job.state = FarmJobState::lost;
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

/// Keeps another process from handing the same list over at the same time.
class SubmissionLock {
 public:
  explicit SubmissionLock(const std::string& path) : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
    if (file_ < 0 || flock(file_, LOCK_EX | LOCK_NB) != 0) {
      const int reason = errno;
      if (file_ >= 0) close(file_);
      if (reason == EWOULDBLOCK) throw CommandError("the list is being handed over by another process");
      throw CommandError(inQuotes(path) + " cannot be locked: " + std::generic_category().message(reason));
    }
  }
  SubmissionLock(const SubmissionLock&) = delete;
  SubmissionLock& operator=(const SubmissionLock&) = delete;
  SubmissionLock(SubmissionLock&&) = delete;
  SubmissionLock& operator=(SubmissionLock&&) = delete;
  ~SubmissionLock() { close(file_); }

 private:
  int file_;
};

std::optional<FarmRun> knownRun(const std::string& list) {
  FarmRun run;
  run.list = absolute(list);
  std::ifstream file(runFileOf(run.list), std::ios::binary);
  const Json document = Json::parse(file, nullptr, false);
  if (!document.is_object()) return std::nullopt;
  run.jobCount = numberIn(document, "jobs");
  run.jobsPerTask = std::max(numberIn(document, "jobsPerTask"), std::size_t{1});
  run.array = textIn(document, "array");
  run.summary = textIn(document, "summary");
  run.checksum = textIn(document, "checksum");
  run.isCancelled = document.contains("isCancelled") && document["isCancelled"] == true;
  constexpr std::size_t mostJobs = 10'000'000;
  return run.array.empty() || run.jobCount > mostJobs ? std::nullopt : std::optional(run);
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
  const std::string folder = folderOf(run.list);
  const std::string logs = logsOf(run.list);
  fs::create_directories(logs, error);
  if (error) throw CommandError(inQuotes(logs) + " cannot be made: " + error.message());
  const JobResults results(run.list);
  fs::create_directory(results.directory(), error);
  if (!error && !fs::is_directory(results.directory(), error)) error = std::make_error_code(std::errc::not_a_directory);
  if (error) throw CommandError(inQuotes(results.directory()) + " cannot be made: " + error.message());
  const SubmissionLock lock(appendingPathComponent(folder, "lock"));
  if (const auto before = knownRun(run.list); before && !slurmTasks({before->array}).empty()) {
    throw CommandError(inQuotes(request.list) + " is being carried out as Slurm's job " + before->array +
                       "; see \"meridian farm status\", or end it by \"meridian farm cancel\"");
  }
  run.jobsPerTask = std::max(request.jobsPerTask.value_or(1), (run.jobCount + mostTasks - 1) / mostTasks);
  run.checksum = checksumOf(run.list);
  const std::string task = appendingPathComponent(folder, "task");
  const std::string summary = appendingPathComponent(folder, "summary");
  writeWhole(task, taskScript(request, run));
  writeWhole(summary, summaryScript(run));

  const std::size_t tasks = (run.jobCount + run.jobsPerTask - 1) / run.jobsPerTask;
  const std::string name = "meridian " + std::string(lastPathComponent(run.list));
  // Held until everything about it is written down, so that a refusal changes nothing.
  run.array = submitToSlurm(
      {.name = name,
       .script = task,
       .array = "0-" + std::to_string(tasks - 1) + (request.parallel ? "%" + std::to_string(*request.parallel) : ""),
       .isHeld = true,
       .cpus = request.cpus,
       .options = request.options});
  try {
    run.summary =
        submitToSlurm({.name = name + " summary", .script = summary, .after = run.array, .options = request.options});
    writeRun(run);
    // What earlier tasks completed stays known; what became of their jobs is not that of these.
    JobState(run.list).absorb(results);
    fs::remove(run.list + ".summary", error);
    releaseInSlurm(run.array);
  } catch (const CommandError&) {
    // No array is left that `farm cancel` cannot find.
    cancelInSlurm({run.array});
    throw;
  }
  return run;
}

FarmRun farmRunOf(const std::string& list) {
  auto run = knownRun(list);
  if (!run) throw CommandError(inQuotes(list) + " was not handed over; do that by \"meridian farm submit\"");
  return *std::move(run);
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

bool cancelFarm(FarmRun run) {
  if (slurmTasks({run.array, run.summary}).empty()) return false;
  cancelInSlurm({run.array, run.summary});
  run.isCancelled = true;
  writeRun(run);
  // Processes that are asked to end have half a minute for it.
  constexpr int tries = 600;
  for (int each = 0; each < tries && !slurmTasks({run.array}).empty(); ++each) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return true;
}

FarmReport resultsOf(const std::string& list) {
  FarmRun run;
  auto known = knownRun(list);
  // A list that has changed since is another one, which another engine may have carried out.
  if (known && known->checksum == checksumOf(known->list)) {
    run = *std::move(known);
  } else {
    run.list = absolute(list);
    run.jobCount = readJobs(run.list).size();
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
