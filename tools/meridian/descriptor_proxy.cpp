#include "tools/meridian/descriptor_proxy.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace meridian::command {
namespace {

constexpr std::size_t bufferBytes = std::size_t{1} << 16U;

}  // namespace

DescriptorProxy::DescriptorProxy(int descriptor, const std::string& name)
    : IOProxy(name, Write), descriptor_(descriptor) {}

DescriptorProxy::~DescriptorProxy() { flush(); }

std::size_t DescriptorProxy::read(void* bytes, std::size_t count) {
  const std::size_t done = pread(bytes, count, m_pos);
  m_pos += static_cast<std::int64_t>(done);
  return done;
}

std::size_t DescriptorProxy::write(const void* bytes, std::size_t count) {
  const std::lock_guard lock(mutex_);
  const bool continues = bufferedOffset_ + static_cast<std::int64_t>(buffered_.size()) == m_pos;
  if (!continues || buffered_.size() + count > bufferBytes) flushLocked();
  const auto* const first = static_cast<const std::byte*>(bytes);
  if (count > bufferBytes) {
    writeThrough(first, count, m_pos);
  } else {
    if (buffered_.empty()) bufferedOffset_ = m_pos;
    buffered_.insert(buffered_.end(), first, first + count);
  }
  m_pos += static_cast<std::int64_t>(count);
  return failure_ == 0 ? count : 0;
}

std::size_t DescriptorProxy::pread(void* bytes, std::size_t count, std::int64_t offset) {
  const std::lock_guard lock(mutex_);
  flushLocked();
  std::size_t done = 0;
  while (done < count) {
    const ssize_t got = ::pread(descriptor_, static_cast<std::byte*>(bytes) + done, count - done,
                                offset + static_cast<std::int64_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 && failure_ == 0) failure_ = errno;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

std::size_t DescriptorProxy::pwrite(const void* bytes, std::size_t count, std::int64_t offset) {
  const std::lock_guard lock(mutex_);
  flushLocked();
  writeThrough(static_cast<const std::byte*>(bytes), count, offset);
  return failure_ == 0 ? count : 0;
}

std::size_t DescriptorProxy::size() const {
  flush();
  struct stat status{};
  return fstat(descriptor_, &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

void DescriptorProxy::flush() const {
  const std::lock_guard lock(mutex_);
  flushLocked();
}

int DescriptorProxy::failure() const {
  const std::lock_guard lock(mutex_);
  flushLocked();
  return failure_;
}

void DescriptorProxy::writeThrough(const std::byte* bytes, std::size_t count, std::int64_t offset) const {
  std::size_t done = 0;
  while (done < count && failure_ == 0) {
    const ssize_t put = ::pwrite(descriptor_, bytes + done, count - done, offset + static_cast<std::int64_t>(done));
    if (put > 0) {
      done += static_cast<std::size_t>(put);
    } else if (put == 0 || errno != EINTR) {
      failure_ = put == 0 ? ENOSPC : errno;
    }
  }
}

void DescriptorProxy::flushLocked() const {
  writeThrough(buffered_.data(), buffered_.size(), bufferedOffset_);
  buffered_.clear();
}

}  // namespace meridian::command
