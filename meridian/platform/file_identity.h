/// \file
/// Which item of the file system a path or an open file names.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Identifies an item: equal for all of its names.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

[[nodiscard]] inline FileIdentity identityOf(const struct stat& status) noexcept {
  return {status.st_dev, status.st_ino};
}

/// Returns the identity of the item at the path, of a link itself; absent if there is none or the system cannot say.
[[nodiscard]] std::optional<FileIdentity> fileIdentity(const std::string& path);

/// Returns the identity of the item that the path leads to through all links; absent likewise.
[[nodiscard]] MERIDIAN_API std::optional<FileIdentity> targetIdentity(const std::string& path);

}  // namespace meridian::inline v0_2
