#include "meridian/platform/file_queries.h"

#include <sys/stat.h>
#include <sys/vfs.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "meridian/platform/path_text.h"
#include "meridian/platform/posix_calls.h"

namespace meridian {
namespace {

struct FileSystemRow {
  /// As statfs(2) gives it.
  std::uint32_t type;
  VolumeLinks links;
};

// File systems that do not hold both kinds of links, or do not say.
constexpr auto fileSystems = std::to_array<FileSystemRow>({
    {0x00004d44, {false, false}},  // FAT
    {0x2011bab0, {false, false}},  // exFAT
    {0x00004244, {false, false}},  // HFS, the standard one
    {0x0000adf5, {false, false}},  // ADFS
    {0xf995e849, {false, false}},  // HPFS
    {0x00009660, {true, false}},   // ISO 9660
    {0x00009fa0, {false, false}},  // proc
    {0x62656572, {false, false}},  // sysfs
    {0xde5e81e4, {false, false}},  // EFI variables
    {0x786f4256, {true, false}},   // shared folders of VirtualBox
    {0x65735546, {false, false}},  // FUSE
    {0x01021997, {false, false}},  // 9P
    {0x0000517b, {false, false}},  // SMB
    {0xff534d42, {false, false}},  // CIFS
    {0xfe534d42, {false, false}},  // SMB 2
});

}  // namespace

bool pathExists(const std::string& path) noexcept {
  struct stat status{};
  return !detail::holdsNul(path) && ::stat(path.c_str(), &status) == 0;
}

std::error_code lookUpFault(const std::string& path) {
  if (detail::holdsNul(path)) return std::make_error_code(std::errc::invalid_argument);
  struct stat status{};
  const bool canSay = ::lstat(path.c_str(), &status) == 0 || errno == ENOENT;
  return canSay ? std::error_code() : detail::lastError();
}

bool pathIsDirectory(const std::string& path) noexcept {
  struct stat status{};
  return !detail::holdsNul(path) && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<bool> pathIsHidden(const std::string& path) noexcept {
  struct stat status{};
  if (detail::holdsNul(path) || ::lstat(path.c_str(), &status) != 0) return std::nullopt;
  return nameIsHidden(lastPathComponent(path));
}

VolumeLinks volumeLinks(const std::string& path) {
  struct statfs status{};
  if (detail::holdsNul(path) || ::statfs(path.c_str(), &status) != 0) {
    const int failure = detail::holdsNul(path) ? ENOENT : errno;
    throw std::system_error(failure, std::generic_category(),
                            "the volume of \"" + path + "\" cannot be asked for its links");
  }
  for (const FileSystemRow& row : fileSystems) {
    if (row.type == static_cast<std::uint32_t>(status.f_type)) return row.links;
  }
  return {.symbolic = true, .hard = true};
}

}  // namespace meridian
