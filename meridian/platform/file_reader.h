// Reading a file from its beginning to its end, in pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <system_error>

namespace meridian::inline v0_2 {

/// A file opened for reading. A folder counts as a file that cannot be opened.
class FileReader {
 public:
  explicit FileReader(const std::string& path);
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;
  FileReader(FileReader&&) = delete;
  FileReader& operator=(FileReader&&) = delete;
  ~FileReader();

  [[nodiscard]] bool isOpen() const noexcept { return descriptor_ >= 0; }

  /// What went wrong, at the opening or at a later call.
  [[nodiscard]] const std::error_code& error() const noexcept { return error_; }

  /// The size in bytes where the system knows it beforehand; 0 for a pipe.
  [[nodiscard]] std::uint64_t size() const noexcept { return size_; }

  /// Reads until the memory is full or the file ends. The bytes read: less than asked for at the end of the file, and
  /// after an error.
  [[nodiscard]] std::size_t read(std::span<char> memory) noexcept;

  /// Goes back to the beginning; whether that was possible, which it is not for a pipe.
  [[nodiscard]] bool rewind() noexcept;

 private:
  int descriptor_ = -1;
  std::uint64_t size_ = 0;
  std::error_code error_;
};

}  // namespace meridian::inline v0_2
