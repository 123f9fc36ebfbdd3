/// \file
/// Ask the file system about the item at a path. For example:
///
///     if (const std::error_code error = directoryError("/Volumes/CARD01")) return error.message();
///
/// A path is passed to the system byte for byte. No item has a path with a NUL byte:
/// `std::errc::no_such_file_or_directory`.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Returns why the path does not exist; no error if it does. Follows links.
[[nodiscard]] MERIDIAN_API std::error_code itemError(const std::string& path) noexcept;

/// Returns why the path is not a directory; no error if it is. Follows links.
[[nodiscard]] MERIDIAN_API std::error_code directoryError(const std::string& path) noexcept;

/// Returns why no new file can be created at the path; no error if one can. `std::errc::file_exists` if any item has
/// the name, even a dangling link. Only checks permissions, so that programs that watch the directory do not see a file
/// come and go; errors that only creating a file shows, such as a full volume, are not found.
[[nodiscard]] MERIDIAN_API std::error_code newFileError(const std::string& path);

/// Returns why no item can be created in the directory; no error if one can. Follows links. Only checks permissions, as
/// `newFileError` does.
[[nodiscard]] MERIDIAN_API std::error_code writableDirectoryError(const std::string& path) noexcept;

/// Returns why the existing file, FIFO or device cannot be written to; no error if it can. Follows links. Only checks
/// permissions.
[[nodiscard]] MERIDIAN_API std::error_code writableFileError(const std::string& path) noexcept;

/// Returns why the system cannot say whether the path exists: it is too long, or a component of it is not a directory
/// or may not be searched. No error if the system can say, also for a missing directory on the way and for a dangling
/// or circular link. The target of a link must be searchable as well.
[[nodiscard]] MERIDIAN_API std::error_code lookupError(const std::string& path) noexcept;

/// Returns true if the path exists. Follows links: dangling and circular ones do not exist. False if the system cannot
/// say; `lookupError` says why.
[[nodiscard]] inline bool pathExists(const std::string& path) noexcept { return !itemError(path); }

/// Returns true if any item has this name, even a dangling link. False if the system cannot say.
[[nodiscard]] MERIDIAN_API bool nameIsTaken(const std::string& path) noexcept;

/// Returns true if the path is a directory. Follows links.
[[nodiscard]] inline bool pathIsDirectory(const std::string& path) noexcept { return !directoryError(path); }

/// Returns true if items of this name are hidden: it begins with a dot, and is neither "." nor "..".
[[nodiscard]] constexpr bool nameIsHidden(std::string_view name) noexcept {
  return name.starts_with('.') && name != "." && name != "..";
}

/// Returns whether the item is hidden; absent if there is none or the system cannot say. Does not follow links.
[[nodiscard]] MERIDIAN_API std::optional<bool> pathIsHidden(const std::string& path) noexcept;

/// The kinds of links that a volume supports.
struct VolumeLinks {
  bool symbolic = false;
  bool hard = false;
};

/// Returns which links the volume of the item supports, by the type of its file system: none on the FAT family
/// (including exFAT) and in /proc, /sys and the like; only symbolic ones on ISO 9660; none on SMB, 9P and FUSE, which
/// do not say what they are mounted from; both on all others. Throws `std::system_error`, with the path in its message,
/// if the system cannot say.
[[nodiscard]] MERIDIAN_API VolumeLinks volumeLinks(const std::string& path);

}  // namespace meridian::inline v0_2
