#include "meridian/lut/published_lut_reading.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "meridian/base/ascii.h"
#include "meridian/base/decimal_number.h"
#include "meridian/base/numbers.h"
#include "meridian/base/plain_decimal.h"

namespace meridian::inline v0_2::detail {
namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

std::string_view withoutBlanks(std::string_view text) noexcept {
  while (!text.empty() && isAsciiWhiteSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isAsciiWhiteSpace(text.back())) text.remove_suffix(1);
  return text;
}

const char* afterBlanks(const char* place) noexcept {
  while (isAsciiBlank(*place)) ++place;
  return place;
}

}  // namespace

TextLines::TextLines(FileReader& reader, std::string_view path)
    : reader_(reader), path_(path), buffer_(1 + plainDecimalPadding) {}

/// Reads the next piece. Returns false at the end of the file.
bool TextLines::fill() {
  if (isAtEnd_) return false;
  const bool isFirst = number_ == 0 && end_ == 0;
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  buffer_.resize(std::max(buffer_.size(), end_ + pieceSize + 1 + plainDecimalPadding));
  const std::size_t count = reader_.read({buffer_.data() + end_, pieceSize});
  isAtEnd_ = count < pieceSize;
  end_ += count;
  buffer_[end_] = '\0';  // ends every number
  if (isFirst && std::string_view(buffer_.data(), end_).starts_with("\xef\xbb\xbf")) begin_ = 3;
  return count > 0;
}

void TextLines::skipLineFeed() noexcept {
  if (!afterReturn_ || begin_ == end_) return;
  if (buffer_[begin_] == '\n') ++begin_;
  afterReturn_ = false;
}

std::optional<LutColor> TextLines::nextRow() {
  skipLineFeed();
  const char* const start = buffer_.data() + begin_;
  std::array<PlainDecimal, 3> numbers;
  const char* place = start;
  for (PlainDecimal& number : numbers) {
    const char* const first = afterBlanks(place);
    if (first == place && place != start) return std::nullopt;
    number = readPlainDecimal(first);
    if (number.end == nullptr) return std::nullopt;
    place = number.end;
  }
  place = afterBlanks(place);
  if (!isNewline(*place)) return std::nullopt;
  line_ = {start, place};
  begin_ += line_.size() + 1;
  afterReturn_ = *place == '\r';
  isOverlong_ = false;
  ++number_;
  return LutColor{numbers[0].number, numbers[1].number, numbers[2].number};
}

std::optional<std::string_view> TextLines::next() {
  isOverlong_ = false;
  std::size_t searched = 0;
  while (true) {
    skipLineFeed();
    const char* const start = buffer_.data() + begin_;
    const char* const last = buffer_.data() + end_;
    const char* const newline = std::find_if(start + searched, last, isNewline);
    const std::string_view found(start, newline);
    if (newline != last) {
      begin_ += found.size() + 1;
      afterReturn_ = *newline == '\r';
    } else if (found.size() > longestLine) {
      if (!std::exchange(isOverlong_, true)) overlong_ = found;
      begin_ = end_;
      searched = 0;
      continue;
    } else {
      searched = found.size();
      if (fill()) continue;
      if (found.empty() && !isOverlong_) return std::nullopt;
      begin_ = end_;
      isUnterminated_ = true;
    }
    // A line may also have become too long with its last piece.
    if (!isOverlong_ && found.size() > longestLine) {
      isOverlong_ = true;
      overlong_ = found;
    }
    ++number_;
    line_ = withoutBlanks(isOverlong_ ? std::string_view(overlong_).substr(0, longestLine) : found);
    return line_;
  }
}

Unexpected<LutError> TextLines::error(LutErrorCode code, std::string detail) const {
  const bool isOfSystem = code == LutErrorCode::notOpened || code == LutErrorCode::notRead;
  return Unexpected(LutError{.code = code,
                             .place = path_,
                             .detail = std::move(detail),
                             .systemError = isOfSystem ? reader_.error() : std::error_code()});
}

Unexpected<LutError> TextLines::lineError(LutErrorCode code) const { return error(code, described()); }

Unexpected<LutError> TextLines::rowsError(LutErrorCode code, std::size_t found, std::size_t needed) const {
  return error(code, std::to_string(found) + " of " + std::to_string(needed) + " rows");
}

std::string TextLines::described() const {
  constexpr std::size_t most = 60;
  const std::string_view line = withoutBlanks(line_);
  return "line " + std::to_string(number_) + ": " + std::string(line.substr(0, most)) +
         (line.size() > most ? "..." : "");
}

std::size_t TextLines::mostRows() const noexcept {
  constexpr std::size_t shortestRow = 6;  // "0 0 0" and its newline
  return static_cast<std::size_t>(reader_.size()) / shortestRow + 1;
}

std::string_view firstWord(std::string_view& text) noexcept {
  text = withoutBlanks(text);
  const auto end = std::ranges::find_if(text, isAsciiWhiteSpace);
  const std::string_view word(text.begin(), end);
  text.remove_prefix(word.size());
  return word;
}

std::optional<LutColor> colorOf(std::string_view text) noexcept {
  std::array<double, 3> numbers{};
  for (double& number : numbers) {
    const auto read = DecimalNumber::fromText(firstWord(text));
    if (!read) return std::nullopt;
    number = read->doubleValue();
  }
  if (!withoutBlanks(text).empty()) return std::nullopt;
  return LutColor{numbers[0], numbers[1], numbers[2]};
}

bool beginsLikeNumber(std::string_view line) noexcept {
  if (line.empty()) return false;
  const char first = line.front();
  return isDigit(first) || first == '-' || first == '+' || first == '.' || doubleFromText(firstWord(line));
}

void IgnoredLines::warn(PublishedLut& lut) const {
  if (count_ == 0) return;
  const std::string others = count_ == 1 ? "" : " and " + std::to_string(count_ - 1) + " more";
  lut.warnings.push_back({LutWarningCode::ignoredLines, lut.path, first_ + others});
}

}  // namespace meridian::inline v0_2::detail
