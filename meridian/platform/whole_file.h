/// \file
/// A file that appears under its name when it is complete. For example:
///
///     auto file = WholeFile::create("/out/results.json");
///     if (!file) return file.error();
///     if (const auto error = file->write(text)) return error;
///     return file->publish();
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "meridian/base/expected.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// How an unfinished file is kept and gets its name.
struct WholeFileOptions {
  /// A file that has the name is replaced, and its permissions are kept. If a symbolic link has the name, the file that
  /// it leads to is replaced and the link stays. Without, what has the name stays.
  bool replaces = false;
  /// The directory that the unfinished file is in; empty for that of its path. On another volume than the path, the
  /// complete file is copied.
  std::string workDirectory = {};
  /// Gives the unfinished file a hidden name where it could do without; for tests.
  bool isHidden = false;
  /// Called with a hidden name before the file gets it, so that it can be removed if the process ends early. What it
  /// returns is kept as long as the file has that name.
  std::function<std::shared_ptr<void>(const std::string& hiddenPath)> guard = {};
};

/// An unfinished file, which is gone with this object, or with the process, unless it was published. It has no name
/// until then, so that nothing is left of it however the process ends. Where the file system cannot create such a file,
/// it has a hidden name, such as ".meridian-8134", which stays if the process is killed. A file that replaces another
/// one has a hidden name for the moment of the change.
class WholeFile {
 public:
  /// Creates the unfinished file. With `replaces`, the error is `std::errc::is_a_directory`,
  /// `std::errc::no_such_file_or_directory` for a link that leads nowhere, `std::errc::not_supported` for a device or a
  /// pipe, and that of opening it for a file that may not be written.
  [[nodiscard]] MERIDIAN_API static Expected<WholeFile, std::error_code> create(const std::string& path,
                                                                                const WholeFileOptions& options = {});

  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;
  WholeFile(WholeFile&& other) noexcept
      : path_(std::move(other.path_)),
        options_(std::move(other.options_)),
        hidden_(std::exchange(other.hidden_, {})),
        guard_(std::move(other.guard_)),
        descriptor_(std::exchange(other.descriptor_, -1)) {}
  WholeFile& operator=(WholeFile&&) = delete;
  MERIDIAN_API ~WholeFile();

  /// Returns the open file, for reading and writing. It is closed with this object.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  /// Returns a path under which the unfinished file can be opened once more, without an extension: "/proc/self/fd/7".
  [[nodiscard]] MERIDIAN_API std::string unfinishedPath() const;

  /// Append the bytes, or write them at a place counted in bytes from the beginning, which may be beyond the end. An
  /// error if the volume is full or fails, or `std::errc::file_too_large` if the file gets too large for the process,
  /// which has to ignore SIGXFSZ.
  [[nodiscard]] MERIDIAN_API std::error_code write(std::string_view bytes) noexcept;
  [[nodiscard]] MERIDIAN_API std::error_code writeAt(std::uint64_t place, std::string_view bytes) noexcept;

  /// Reads bytes from a place, and returns how many there were: fewer than the memory holds only at the end.
  [[nodiscard]] MERIDIAN_API Expected<std::size_t, std::error_code> readAt(std::uint64_t place,
                                                                           std::span<char> memory) const noexcept;

  /// Waits until the file is on the disk, gives it its name, and waits for that too. Unless it replaces,
  /// `std::errc::file_exists` if any item has the name, even a dangling link: of several processes that publish under
  /// one name, exactly one succeeds. `stop` ends a copy from another volume with `std::errc::operation_canceled`. Call
  /// it once.
  [[nodiscard]] MERIDIAN_API std::error_code publish(const std::stop_token& stop = {});

 private:
  WholeFile(std::string path, WholeFileOptions options) noexcept
      : path_(std::move(path)), options_(std::move(options)) {}

  [[nodiscard]] std::error_code open(const std::string& directory);
  [[nodiscard]] std::error_code giveName();
  [[nodiscard]] std::error_code replace();
  [[nodiscard]] std::error_code publishCopy(const std::stop_token& stop) const;
  [[nodiscard]] std::string guardedHiddenName(const std::string& directory, std::shared_ptr<void>& guard) const;

  std::string path_;
  WholeFileOptions options_;
  /// Empty while the file has no hidden name.
  std::string hidden_;
  std::shared_ptr<void> guard_;
  int descriptor_ = -1;
};

}  // namespace meridian::inline v0_2
