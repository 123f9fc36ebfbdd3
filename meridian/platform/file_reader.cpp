#include "meridian/platform/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {
namespace {

std::string_view otherKindOf(mode_t mode) noexcept {
  if (S_ISDIR(mode)) return "a directory";
  if (S_ISFIFO(mode)) return "a FIFO";
  return S_ISSOCK(mode) ? "a socket" : "a device";
}

}  // namespace

FileReader::FileReader(const std::string& path) {
  if (detail::holdsNul(path)) {
    error_ = detail::nulError();
    return;
  }
  // A FIFO without a writer is opened at once, and no terminal becomes the process's own.
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  struct stat status{};
  if (descriptor_ < 0) {
    error_ = detail::lastError();
    // The system opens no socket, and no device that is not there.
    if (error_ == std::errc::no_such_device_or_address && ::stat(path.c_str(), &status) == 0) {
      otherKind_ = otherKindOf(status.st_mode);
    }
    return;
  }
  if (::fstat(descriptor_, &status) != 0) {
    error_ = detail::lastError();
  } else if (!S_ISREG(status.st_mode)) {
    otherKind_ = otherKindOf(status.st_mode);
  } else {
    size_ = static_cast<std::uint64_t>(status.st_size);
    identity_ = identityOf(status);
    modificationTime_ = status.st_mtim.tv_sec;
    return;
  }
  ::close(descriptor_);
  descriptor_ = -1;
}

FileReader::~FileReader() {
  if (isOpen()) ::close(descriptor_);
}

std::size_t FileReader::read(std::span<char> memory) noexcept {
  std::size_t filled = 0;
  while (filled < memory.size()) {
    const ssize_t count = ::read(descriptor_, memory.data() + filled, memory.size() - filled);
    if (count == 0) break;
    if (count > 0) {
      filled += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      error_ = detail::lastError();
      break;
    }
  }
  return filled;
}

bool FileReader::seek(std::int64_t place) noexcept {
  if (::lseek(descriptor_, place, SEEK_SET) == place) return true;
  error_ = detail::lastError();
  return false;
}

}  // namespace meridian::inline v0_2
