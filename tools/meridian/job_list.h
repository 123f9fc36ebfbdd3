/// \file
/// Reads a list of transcodes. For example:
///
///     const JobList list = readJobs("/jobs/night.txt");
///     for (const Job& job : list.jobs) plan(job.words);
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "meridian/cli/transcode_explanation.h"

namespace meridian::command {

/// A transcode of a list.
struct Job {
  /// Counted from 1.
  std::size_t number = 0;
  TranscodeExplanation words;
  /// Why it cannot be carried out, as far as the list shows it; empty if nothing is wrong.
  std::string error{};
};

/// Reads the argument vectors of a file, or of standard input for "-". A job has an error if its line cannot be read,
/// and if it would write what another one reads or writes: jobs run side by side and in any order. Throws CommandError
/// if the file cannot be read or has no vector.
[[nodiscard]] std::vector<Job> readJobs(const std::string& path);

}  // namespace meridian::command
