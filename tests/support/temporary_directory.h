/// \file
/// A directory for the files of a test.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace meridian::test {

/// A new directory that is removed with its files.
class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    std::string pattern = (parent / "meridian-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }

  /// Writes a file and returns its path.
  std::string write(const std::string& name, std::string_view content) const {
    const std::string path = (path_ / name).string();
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  /// Returns the names of the entries, sorted.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace meridian::test
