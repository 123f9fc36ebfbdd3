#include "meridian/platform/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <random>

#include "meridian/platform/path_text.h"
#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {
namespace {

using detail::lastError;

/// The permissions of a new file, of which the user's mask takes some away.
constexpr mode_t newFile = 0666;

/// Gives a file a second name; an error if the name is taken.
std::error_code link(const std::string& from, const std::string& to, int flags) noexcept {
  return linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0 ? std::error_code() : lastError();
}

/// Renames a file; an error if the name is taken.
std::error_code renameToNewName(const std::string& from, const std::string& to) noexcept {
  const std::error_code linked = link(from, to, 0);
  if (!linked) return unlink(from.c_str()) == 0 ? std::error_code() : lastError();
  if (linked == std::errc::file_exists) return linked;
  // File systems without hard links.
  return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0 ? std::error_code()
                                                                                        : lastError();
}

/// Waits until the names in a file's directory are on the disk, where the file system can do that. The file is there
/// in any case.
void syncDirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const int opened = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  static_cast<void>(fsync(opened));
  close(opened);
}

}  // namespace

int openNamelessFile(const std::string& directory) noexcept {
  const int file = open(directory.empty() ? "." : directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, newFile);
  // Without /proc it could not be given a name.
  if (file >= 0 && access("/proc/self/fd", F_OK) != 0) {
    close(file);
    return -1;
  }
  return file;
}

std::string descriptorPath(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

std::string hiddenPathBeside(const std::string& path) {
  std::random_device random;
  const std::uint64_t number = (std::uint64_t{random()} << 32U) | random();
  return path.substr(0, path.rfind('/') + 1) + ".meridian-" + std::to_string(number);
}

Expected<WholeFile, std::error_code> WholeFile::create(const std::string& path, Unfinished preferred) {
  if (path.empty() || path.ends_with('/') || detail::holdsNul(path)) return Unexpected(detail::nulError());
  if (preferred == Unfinished::withoutName) {
    const std::size_t slash = path.rfind('/');
    const int file = openNamelessFile(slash == std::string::npos ? std::string() : path.substr(0, slash + 1));
    if (file >= 0) return WholeFile(path, {}, file);
  }
  std::string hidden = hiddenPathBeside(path);
  const int file = open(hidden.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, newFile);
  if (file < 0) return Unexpected(lastError());
  return WholeFile(path, std::move(hidden), file);
}

WholeFile::~WholeFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!hidden_.empty()) unlink(hidden_.c_str());
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the file.
std::error_code WholeFile::write(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return lastError();
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

std::error_code WholeFile::publish() {
  if (fsync(descriptor_) != 0) return lastError();
  const std::error_code error =
      hidden_.empty() ? link(descriptorPath(descriptor_), path_, AT_SYMLINK_FOLLOW) : renameToNewName(hidden_, path_);
  if (error) return error;
  hidden_.clear();
  syncDirectoryOf(path_);
  return {};
}

}  // namespace meridian::inline v0_2
