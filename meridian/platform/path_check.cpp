#include "meridian/platform/path_check.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "meridian/platform/posix_calls.h"

namespace meridian {

std::error_code faultOfItem(const std::string& path) {
  if (detail::holdsNul(path)) return std::make_error_code(std::errc::no_such_file_or_directory);
  struct stat status{};
  return ::stat(path.c_str(), &status) == 0 ? std::error_code() : detail::lastError();
}

std::error_code faultOfFolder(const std::string& path) {
  if (detail::holdsNul(path)) return std::make_error_code(std::errc::no_such_file_or_directory);
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0) return detail::lastError();
  return S_ISDIR(status.st_mode) ? std::error_code() : std::make_error_code(std::errc::not_a_directory);
}

std::error_code faultOfNewFile(const std::string& path) {
  if (detail::holdsNul(path)) return std::make_error_code(std::errc::invalid_argument);
  struct stat status{};
  if (::lstat(path.c_str(), &status) == 0) return std::make_error_code(std::errc::file_exists);
  if (errno != ENOENT || path.empty()) return detail::lastError();
  if (path.ends_with('/')) return std::make_error_code(std::errc::is_a_directory);
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  return ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0 ? std::error_code() : detail::lastError();
}

}  // namespace meridian
