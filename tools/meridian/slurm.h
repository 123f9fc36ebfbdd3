/// \file
/// Slurm, by the programs that it is used with. For example:
///
///     const std::string array = submitToSlurm({.script = "/jobs/night.txt.farm/task", .array = "0-39"});
///     for (const SlurmTask& task : slurmTasks({array})) show(task.index, task.state);
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace meridian::command {

/// A batch job.
struct SlurmJob {
  std::string name;
  /// The path of its script.
  std::string script;
  /// The places of the array's tasks: "0-39"; empty for a job that is no array.
  std::string array = {};
  /// The job after whose end it begins, however that ends; empty for none.
  std::string after = {};
  /// It does not begin until it is released.
  bool isHeld = false;
  /// CPUs of each task.
  int cpus = 1;
  /// Further words for sbatch; what is given above counts before them.
  std::vector<std::string> options = {};
};

/// Hands the job to Slurm, which begins it again when its machine fails or is taken away. Returns its number. Throws
/// CommandError with what sbatch said if it is refused.
[[nodiscard]] std::string submitToSlurm(const SlurmJob& job);

/// Lets a job begin that was held. Throws CommandError with what scontrol said if that fails.
void releaseInSlurm(const std::string& job);

/// A task that has not ended.
struct SlurmTask {
  /// The number of its job.
  std::string job;
  /// Its place in the array; absent for a job that is no array.
  std::optional<std::size_t> index;
  /// As Slurm names it: "PENDING", "RUNNING".
  std::string state;
  /// Where it runs; empty while it waits.
  std::string machine;
};

/// Returns the tasks of the jobs that have not ended. Throws CommandError with what squeue said if Slurm does not
/// answer.
[[nodiscard]] std::vector<SlurmTask> slurmTasks(const std::vector<std::string>& jobs);

/// Ends the jobs. Those that have ended are passed over. Throws CommandError with what scancel said if Slurm does not
/// answer.
void cancelInSlurm(const std::vector<std::string>& jobs);

}  // namespace meridian::command
