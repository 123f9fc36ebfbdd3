/// \file
/// A file that replaces another one only when it is complete. For example:
///
///     ReplacementFile file("/shots/a.dpx");
///     write(file.descriptor());
///     file.replace();
#pragma once

#include <memory>
#include <string>

#include "tools/meridian/interruption.h"

namespace meridian::command {

/// An unfinished file in the directory of `path`, which is gone with this object, or with the process, unless it has
/// replaced `path`. If `path` is a symbolic link, the file that it points to is replaced.
///
/// The file has no name until then, so that nothing is left of it however the process ends. Where the file system
/// cannot create such a file, it has a hidden name, which is removed unless the process is killed by SIGKILL.
class ReplacementFile {
 public:
  enum class Unfinished { withoutName, hidden };

  /// Throws CommandError if no file can be created there, or if `path` is something other than a writable file.
  /// `preferred` is for tests: file systems without nameless files get a hidden one anyway.
  explicit ReplacementFile(const std::string& path, Unfinished preferred = Unfinished::withoutName);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ReplacementFile(ReplacementFile&&) = delete;
  ReplacementFile& operator=(ReplacementFile&&) = delete;
  ~ReplacementFile();

  /// Returns the open file, for reading and writing.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  /// Returns a path under which it can be opened once more, without an extension.
  [[nodiscard]] const std::string& path() const noexcept { return opened_; }

  /// Waits until the file is on the disk and renames it to `path`, with the permissions that the replaced file had.
  /// Throws CommandError if the disk is full or fails; `path` is then as it was.
  void replace();

 private:
  std::string target_;
  std::string opened_;
  std::string hidden_;
  std::unique_ptr<RemovedOnInterruption> removal_;
  int descriptor_ = -1;
};

}  // namespace meridian::command
