// A file that replaces another one only when it is complete.
#pragma once

#include <string>

namespace meridian::command {

/// A temporary file beside `path`, with the same extension, which is removed with this object unless it has replaced
/// `path`. If `path` is a symbolic link, the file that it points to is replaced.
class ReplacementFile {
 public:
  /// Throws CommandError if no file can be created there, or if `path` is something other than a writable file.
  explicit ReplacementFile(const std::string& path);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ReplacementFile(ReplacementFile&&) = delete;
  ReplacementFile& operator=(ReplacementFile&&) = delete;
  ~ReplacementFile();

  /// Returns where to write.
  [[nodiscard]] const std::string& path() const noexcept { return temporary_; }

  /// Renames the temporary file to `path`, with the permissions that the replaced file had.
  void replace();

 private:
  std::string target_;
  std::string temporary_;
};

}  // namespace meridian::command
