/// \file
/// Carries out a list of transcodes. For example:
///
///     return transcodeJobs({.path = "/jobs/night.txt", .resumes = true});
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "tools/meridian/command.h"

namespace meridian::command {

struct JobsRequest {
  /// A file of argument vectors; "-" for standard input.
  std::string path;
  /// How many run at a time; absent for as many as cores and memory allow.
  std::optional<int> parallel = std::nullopt;
  /// Leaves out the jobs that are complete.
  bool resumes = false;
  /// Prints a line of JSON for each job and one for all.
  bool isJson = false;
  bool acceptsDamaged = false;
  /// Carries out this job alone, counted from 1, and keeps what becomes of it as a result.
  std::optional<std::size_t> only = std::nullopt;
};

/// Carries out the jobs and goes on after one that fails. Prints a line for each as it ends, and a summary. Returns
/// `failed` if one failed. After a signal no further job begins, those that run are cancelled and leave nothing, and
/// the process ends as the signal would have ended it. Throws CommandError if the list cannot be read, or has no job of
/// the number.
[[nodiscard]] Status transcodeJobs(const JobsRequest& request);

}  // namespace meridian::command
