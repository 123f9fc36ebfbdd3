#include "meridian/platform/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

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

std::string pathThroughLinks(const std::string& path) {
  char* const resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return path;
  std::string target(resolved);
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc, hicpp-no-malloc): the system allocated it.
  free(resolved);
  return target;
}

Expected<WholeFile, std::error_code> WholeFile::create(const std::string& path, const WholeFileOptions& options) {
  if (path.empty() || path.ends_with('/') || detail::holdsNul(path) || detail::holdsNul(options.workDirectory)) {
    return Unexpected(detail::nulError());
  }
  std::string target = options.replaces ? pathThroughLinks(path) : path;
  const std::string unfinished = options.workDirectory.empty() ? target : options.workDirectory + "/file";
  if (!options.isHidden) {
    const std::size_t slash = unfinished.rfind('/');
    const int file = openNamelessFile(slash == std::string::npos ? std::string() : unfinished.substr(0, slash + 1));
    if (file >= 0) return WholeFile(std::move(target), {}, options.replaces, file);
  }
  std::string hidden = hiddenPathBeside(unfinished);
  const int file = open(hidden.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, newFile);
  if (file < 0) return Unexpected(lastError());
  return WholeFile(std::move(target), std::move(hidden), options.replaces, file);
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

std::string WholeFile::unfinishedPath() const { return hidden_.empty() ? descriptorPath(descriptor_) : hidden_; }

std::error_code WholeFile::publish() {
  if (fsync(descriptor_) != 0) return lastError();
  std::error_code error = replaces_ ? replace() : giveName();
  if (error == std::errc::cross_device_link) error = publishCopy();
  if (error) return error;
  if (!hidden_.empty()) unlink(hidden_.c_str());
  hidden_.clear();
  syncDirectoryOf(path_);
  return {};
}

std::error_code WholeFile::giveName() {
  if (hidden_.empty()) return link(descriptorPath(descriptor_), path_, AT_SYMLINK_FOLLOW);
  const std::error_code error = renameToNewName(hidden_, path_);
  if (!error) hidden_.clear();
  return error;
}

std::error_code WholeFile::replace() {
  struct stat old{};
  // Not every file system has permissions.
  if (stat(path_.c_str(), &old) == 0) static_cast<void>(fchmod(descriptor_, old.st_mode & 07777U));
  if (hidden_.empty()) {
    std::string name = hiddenPathBeside(path_);
    if (const std::error_code error = link(descriptorPath(descriptor_), name, AT_SYMLINK_FOLLOW)) return error;
    hidden_ = std::move(name);
  }
  if (rename(hidden_.c_str(), path_.c_str()) != 0) return lastError();
  hidden_.clear();
  return {};
}

std::error_code WholeFile::publishCopy() const {
  auto copy = create(path_, {.replaces = replaces_});
  if (!copy) return copy.error();
  if (lseek(descriptor_, 0, SEEK_SET) < 0) return lastError();
  constexpr std::size_t pieceSize = std::size_t{1} << 20U;
  std::vector<char> piece(pieceSize);
  for (;;) {
    const ssize_t count = read(descriptor_, piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return lastError();
    if (count == 0) return copy->publish();
    if (const std::error_code error = copy->write({piece.data(), static_cast<std::size_t>(count)})) return error;
  }
}

}  // namespace meridian::inline v0_2
