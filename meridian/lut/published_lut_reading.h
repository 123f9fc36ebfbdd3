/// \file
/// What the readers of published LUT formats share: the lines of a file, and what they say of it. One reader per
/// format; to add one, declare it here and call it in published_lut.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_stages.h"
#include "meridian/lut/lut_values.h"
#include "meridian/platform/file_reader.h"

namespace meridian::inline v0_2::detail {

/// The limits that the published formats set.
inline constexpr std::int64_t mostCurveRows = 65536;
inline constexpr std::int64_t mostCubePoints = 256;

/// The lines of a text file, with their numbers. A line ends with a line feed, a carriage return, or both; a UTF-8
/// byte-order mark at the beginning is skipped. Memory is that of a piece of the file and of the longest line.
class TextLines {
 public:
  /// The maximum length of a line in bytes.
  static constexpr std::size_t longestLine = 1'000'000;

  TextLines(FileReader& reader, std::string_view path);

  /// Returns the row of three plain decimals with blanks between them that the next line is, as nearly all are; absent
  /// for any other line, which `next` then returns.
  [[nodiscard]] std::optional<LutColor> nextRow();

  /// Returns the next line without blanks at its ends, valid until the next call; absent at the end of the file. Of one
  /// that is too long only the beginning is returned.
  [[nodiscard]] std::optional<std::string_view> next();

  /// Returns whether the last line was longer than `longestLine`.
  [[nodiscard]] bool isOverlong() const noexcept { return isOverlong_; }

  /// Returns whether the last line is the end of a file without a newline: in a file that was cut, a part of a line.
  [[nodiscard]] bool isUnterminated() const noexcept { return isUnterminated_; }

  /// Makes the error of the file, of the last line, or of the number of rows.
  [[nodiscard]] Unexpected<LutError> error(LutErrorCode code, std::string detail = {}) const;
  [[nodiscard]] Unexpected<LutError> lineError(LutErrorCode code) const;
  [[nodiscard]] Unexpected<LutError> rowsError(LutErrorCode code, std::size_t found, std::size_t needed) const;

  /// Returns the last line with its number, for a message.
  [[nodiscard]] std::string described() const;

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

  /// Returns how many rows the rest of the file can hold at most.
  [[nodiscard]] std::size_t mostRows() const noexcept;

 private:
  bool fill();
  void skipLineFeed() noexcept;

  FileReader& reader_;
  std::string path_;
  std::vector<char> buffer_;
  /// What is unread in the buffer, which always ends with a NUL.
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool isAtEnd_ = false;
  /// Whether a line feed that comes next belongs to the line before.
  bool afterReturn_ = false;
  bool isOverlong_ = false;
  bool isUnterminated_ = false;
  std::string_view line_;
  std::string overlong_;
  std::uint64_t number_ = 0;
};

/// Returns the first word and removes it from the text; empty if there is no word. ASCII white space separates words.
[[nodiscard]] std::string_view firstWord(std::string_view& text) noexcept;

/// Returns the numbers of a line: exactly three, or nothing.
[[nodiscard]] std::optional<LutColor> colorOf(std::string_view text) noexcept;

/// Returns whether a line begins as a number does, and thus cannot be a keyword: with a digit, sign or point, or as
/// "inf" and "nan" do.
[[nodiscard]] bool beginsLikeNumber(std::string_view line) noexcept;

/// Counts lines that are ignored, for one warning about all of them.
class IgnoredLines {
 public:
  void add(const TextLines& lines) {
    if (count_++ == 0) first_ = lines.described();
  }
  void warn(PublishedLut& lut) const;

 private:
  std::size_t count_ = 0;
  std::string first_;
};

[[nodiscard]] Expected<PublishedLut, LutError> readPublishedCube(TextLines& lines);
[[nodiscard]] Expected<PublishedLut, LutError> readPublished3dl(TextLines& lines);

}  // namespace meridian::inline v0_2::detail
