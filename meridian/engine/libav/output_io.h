/// \file
/// Lets FFmpeg write to an unfinished file, and to nothing else.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <system_error>

#include "meridian/engine/libav/handles.h"
#include "meridian/platform/whole_file.h"

namespace meridian::inline v0_2::libav {

/// The input and output of a muxer on a file that another object owns.
class OutputIo {
 public:
  /// Returns null without memory.
  [[nodiscard]] static std::unique_ptr<OutputIo> create(WholeFile& file);
  OutputIo(const OutputIo&) = delete;
  OutputIo& operator=(const OutputIo&) = delete;
  OutputIo(OutputIo&&) = delete;
  OutputIo& operator=(OutputIo&&) = delete;
  ~OutputIo() = default;

  /// Makes a muxer write here, and read here what it has written.
  void attach(AVFormatContext& muxer);

  /// Returns why writing failed; no error if it did not.
  [[nodiscard]] const std::error_code& error() const noexcept { return error_; }

  /// Returns the size of the file so far, in bytes. Any thread may ask.
  [[nodiscard]] std::uint64_t size() const noexcept { return static_cast<std::uint64_t>(size_.load()); }

 private:
  explicit OutputIo(WholeFile& file) : file_(file) {}

  static int write(void* self, std::uint8_t* bytes, int size) noexcept;
  static std::int64_t seek(void* self, std::int64_t offset, int origin) noexcept;
  static int openToRead(AVFormatContext* muxer, AVIOContext** opened, const char* url, int flags,
                        AVDictionary** options) noexcept;
  static int closeReader(AVFormatContext* muxer, AVIOContext* context) noexcept;

  WholeFile& file_;
  std::int64_t place_ = 0;
  std::atomic<std::int64_t> size_ = 0;
  std::error_code error_;
  IoContextPointer context_;
};

}  // namespace meridian::inline v0_2::libav
