/// \file
/// A file that appears under its name when it is complete, and never replaces an item. For example:
///
///     auto file = WholeFile::create("/out/results.json");
///     if (!file) return file.error();
///     if (const auto error = file->write(text)) return error;
///     return file->publish();
#pragma once

#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "meridian/base/expected.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Opens a file without a name in a directory, for reading and writing. Returns -1 where the file system or the system
/// does not have such files; errno says why.
[[nodiscard]] MERIDIAN_API int openNamelessFile(const std::string& directory) noexcept;

/// Returns the path under which an open file is opened or linked once more: "/proc/self/fd/7".
[[nodiscard]] MERIDIAN_API std::string descriptorPath(int descriptor);

/// Returns a path beside the given one, with a hidden name that nothing has by chance: "/out/.meridian-8134".
[[nodiscard]] MERIDIAN_API std::string hiddenPathBeside(const std::string& path);

/// An unfinished file in the directory of its path, which is gone with this object, or with the process, unless it was
/// published. It has no name until then, so that nothing is left of it however the process ends. Where the file system
/// cannot create such a file, it has a hidden name, which stays if the process is killed.
class WholeFile {
 public:
  enum class Unfinished { withoutName, hidden };

  /// Creates the unfinished file. `preferred` is for tests: file systems without nameless files get a hidden one
  /// anyway.
  [[nodiscard]] MERIDIAN_API static Expected<WholeFile, std::error_code> create(
      const std::string& path, Unfinished preferred = Unfinished::withoutName);

  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;
  WholeFile(WholeFile&& other) noexcept
      : path_(std::move(other.path_)),
        hidden_(std::exchange(other.hidden_, {})),
        descriptor_(std::exchange(other.descriptor_, -1)) {}
  WholeFile& operator=(WholeFile&&) = delete;
  MERIDIAN_API ~WholeFile();

  /// Appends the bytes; an error if the volume is full or fails, or the file gets too large for the process.
  [[nodiscard]] MERIDIAN_API std::error_code write(std::string_view bytes) noexcept;

  /// Waits until the file is on the disk, gives it its name, and waits for that too. `std::errc::file_exists` if any
  /// item has the name, even a dangling link: of several processes that publish under one name, exactly one succeeds.
  /// Call it once.
  [[nodiscard]] MERIDIAN_API std::error_code publish();

 private:
  WholeFile(std::string path, std::string hidden, int descriptor) noexcept
      : path_(std::move(path)), hidden_(std::move(hidden)), descriptor_(descriptor) {}

  std::string path_;
  std::string hidden_;
  int descriptor_;
};

}  // namespace meridian::inline v0_2
