/// \file
/// Reads a file from beginning to end, in pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <system_error>

namespace meridian::inline v0_2 {

/// A file opened for reading. A directory counts as a file that cannot be opened.
class FileReader {
 public:
  explicit FileReader(const std::string& path);
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;
  FileReader(FileReader&&) = delete;
  FileReader& operator=(FileReader&&) = delete;
  ~FileReader();

  [[nodiscard]] bool isOpen() const noexcept { return descriptor_ >= 0; }

  /// Returns why opening or a later call failed; no error if nothing did.
  [[nodiscard]] const std::error_code& error() const noexcept { return error_; }

  /// Returns the size in bytes if the system knows it beforehand; 0 for a pipe.
  [[nodiscard]] std::uint64_t size() const noexcept { return size_; }

  /// Reads until the memory is full or the file ends. Returns the number of bytes read: less than the memory holds at
  /// the end of the file and after an error.
  [[nodiscard]] std::size_t read(std::span<char> memory) noexcept;

  /// Goes back to the beginning. Returns false if that is impossible, as it is for a pipe.
  [[nodiscard]] bool rewind() noexcept;

 private:
  int descriptor_ = -1;
  std::uint64_t size_ = 0;
  std::error_code error_;
};

}  // namespace meridian::inline v0_2
