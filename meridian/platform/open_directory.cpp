#include "meridian/platform/open_directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {
namespace {

constexpr int openingFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;

constexpr ItemKind kindOfType(unsigned char type) noexcept {
  switch (type) {
    case DT_REG:
      return ItemKind::file;
    case DT_DIR:
      return ItemKind::directory;
    case DT_LNK:
      return ItemKind::symbolicLink;
    default:
      return ItemKind::other;
  }
}

/// Returns the kind of an item whose entry does not store it; absent if the item is gone.
std::optional<ItemKind> queriedKind(int directory, const char* name) noexcept {
  struct stat status{};
  if (::fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    return kindOfType(static_cast<unsigned char>(IFTODT(status.st_mode)));
  }
  if (errno == ENOENT) return std::nullopt;
  return ItemKind::other;
}

}  // namespace

OpenDirectory::OpenDirectory(const std::string& path) {
  if (detail::holdsNul(path)) {
    error_ = detail::nulError();
    return;
  }
  descriptor_ = ::open(path.c_str(), openingFlags);
  if (descriptor_ < 0) error_ = detail::lastError();
}

OpenDirectory::OpenDirectory(const OpenDirectory& parent, const char* name) {
  descriptor_ = ::openat(parent.descriptor_, name, openingFlags | O_NOFOLLOW);
  if (descriptor_ < 0) error_ = detail::lastError();
}

void OpenDirectory::close() noexcept {
  if (isOpen()) ::close(std::exchange(descriptor_, -1));
}

std::optional<FileIdentity> OpenDirectory::identity() const noexcept {
  struct stat status{};
  if (::fstat(descriptor_, &status) != 0) return std::nullopt;
  return identityOf(status);
}

Expected<bool, std::error_code> OpenDirectory::leadsToDirectory(const char* name) const noexcept {
  if (!isOpen()) return Unexpected(error_);
  struct stat status{};
  if (::fstatat(descriptor_, name, &status, 0) == 0) return S_ISDIR(status.st_mode);
  if (errno == ENOENT || errno == ENOTDIR || errno == ELOOP) return false;
  return Unexpected(detail::lastError());
}

std::optional<DirectoryEntry> DirectoryEntries::next() noexcept {
  for (;;) {
    if (place_ == end_) {
      const ssize_t size = ::getdents64(descriptor_, records_.data(), records_.size());
      if (size < 0) error_ = detail::lastError();
      if (size <= 0) return std::nullopt;
      place_ = 0;
      end_ = static_cast<std::size_t>(size);
    }
    const auto* const record = reinterpret_cast<const dirent64*>(records_.data() + place_);
    place_ += record->d_reclen;
    const char* const name = &record->d_name[0];
    if (std::string_view(name) == "." || std::string_view(name) == "..") continue;
    const auto kind = record->d_type == DT_UNKNOWN ? queriedKind(descriptor_, name) : kindOfType(record->d_type);
    if (kind) return DirectoryEntry{name, *kind};
  }
}

}  // namespace meridian::inline v0_2
