/// \file
/// A list of transcodes that Slurm carries out on many machines. For example:
///
///     submitFarm({.list = "/jobs/night.txt"});
///     const FarmReport report = reportOf(farmRunOf("/jobs/night.txt"));
///     report.counts.done
///
/// LIST.farm has the scripts of the tasks, their logs, and what Slurm calls them; LIST.results has what became of each
/// job; LIST.summary is written when all have ended.
#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/meridian/slurm.h"

namespace meridian::command {

struct FarmRequest {
  std::string list;
  bool acceptsDamaged = false;
  /// CPUs of each task; as many jobs as are given run one after the other in each.
  int cpus = 1;
  std::optional<std::size_t> jobsPerTask = std::nullopt;
  /// How many tasks run at a time; absent for as many as Slurm has room for.
  std::optional<int> parallel = std::nullopt;
  /// Further words for the engine's own submission.
  std::vector<std::string> options = {};
};

/// A list that was handed over.
struct FarmRun {
  std::string list;
  std::size_t jobCount = 0;
  std::size_t jobsPerTask = 1;
  /// Of the list, by cksum (POSIX), which the tasks hold against it.
  std::string checksum;
  /// Slurm's numbers of the array and of the job that writes the summary.
  std::string array;
  std::string summary;
  bool isCancelled = false;
};

/// Where a job of a list is.
enum class FarmJobState { done, failed, complete, running, waiting, cancelled, lost };

struct FarmJob {
  std::size_t number = 0;
  FarmJobState state = FarmJobState::waiting;
  /// What became of it, or where it runs; may be empty.
  std::string message = {};
};

struct FarmReport {
  FarmRun run;
  std::vector<FarmJob> jobs;

  [[nodiscard]] std::size_t count(FarmJobState state) const;
  /// Returns true if no job runs or waits.
  [[nodiscard]] bool hasEnded() const { return count(FarmJobState::running) + count(FarmJobState::waiting) == 0; }
  /// Returns true if every job has its output.
  [[nodiscard]] bool isFlawless() const {
    return count(FarmJobState::done) + count(FarmJobState::complete) == jobs.size();
  }
};

/// Hands the list to Slurm: an array of tasks, and a job that writes the summary after them. Jobs whose output is
/// complete are left out by their tasks. Throws CommandError if the list has no job or is being carried out, and with
/// Slurm's reason if it refuses.
FarmRun submitFarm(const FarmRequest& request);

/// Returns what was handed over of a list. Throws CommandError if nothing was.
[[nodiscard]] FarmRun farmRunOf(const std::string& list);

/// Ends what was handed over, and waits until nothing of it runs; jobs that are complete stay. Returns false if it had
/// ended before. Throws CommandError if Slurm does not answer.
bool cancelFarm(FarmRun run);

/// Asks Slurm, and reads the results.
[[nodiscard]] FarmReport reportOf(const FarmRun& run);

/// Reads the results alone, as when all tasks have ended: jobs without one are lost.
[[nodiscard]] FarmReport resultsOf(const std::string& list);

/// Returns the lines of a report: jobs that failed, were lost or run, and the counts.
[[nodiscard]] std::string textOf(const FarmReport& report);

/// Returns {"list", "engine", "array", "counts", "jobs": [{"job", "state", "message"}]}.
[[nodiscard]] nlohmann::ordered_json documentOf(const FarmReport& report);

/// Writes the lines to LIST.summary, as a whole. Returns its path. Throws CommandError if it cannot be written.
std::string writeSummary(const FarmReport& report);

}  // namespace meridian::command
