// Which item of the file system something is.
#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace meridian::inline v0_2 {

/// Equal for all the names of one item.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

[[nodiscard]] inline FileIdentity identityOf(const struct stat& status) noexcept {
  return {status.st_dev, status.st_ino};
}

}  // namespace meridian::inline v0_2
