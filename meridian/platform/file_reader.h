/// \file
/// Reads a file from beginning to end, in pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/export.h"
#include "meridian/platform/file_identity.h"

namespace meridian::inline v0_2 {

/// A regular file opened for reading. Nothing else is opened or read: a directory, FIFO, device or socket, or a link to
/// one. Opening does not wait for a FIFO's writer. The open descriptor is checked, not the path, so there is no race.
class MERIDIAN_API FileReader {
 public:
  explicit FileReader(const std::string& path);
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;
  FileReader(FileReader&&) = delete;
  FileReader& operator=(FileReader&&) = delete;
  ~FileReader();

  [[nodiscard]] bool isOpen() const noexcept { return descriptor_ >= 0; }

  /// Returns why opening or a later call failed; no error if nothing did or the path names `otherKind`.
  [[nodiscard]] const std::error_code& error() const noexcept { return error_; }

  /// Returns what the path names if that is not a regular file: "a directory", "a FIFO", "a device", "a socket"; empty
  /// for a regular file and for one that cannot be opened.
  [[nodiscard]] std::string_view otherKind() const noexcept { return otherKind_; }

  /// Returns the size in bytes at the time of opening. Files of the system, such as those in /proc, may have more.
  [[nodiscard]] std::uint64_t size() const noexcept { return size_; }

  /// Return which file it is and when its content was changed, in seconds since 1970, at the time of opening.
  [[nodiscard]] const FileIdentity& identity() const noexcept { return identity_; }
  [[nodiscard]] std::int64_t modificationTime() const noexcept { return modificationTime_; }

  /// Reads until the memory is full or the file ends. Returns the number of bytes read: less than the memory holds at
  /// the end of the file and after an error.
  [[nodiscard]] std::size_t read(std::span<char> memory) noexcept;

  /// Goes to this byte, which may lie beyond the end. Returns false if that failed.
  [[nodiscard]] bool seek(std::int64_t place) noexcept;

  /// Goes back to the beginning. Returns false if that failed.
  [[nodiscard]] bool rewind() noexcept { return seek(0); }

 private:
  int descriptor_ = -1;
  std::uint64_t size_ = 0;
  FileIdentity identity_;
  std::int64_t modificationTime_ = 0;
  std::error_code error_;
  std::string_view otherKind_;
};

}  // namespace meridian::inline v0_2
