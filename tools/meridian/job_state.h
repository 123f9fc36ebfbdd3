/// \file
/// Which jobs of a list are complete: a hash of each one's plan and sources, kept beside the list. For example:
///
///     JobState state("/jobs/night.txt.state");
///     if (state.isComplete(plan, hash)) continue;
///     ...
///     state.add(plan, hash);
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/engine/transcode_plan.h"

namespace meridian::command {

/// Returns a hash of what a plan makes: the plan itself, the size and time of change of its sources, its LUT and its
/// watermark, and the versions of Meridian and FFmpeg. Different for different outputs with all but certainty.
[[nodiscard]] std::string jobHash(const TranscodePlan& plan, std::string_view versions);

/// What is complete, as lines of JSON in a file. Several threads may use it.
class JobState {
 public:
  /// Reads the file, if there is one. Lines that cannot be read are passed over: their jobs are carried out again.
  /// Throws CommandError if something other than a file that can be read is there.
  explicit JobState(std::string path);

  /// Returns whether the output of the plan was made by a plan with this hash and is as it was then.
  [[nodiscard]] bool isComplete(const TranscodePlan& plan, const std::string& hash) const;

  /// Adds a complete output, and waits until that is on the disk. Returns the system's reason if it cannot be written.
  [[nodiscard]] std::error_code add(const TranscodePlan& plan, const std::string& hash);

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

 private:
  struct Entry {
    std::string hash;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
  };

  std::string path_;
  mutable std::mutex mutex_;
  /// By the path of the output, as JSON has it.
  std::map<std::string, Entry, std::less<>> entries_;
};

}  // namespace meridian::command
