#include "meridian/platform/file_queries.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "meridian/base/printable.h"
#include "meridian/platform/path_text.h"
#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {
namespace {

struct FileSystemRow {
  /// `f_type` of statfs(2).
  std::uint32_t type;
  VolumeLinks links;
};

// File systems that do not support both kinds of links, or do not say. Types from linux/magic.h and statfs(2).
constexpr auto fileSystems = std::to_array<FileSystemRow>({
    {0x00004d44, {false, false}},  // FAT
    {0x2011bab0, {false, false}},  // exFAT
    {0x00004244, {false, false}},  // HFS, the standard one
    {0x0000adf5, {false, false}},  // ADFS
    {0xf995e849, {false, false}},  // HPFS
    {0x00009660, {true, false}},   // ISO 9660
    {0x00009fa0, {false, false}},  // proc
    {0x62656572, {false, false}},  // sysfs
    {0x0027e0eb, {false, false}},  // control groups
    {0x63677270, {false, false}},  // control groups, version 2
    {0x00001cd1, {false, false}},  // pseudo-terminals
    {0x64626720, {false, false}},  // debugfs
    {0x74726163, {false, false}},  // tracefs
    {0x73636673, {false, false}},  // securityfs
    {0xde5e81e4, {false, false}},  // EFI variables
    {0x786f4256, {true, false}},   // VirtualBox shared folders
    {0x65735546, {false, false}},  // FUSE
    {0x01021997, {false, false}},  // 9P
    {0x0000517b, {false, false}},  // SMB
    {0xff534d42, {false, false}},  // CIFS
    {0xfe534d42, {false, false}},  // SMB 2
});

/// Returns why the process may not access the item so; no error if it may.
std::error_code accessError(const char* path, int mode) noexcept {
  return ::faccessat(AT_FDCWD, path, mode, AT_EACCESS) == 0 ? std::error_code() : detail::lastError();
}

}  // namespace

std::error_code itemError(const std::string& path) noexcept {
  if (detail::holdsNul(path)) return detail::nulError();
  struct stat status{};
  return ::stat(path.c_str(), &status) == 0 ? std::error_code() : detail::lastError();
}

std::error_code directoryError(const std::string& path) noexcept {
  if (detail::holdsNul(path)) return detail::nulError();
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0) return detail::lastError();
  return S_ISDIR(status.st_mode) ? std::error_code() : std::make_error_code(std::errc::not_a_directory);
}

std::error_code newFileError(const std::string& path) {
  if (detail::holdsNul(path)) return detail::nulError();
  struct stat status{};
  if (::lstat(path.c_str(), &status) == 0) return std::make_error_code(std::errc::file_exists);
  if (errno != ENOENT || path.empty()) return detail::lastError();
  if (path.ends_with('/')) return std::make_error_code(std::errc::is_a_directory);
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  return accessError(directory.c_str(), W_OK | X_OK);
}

std::error_code writableDirectoryError(const std::string& path) noexcept {
  if (const std::error_code error = directoryError(path)) return error;
  return accessError(path.c_str(), W_OK | X_OK);
}

std::error_code writableFileError(const std::string& path) noexcept {
  if (const std::error_code error = itemError(path)) return error;
  if (pathIsDirectory(path)) return std::make_error_code(std::errc::is_a_directory);
  return accessError(path.c_str(), W_OK);
}

std::error_code lookupError(const std::string& path) noexcept {
  if (detail::holdsNul(path)) return detail::nulError();
  struct stat status{};
  if (::lstat(path.c_str(), &status) != 0) return errno == ENOENT ? std::error_code() : detail::lastError();
  const bool canSay = ::stat(path.c_str(), &status) == 0 || errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
  return canSay ? std::error_code() : detail::lastError();
}

bool nameIsTaken(const std::string& path) noexcept {
  struct stat status{};
  return !detail::holdsNul(path) && ::lstat(path.c_str(), &status) == 0;
}

std::optional<bool> pathIsHidden(const std::string& path) noexcept {
  if (!nameIsTaken(path)) return std::nullopt;
  return nameIsHidden(lastPathComponent(path));
}

VolumeLinks volumeLinks(const std::string& path) {
  struct statfs status{};
  if (detail::holdsNul(path) || ::statfs(path.c_str(), &status) != 0) {
    throw std::system_error(detail::holdsNul(path) ? detail::nulError() : detail::lastError(),
                            "cannot determine which links the volume of " + inQuotes(path) + " supports");
  }
  for (const FileSystemRow& row : fileSystems) {
    if (row.type == static_cast<std::uint32_t>(status.f_type)) return row.links;
  }
  return {.symbolic = true, .hard = true};
}

}  // namespace meridian::inline v0_2
