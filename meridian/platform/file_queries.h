// What the file system answers about the item at a path.
//
// A path is the bytes that the system takes. One with a NUL byte, which the system would cut off there, names nothing.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/export.h"

namespace meridian {

/// Whether there is an item. Links are followed: one that leads nowhere, or in a circle, does not exist. False where
/// the system cannot say, because a folder on the way may not be searched or the path is too long.
[[nodiscard]] MERIDIAN_API bool pathExists(const std::string& path) noexcept;

/// Why the system cannot say whether anything has this name: it is too long, or a folder on the way may not be searched
/// or is none. No error where it can say, and where a folder on the way is missing.
[[nodiscard]] MERIDIAN_API std::error_code lookUpFault(const std::string& path);

/// Whether there is an item and it is a directory. Links are followed.
[[nodiscard]] MERIDIAN_API bool pathIsDirectory(const std::string& path) noexcept;

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
/// (exFAT too) and in the system's own views (/proc, /sys), both on file systems made for Linux, NTFS and HFS+. Shares
/// and file systems of user processes do not say what lies behind them, which counts as none. Throws
/// `std::system_error`, with the path in its message, where the item cannot be asked.
[[nodiscard]] MERIDIAN_API VolumeLinks volumeLinks(const std::string& path);

}  // namespace meridian
