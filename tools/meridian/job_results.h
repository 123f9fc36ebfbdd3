/// \file
/// What became of the jobs of a list, each in a file of its own: tasks on several machines write them side by side,
/// also where a file system cannot append for two of them at once. For example:
///
///     const JobResults results("/jobs/night.txt");          // /jobs/night.txt.results/
///     results.write(7, {{"state", "done"}, ...});           // .../7.json, as a whole
///     if (const auto result = results.read(7)) show(*result);
#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace meridian::command {

class JobResults {
 public:
  /// Keeps results beside a list; creates nothing yet.
  explicit JobResults(const std::string& listPath) : directory_(listPath + ".results") {}

  [[nodiscard]] const std::string& directory() const noexcept { return directory_; }

  /// Replaces the result of a job, in a directory that is made if it is not there. Throws CommandError if it cannot be
  /// written.
  void write(std::size_t job, const nlohmann::ordered_json& result) const;

  /// Returns the result of a job; absent if it has none that can be read.
  [[nodiscard]] std::optional<nlohmann::ordered_json> read(std::size_t job) const;

  /// Returns all results that can be read, in no order.
  [[nodiscard]] std::vector<nlohmann::ordered_json> all() const;

  /// Removes the results of all jobs.
  void clear() const;

 private:
  [[nodiscard]] std::string pathOf(std::size_t job) const;

  std::string directory_;
};

}  // namespace meridian::command
