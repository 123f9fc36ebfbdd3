#include "meridian/platform/exclusive_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {

Expected<FileIdentity, std::error_code> createExclusiveFile(const std::string& path) {
  constexpr mode_t permissions = 0666;  // less the process's mask
  if (detail::holdsNul(path)) return Unexpected(detail::nulError());
  int descriptor = -1;
  do {
    descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return Unexpected(detail::lastError());
  struct stat status{};
  const std::error_code error = ::fstat(descriptor, &status) == 0 ? std::error_code() : detail::lastError();
  ::close(descriptor);
  if (!error) return identityOf(status);
  static_cast<void>(::unlink(path.c_str()));
  return Unexpected(error);
}

std::error_code removeEmptyFile(const std::string& path, const FileIdentity& identity) {
  struct stat status{};
  if (detail::holdsNul(path) || ::lstat(path.c_str(), &status) != 0) return {};
  if (identityOf(status) != identity || status.st_size != 0) return {};
  return ::unlink(path.c_str()) == 0 || errno == ENOENT ? std::error_code() : detail::lastError();
}

}  // namespace meridian::inline v0_2
