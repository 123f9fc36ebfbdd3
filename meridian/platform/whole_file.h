/// \file
/// A file that appears under its name when it is complete. For example:
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

/// Returns the file that a path leads to through symbolic links; the path itself where there is nothing, or where a
/// link leads nowhere.
[[nodiscard]] MERIDIAN_API std::string pathThroughLinks(const std::string& path);

/// How an unfinished file is kept and gets its name.
struct WholeFileOptions {
  /// An item that has the name is replaced: a file with its permissions kept, and of a symbolic link the file that it
  /// leads to. Without, it stays.
  bool replaces = false;
  /// The directory that the unfinished file is in; empty for that of its path.
  std::string workDirectory = {};
  /// Gives the unfinished file a hidden name where it could do without; for tests.
  bool isHidden = false;
};

/// An unfinished file, which is gone with this object, or with the process, unless it was published. It has no name
/// until then, so that nothing is left of it however the process ends. Where the file system cannot create such a file,
/// it has a hidden name, which stays if the process is killed.
class WholeFile {
 public:
  /// Creates the unfinished file.
  [[nodiscard]] MERIDIAN_API static Expected<WholeFile, std::error_code> create(const std::string& path,
                                                                                const WholeFileOptions& options = {});

  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;
  WholeFile(WholeFile&& other) noexcept
      : path_(std::move(other.path_)),
        hidden_(std::exchange(other.hidden_, {})),
        replaces_(other.replaces_),
        descriptor_(std::exchange(other.descriptor_, -1)) {}
  WholeFile& operator=(WholeFile&&) = delete;
  MERIDIAN_API ~WholeFile();

  /// Returns the open file, for reading and writing. It is closed with this object.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  /// Returns a path under which the unfinished file can be opened once more, without an extension.
  [[nodiscard]] MERIDIAN_API std::string unfinishedPath() const;

  /// Returns the hidden name of the unfinished file; empty if it has none.
  [[nodiscard]] const std::string& hiddenPath() const noexcept { return hidden_; }

  /// Appends the bytes; an error if the volume is full or fails, or the file gets too large for the process.
  [[nodiscard]] MERIDIAN_API std::error_code write(std::string_view bytes) noexcept;

  /// Waits until the file is on the disk, gives it its name, and waits for that too. A file on another volume than its
  /// path is copied beside it first. Unless it replaces, `std::errc::file_exists` if any item has the name, even a
  /// dangling link: of several processes that publish under one name, exactly one succeeds. Call it once.
  [[nodiscard]] MERIDIAN_API std::error_code publish();

 private:
  WholeFile(std::string path, std::string hidden, bool replaces, int descriptor) noexcept
      : path_(std::move(path)), hidden_(std::move(hidden)), replaces_(replaces), descriptor_(descriptor) {}

  [[nodiscard]] std::error_code giveName();
  [[nodiscard]] std::error_code replace();
  [[nodiscard]] std::error_code publishCopy() const;

  std::string path_;
  std::string hidden_;
  bool replaces_;
  int descriptor_;
};

}  // namespace meridian::inline v0_2
