// What the file system answers about the item at a path.
//
// A path is the bytes that the system takes. One with a NUL byte, which the system would cut off there, names nothing:
// `std::errc::no_such_file_or_directory`.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Why nothing is found at the path, links followed; no error where something is.
[[nodiscard]] MERIDIAN_API std::error_code faultOfItem(const std::string& path) noexcept;

/// Why no folder is found at the path, links followed; no error where one is.
[[nodiscard]] MERIDIAN_API std::error_code faultOfFolder(const std::string& path) noexcept;

/// Why no new file can be made at the path; no error where one can. `std::errc::file_exists` where something stands
/// there already, be it a link that leads nowhere. Permissions are asked for and no file is made, so that nobody who
/// watches the folder sees one come and go; what only making a file shows, such as a full volume, stays unseen.
[[nodiscard]] MERIDIAN_API std::error_code faultOfNewFile(const std::string& path);

/// Why the system cannot say whether anything exists at the path: it is too long, or a folder on the way may not be
/// searched or is none. No error where it can say: where a folder on the way is missing, and for a link that leads
/// nowhere or in a circle. Of a link the way that it leads has to be searchable too.
[[nodiscard]] MERIDIAN_API std::error_code lookUpFault(const std::string& path) noexcept;

/// Whether there is an item. Links are followed: one that leads nowhere, or in a circle, does not exist. False where
/// the system cannot say, because a folder on the way may not be searched or the path is too long.
[[nodiscard]] inline bool pathExists(const std::string& path) noexcept { return !faultOfItem(path); }

/// Whether anything has this name, a link too that leads nowhere. False where the system cannot say.
[[nodiscard]] MERIDIAN_API bool nameIsTaken(const std::string& path) noexcept;

/// Whether there is an item and it is a directory. Links are followed.
[[nodiscard]] inline bool pathIsDirectory(const std::string& path) noexcept { return !faultOfFolder(path); }

/// Whether an item of this name is hidden: it begins with a dot. "." and "..", which name a folder from within, do not
/// hide it.
[[nodiscard]] constexpr bool nameIsHidden(std::string_view name) noexcept {
  return name.starts_with('.') && name != "." && name != "..";
}

/// Whether the item is hidden; absent where it cannot be read. Of a link the link itself counts, wherever it leads.
[[nodiscard]] MERIDIAN_API std::optional<bool> pathIsHidden(const std::string& path) noexcept;

/// The kinds of links that a volume can hold.
struct VolumeLinks {
  bool symbolic = false;
  bool hard = false;
};

/// The links that the volume holds on which the item lies, by the type of its file system: none on the FAT family
/// (exFAT too) and in the system's own views (/proc, /sys), symbolic ones alone on ISO 9660. SMB, 9P and file systems
/// of user processes do not say what lies behind them, which counts as none. All others count as holding both. Throws
/// `std::system_error`, with the path in its message, where the item cannot be asked.
[[nodiscard]] MERIDIAN_API VolumeLinks volumeLinks(const std::string& path);

}  // namespace meridian::inline v0_2
