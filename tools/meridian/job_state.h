/// \file
/// Which jobs of a list are complete: a hash of each one's plan and sources, kept beside the list. For example:
///
///     JobState state("/jobs/night.txt");
///     if (state.isComplete(plan, hash)) continue;
///     ...
///     state.add(plan, hash);
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/engine/transcode_plan.h"
#include "tools/meridian/job_results.h"

namespace meridian::command {

/// Returns a hash of what a plan makes: the plan itself, the size and time of change of its sources, its LUT and its
/// watermark, and the versions of Meridian and FFmpeg. Different for different outputs with all but certainty.
[[nodiscard]] std::string jobHash(const TranscodePlan& plan, std::string_view versions);

/// What is complete, as lines of JSON in the file LIST.state, and in the results of jobs that were carried out one by
/// one. Several threads may use it.
class JobState {
 public:
  /// Reads both, as far as they are there; of the results only that of one job, if one is given. What cannot be read is
  /// passed over: its jobs are carried out again. Throws CommandError if something other than a file that can be read
  /// has the name LIST.state.
  explicit JobState(const std::string& listPath, std::optional<std::size_t> only = std::nullopt);

  /// Returns whether the output of the plan was made by a plan with this hash and is as it was then.
  [[nodiscard]] bool isComplete(const TranscodePlan& plan, const std::string& hash) const;

  /// Adds a complete output, and waits until that is on the disk. Returns the system's reason if it cannot be written.
  [[nodiscard]] std::error_code add(const TranscodePlan& plan, const std::string& hash);
  /// Adds what `completionOf` or `intentionOf` returned, likewise.
  [[nodiscard]] std::error_code add(const nlohmann::ordered_json& entry);

  /// Adds what the results of jobs say of complete outputs, and removes the results. Throws CommandError if the file
  /// cannot be written; the results are then left.
  void absorb(const JobResults& results);

  /// Returns what says that an output is complete, for a result of its job; nothing if there is no output.
  [[nodiscard]] static nlohmann::ordered_json completionOf(const TranscodePlan& plan, const std::string& hash);

  /// Returns what says that an output that gets its name in a moment is complete.
  [[nodiscard]] static nlohmann::ordered_json intentionOf(const TranscodePlan& plan, const std::string& hash,
                                                          std::uint64_t size, std::uint64_t fileNumber);

  /// Returns whether the output that an entry is about is there as the entry says.
  [[nodiscard]] static bool isThere(const nlohmann::ordered_json& entry);

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

 private:
  struct Entry {
    std::string hash;
    std::uint64_t size = 0;
    /// One of both is known.
    std::optional<std::int64_t> modified;
    std::optional<std::uint64_t> fileNumber;
  };

  [[nodiscard]] static std::optional<Entry> entryOf(const nlohmann::ordered_json& json);

  void addEntry(const nlohmann::ordered_json& entry);
  [[nodiscard]] std::error_code append(const std::string& lines) const;

  std::string path_;
  mutable std::mutex mutex_;
  /// By the path of the output, as JSON has it. An output may have been made more than once.
  std::multimap<std::string, Entry, std::less<>> entries_;
};

}  // namespace meridian::command
