#include "meridian/platform/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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
/// The permissions of an existing file.
constexpr mode_t permissions = 07777;

std::string directoryOf(const std::string& path) { return std::string(deletingLastPathComponent(path)); }

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
  const int opened = open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  static_cast<void>(fsync(opened));
  close(opened);
}

/// Opens a file without a name in a directory. Returns -1 where the file system or the system does not have such files.
int openNamelessFile(const std::string& directory) noexcept {
  const int file = open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, newFile);
  // Without /proc it could not be given a name.
  if (file >= 0 && access("/proc/self/fd", F_OK) != 0) {
    close(file);
    return -1;
  }
  return file;
}

/// Returns the path under which an open file is opened or linked once more.
std::string descriptorPath(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

/// Returns the file that replacing a path replaces: the one that it leads to through links, or the path itself if
/// nothing has it. An error if that is not a file that may be written.
Expected<std::string, std::error_code> replacedFile(const std::string& path) {
  struct stat status{};
  if (stat(path.c_str(), &status) != 0) {
    const std::error_code error = lastError();
    const bool isNew = error == std::errc::no_such_file_or_directory && lstat(path.c_str(), &status) != 0;
    return isNew ? Expected<std::string, std::error_code>(path) : Unexpected(error);
  }
  if (S_ISDIR(status.st_mode)) return Unexpected(std::make_error_code(std::errc::is_a_directory));
  if (!S_ISREG(status.st_mode)) return Unexpected(std::make_error_code(std::errc::not_supported));
  // A rename would replace even a write-protected file.
  const int file = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return Unexpected(lastError());
  close(file);
  char* const resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return Unexpected(lastError());
  std::string target(resolved);
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc, hicpp-no-malloc): the system allocated it.
  free(resolved);
  return target;
}

/// Writes all bytes by a call that writes some of them, given how many were written before.
template <typename Call>
std::error_code writeAll(std::string_view bytes, Call call) noexcept {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = call(bytes.substr(written), written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return lastError();
    written += static_cast<std::size_t>(count);
  }
  return {};
}

}  // namespace

Expected<WholeFile, std::error_code> WholeFile::create(const std::string& path, const WholeFileOptions& options) {
  if (path.empty() || path.ends_with('/') || detail::holdsNul(path) || detail::holdsNul(options.workDirectory)) {
    return Unexpected(detail::nulError());
  }
  std::string target = path;
  if (options.replaces) {
    auto replaced = replacedFile(path);
    if (!replaced) return Unexpected(replaced.error());
    target = *std::move(replaced);
  }
  std::string directory = directoryOf(target);
  if (!options.workDirectory.empty()) {
    // Found now rather than when the work is done.
    if (faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) != 0) return Unexpected(lastError());
    directory = options.workDirectory;
  }
  WholeFile file(std::move(target), options);
  if (const std::error_code error = file.open(directory)) return Unexpected(error);
  return file;
}

std::error_code WholeFile::open(const std::string& directory) {
  if (!options_.isHidden) descriptor_ = openNamelessFile(directory);
  if (descriptor_ >= 0) return {};
  std::string hidden = guardedHiddenName(directory, guard_);
  descriptor_ = ::open(hidden.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, newFile);
  if (descriptor_ < 0) return lastError();
  hidden_ = std::move(hidden);
  return {};
}

WholeFile::~WholeFile() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!hidden_.empty()) unlink(hidden_.c_str());
}

std::string WholeFile::unfinishedPath() const { return hidden_.empty() ? descriptorPath(descriptor_) : hidden_; }

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the file.
std::error_code WholeFile::write(std::string_view bytes) noexcept {
  return writeAll(bytes, [this](std::string_view rest, std::size_t /*written*/) {
    return ::write(descriptor_, rest.data(), rest.size());
  });
}

// NOLINTNEXTLINE(readability-make-member-function-const): likewise.
std::error_code WholeFile::writeAt(std::uint64_t place, std::string_view bytes) noexcept {
  return writeAll(bytes, [this, place](std::string_view rest, std::size_t written) {
    return pwrite(descriptor_, rest.data(), rest.size(), static_cast<off_t>(place + written));
  });
}

Expected<std::size_t, std::error_code> WholeFile::readAt(std::uint64_t place, std::span<char> memory) const noexcept {
  std::size_t total = 0;
  while (total < memory.size()) {
    const ssize_t count =
        pread(descriptor_, memory.data() + total, memory.size() - total, static_cast<off_t>(place + total));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Unexpected(lastError());
    if (count == 0) break;
    total += static_cast<std::size_t>(count);
  }
  return total;
}

std::error_code WholeFile::publish(const std::stop_token& stop) {
  if (fsync(descriptor_) != 0) return lastError();
  std::error_code error = options_.replaces ? replace() : giveName();
  if (error == std::errc::cross_device_link) error = publishCopy(stop);
  if (error) return error;
  // Still there where the file was copied.
  if (!hidden_.empty()) unlink(hidden_.c_str());
  hidden_.clear();
  guard_.reset();
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
  if (stat(path_.c_str(), &old) == 0) static_cast<void>(fchmod(descriptor_, old.st_mode & permissions));
  if (hidden_.empty()) {
    // A name that is free needs no hidden one.
    const std::error_code named = giveName();
    if (named != std::errc::file_exists) return named;
    std::shared_ptr<void> guard;
    std::string hidden = guardedHiddenName(directoryOf(path_), guard);
    // Until the link exists, the name may be that of another file, which has to stay.
    if (const std::error_code error = link(descriptorPath(descriptor_), hidden, AT_SYMLINK_FOLLOW)) return error;
    hidden_ = std::move(hidden);
    guard_ = std::move(guard);
  }
  if (rename(hidden_.c_str(), path_.c_str()) != 0) return lastError();
  hidden_.clear();
  return {};
}

std::error_code WholeFile::publishCopy(const std::stop_token& stop) const {
  auto copy = create(path_, {.replaces = options_.replaces, .isHidden = options_.isHidden, .guard = options_.guard});
  if (!copy) return copy.error();
  constexpr std::size_t pieceSize = std::size_t{1} << 20U;
  std::vector<char> piece(pieceSize);
  for (std::uint64_t place = 0;;) {
    if (stop.stop_requested()) return std::make_error_code(std::errc::operation_canceled);
    const auto count = readAt(place, piece);
    if (!count) return count.error();
    if (*count == 0) return copy->publish();
    if (const std::error_code error = copy->write({piece.data(), *count})) return error;
    place += *count;
  }
}

std::string WholeFile::guardedHiddenName(const std::string& directory, std::shared_ptr<void>& guard) const {
  std::random_device random;
  const std::uint64_t number = (std::uint64_t{random()} << 32U) | random();
  std::string hidden = appendingPathComponent(directory, ".meridian-" + std::to_string(number));
  if (options_.guard) guard = options_.guard(hidden);
  return hidden;
}

}  // namespace meridian::inline v0_2
