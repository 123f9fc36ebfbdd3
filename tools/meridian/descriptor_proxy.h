/// \file
/// Lets OpenImageIO write to a file that is already open, and keeps the first error of the system. For example:
///
///     DescriptorProxy file(descriptor, "out.dpx");
///     output->set_ioproxy(&file);
///     output->open("out.dpx", spec);  // written, closed
///     if (file.failure() != 0) report(std::generic_category().message(file.failure()));
#pragma once

#include <OpenImageIO/filesystem.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace meridian::command {

/// A file descriptor as OpenImageIO's writers see it. Not every writer passes on that a write failed, so
/// the failure is remembered here. The descriptor is not closed. `name` is what messages of OpenImageIO call the file.
class DescriptorProxy final : public OIIO::Filesystem::IOProxy {
 public:
  DescriptorProxy(int descriptor, const std::string& name);
  ~DescriptorProxy() override;
  DescriptorProxy(const DescriptorProxy&) = delete;
  DescriptorProxy& operator=(const DescriptorProxy&) = delete;
  DescriptorProxy(DescriptorProxy&&) = delete;
  DescriptorProxy& operator=(DescriptorProxy&&) = delete;

  [[nodiscard]] const char* proxytype() const override { return "descriptor"; }
  std::size_t read(void* bytes, std::size_t count) override;
  std::size_t write(const void* bytes, std::size_t count) override;
  std::size_t pread(void* bytes, std::size_t count, std::int64_t offset) override;
  std::size_t pwrite(const void* bytes, std::size_t count, std::int64_t offset) override;
  [[nodiscard]] std::size_t size() const override;
  void flush() const override;
  void close() override { flush(); }

  /// Writes what is still buffered. Returns the system's number of the first error so far; 0 if there was none.
  [[nodiscard]] int failure() const;

 private:
  void writeThrough(const std::byte* bytes, std::size_t count, std::int64_t offset) const;
  void flushLocked() const;

  int descriptor_;
  mutable std::mutex mutex_;
  /// What `write` was given last, to be written at `bufferedOffset_`.
  mutable std::vector<std::byte> buffered_;
  mutable std::int64_t bufferedOffset_ = 0;
  mutable int failure_ = 0;
};

}  // namespace meridian::command
