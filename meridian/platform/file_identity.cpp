#include "meridian/platform/file_identity.h"

#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {

std::optional<FileIdentity> fileIdentity(const std::string& path) {
  struct stat status{};
  if (detail::holdsNul(path) || ::lstat(path.c_str(), &status) != 0) return std::nullopt;
  return identityOf(status);
}

std::optional<FileIdentity> targetIdentity(const std::string& path) {
  struct stat status{};
  if (detail::holdsNul(path) || ::stat(path.c_str(), &status) != 0) return std::nullopt;
  return identityOf(status);
}

}  // namespace meridian::inline v0_2
