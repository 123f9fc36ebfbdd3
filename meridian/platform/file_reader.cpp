#include "meridian/platform/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {

FileReader::FileReader(const std::string& path) {
  if (detail::holdsNul(path)) {
    error_ = detail::nulError();
    return;
  }
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor_ < 0) {
    error_ = detail::lastError();
    return;
  }
  struct stat status{};
  if (::fstat(descriptor_, &status) != 0) {
    error_ = detail::lastError();
  } else if (S_ISDIR(status.st_mode)) {
    error_ = std::make_error_code(std::errc::is_a_directory);
  } else {
    size_ = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
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

bool FileReader::rewind() noexcept {
  if (::lseek(descriptor_, 0, SEEK_SET) == 0) return true;
  error_ = detail::lastError();
  return false;
}

}  // namespace meridian::inline v0_2
