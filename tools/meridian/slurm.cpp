#include "tools/meridian/slurm.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <system_error>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "tools/meridian/child_process.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

std::string firstLineOf(const std::string& text) { return text.substr(0, text.find('\n')); }

[[noreturn]] void throwRefusal(const std::string& program, const ChildOutcome& outcome) {
  const std::string said = firstLineOf(outcome.errors.empty() ? outcome.output : outcome.errors);
  throw CommandError(program + " ended with status " + std::to_string(outcome.status) +
                     (said.empty() ? "" : ": " + printable(said)));
}

/// Runs one of Slurm's programs, which look for minutes for a configuration that is not there.
ChildOutcome runSlurm(const std::vector<std::string>& words) {
  const char* const configuration = std::getenv("SLURM_CONF");
  if (configuration != nullptr && access(configuration, R_OK) != 0) {
    const int reason = errno;
    throw CommandError(configuration, "cannot be read: " + std::generic_category().message(reason) +
                                          "; the environment names it as Slurm's configuration (SLURM_CONF)");
  }
  return runChild(words);
}

/// What a user sets for squeue does not hide tasks here.
std::vector<std::string> squeueWords(const std::string& job) {
  std::vector<std::string> words{"env"};
  for (const char* const name : {"STATES", "PARTITION", "USERS", "ACCOUNT", "QOS", "NAMES", "LICENSES", "SORT"}) {
    words.insert(words.end(), {"-u", std::string("SQUEUE_") + name});
  }
  words.insert(words.end(), {"squeue", "--noheader", "--array", "--jobs=" + job, "--format=%K|%T|%N"});
  return words;
}

/// What Slurm's programs say of jobs that ended long ago.
bool saysUnknownJob(const ChildOutcome& outcome) { return outcome.errors.find("Invalid job id") != std::string::npos; }

}  // namespace

std::string submitToSlurm(const SlurmJob& job) {
  std::vector<std::string> words{"sbatch"};
  for (const std::string& option : job.options) {
    if (option.starts_with("--clusters") || option.starts_with("-M")) {
      throw UsageError("a list is handed to the cluster of this machine's configuration; " + inQuotes(option) +
                       " names others");
    }
    // The job that is no array does not become one.
    const bool makesArray = option.starts_with("--array") || option.starts_with("-a");
    if (!makesArray || !job.array.empty()) words.push_back(option);
  }
  // The scripts write their own logs: a name here would be a pattern.
  words.insert(words.end(), {"--parsable", "--requeue", "--output=/dev/null", "--job-name=" + job.name,
                             "--cpus-per-task=" + std::to_string(job.cpus)});
  if (job.isHeld) words.emplace_back("--hold");
  if (!job.array.empty()) words.push_back("--array=" + job.array);
  if (!job.after.empty()) words.push_back("--dependency=afterany:" + job.after);
  words.push_back(job.script);
  const ChildOutcome outcome = runSlurm(words);
  // "123", or "123;cluster".
  const std::string number = outcome.output.substr(0, outcome.output.find_first_of(";\n"));
  if (outcome.status != 0 || number.empty() ||
      !std::ranges::all_of(number, [](char c) { return c >= '0' && c <= '9'; })) {
    throwRefusal("sbatch", outcome);
  }
  return number;
}

void releaseInSlurm(const std::string& job) {
  const ChildOutcome outcome = runSlurm({"scontrol", "release", job});
  if (outcome.status != 0) throwRefusal("scontrol", outcome);
}

std::vector<SlurmTask> slurmTasks(const std::vector<std::string>& jobs) {
  std::vector<SlurmTask> tasks;
  // One after the other, since an unknown job hides all others.
  for (const std::string& job : jobs) {
    const ChildOutcome outcome = runSlurm(squeueWords(job));
    if (outcome.status != 0 && saysUnknownJob(outcome)) continue;
    if (outcome.status != 0) throwRefusal("squeue", outcome);
    std::istringstream lines(outcome.output);
    for (std::string line; std::getline(lines, line);) {
      const std::size_t first = line.find('|');
      const std::size_t second = line.find('|', first + 1);
      if (first == std::string::npos || second == std::string::npos) continue;
      SlurmTask& task = tasks.emplace_back();
      task.job = job;
      if (const auto index = integerFromText(line.substr(0, first)); index && *index >= 0) {
        task.index = static_cast<std::size_t>(*index);
      }
      task.state = line.substr(first + 1, second - first - 1);
      task.machine = line.substr(second + 1);
    }
  }
  return tasks;
}

void cancelInSlurm(const std::vector<std::string>& jobs) {
  for (const std::string& job : jobs) {
    const ChildOutcome outcome = runSlurm({"scancel", job});
    if (outcome.status != 0 && !saysUnknownJob(outcome)) throwRefusal("scancel", outcome);
  }
}

}  // namespace meridian::command
