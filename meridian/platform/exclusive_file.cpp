#include "meridian/platform/exclusive_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {

ExclusiveFile makeExclusiveFile(const std::string& path) {
  constexpr mode_t permissions = 0666;  // less the process's mask
  if (detail::holdsNul(path)) return {{}, detail::faultOfNul()};
  int descriptor = -1;
  do {
    descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return {{}, detail::lastError()};
  struct stat status{};
  ExclusiveFile file;
  if (::fstat(descriptor, &status) == 0) {
    file.identity = identityOf(status);
  } else {
    file.error = detail::lastError();
    static_cast<void>(::unlink(path.c_str()));
  }
  ::close(descriptor);
  return file;
}

std::error_code removeFile(const std::string& path, const FileIdentity& identity) {
  struct stat status{};
  if (detail::holdsNul(path) || ::lstat(path.c_str(), &status) != 0) return {};
  if (identityOf(status) != identity || status.st_size != 0) return {};
  return ::unlink(path.c_str()) == 0 || errno == ENOENT ? std::error_code() : detail::lastError();
}

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
