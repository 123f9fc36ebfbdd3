#include "meridian/lut/text_lut_reading.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/ascii.h"
#include "meridian/base/plain_decimal.h"

namespace meridian::inline v0_2::detail {
namespace {

/// Consecutive pieces of an overlong line overlap by this much, so that a keyword across both is found.
constexpr std::size_t overlap = 64;

struct PlainRow {
  LutColor color;
  /// The row's newline; null if the line has to be read by the interpreter.
  const char* end = nullptr;
};

/// Reads a line if it is a row of three short decimals, possibly with blanks around it, as nearly all lines are.
PlainRow readPlainRow(const char* place) noexcept {
  while (isAsciiBlank(*place)) ++place;
  const PlainDecimal first = readPlainDecimal(place);
  if (first.end == nullptr || !isAsciiBlank(*first.end)) return {};
  const PlainDecimal second = readPlainDecimal(first.end + 1);
  if (second.end == nullptr || !isAsciiBlank(*second.end)) return {};
  const PlainDecimal third = readPlainDecimal(second.end + 1);
  if (third.end == nullptr) return {};
  const char* end = third.end;
  while (isAsciiBlank(*end)) ++end;
  if (!isNewline(*end)) return {};
  return {{first.number, second.number, third.number}, end};
}

/// Shortens each run of blanks to two, so that one blank between two numbers still differs from several. Returns the
/// length that is left.
std::size_t withShortBlanks(std::span<char> line) noexcept {
  std::size_t run = 0;
  const auto rest = std::ranges::remove_if(line, [&run](char c) {
    run = isAsciiBlank(c) ? run + 1 : 0;
    return run > 2;
  });
  return line.size() - rest.size();
}

class LineCutter {
 public:
  LineCutter(ByteSource source, std::uint64_t size, GenericTextLutInterpreter& interpreter, const TextLutLimits& limits)
      : source_(source), size_(size), interpreter_(interpreter), limits_(limits) {}

  void run() {
    while (true) {
      buffer_.resize(kept_ + limits_.chunk + 1 + plainDecimalPadding);
      const std::size_t count = source_({buffer_.data() + kept_, limits_.chunk});
      const std::size_t filled = kept_ + count;
      buffer_[filled] = '\0';  // ends every number
      std::size_t begin = 0;
      if (read_ == 0 && std::string_view(buffer_.data(), filled).starts_with("\xef\xbb\xbf")) begin = 3;
      read_ += count;
      keep(takeLines(begin, filled), filled);
      if (count < limits_.chunk) break;
      makeRoom();
    }
    endLine({buffer_.data(), kept_});
  }

 private:
  /// Passes on every line that ends in the buffer from `begin` to `end`. Returns where the first unfinished one begins.
  std::size_t takeLines(std::size_t begin, std::size_t end) {
    const char* place = buffer_.data() + begin;
    const char* const last = buffer_.data() + end;
    while (place < last) {
      if (isNewline(*place)) {
        if (*place == '\r' || !afterReturn_) ++lines_;
        afterReturn_ = *place == '\r';
        ++place;
        continue;
      }
      if (!isOverlong_) {
        if (const PlainRow row = readPlainRow(place); row.end != nullptr) {
          interpreter_.record(row.color);
          countLine(*row.end);
          place = row.end + 1;
          continue;
        }
      }
      const char* const newline = std::find_if(place, last, isNewline);
      if (newline == last) break;
      endLine({place, newline});
      countLine(*newline);
      place = newline + 1;
    }
    return static_cast<std::size_t>(place - buffer_.data());
  }

  /// Counts a line that is not empty, with its newline.
  void countLine(char newline) noexcept {
    ++lines_;
    afterReturn_ = newline == '\r';
  }

  /// Passes on a line, or the rest of one that is too long to be a row.
  void endLine(std::string_view rest) {
    std::string shortened;
    if (!isOverlong_ && rest.size() > limits_.longestRow) {
      shortened = rest;
      shortened.resize(withShortBlanks(shortened));
      rest = shortened;
      isOverlong_ = rest.size() > limits_.longestRow;
    }
    if (isOverlong_) {
      findKeywords(rest);
      interpreter_.interpretOverlong(keywords_, lines_ + 1);
      isOverlong_ = false;
      keywords_ = {};
    } else {
      interpreter_.interpret(rest, lines_ + 1);
    }
  }

  void findKeywords(std::string_view piece) {
    // After the first row there are no headers.
    if (interpreter_.triplets().empty()) keywords_ |= LutHeaderWords::in(piece);
  }

  /// Moves an unfinished line to the buffer's beginning, and shortens a long one.
  void keep(std::size_t begin, std::size_t end) {
    std::memmove(buffer_.data(), buffer_.data() + begin, end - begin);
    kept_ = end - begin;
    if (!isOverlong_ && kept_ > limits_.longestRow) kept_ = withShortBlanks({buffer_.data(), kept_});
    if (!isOverlong_ && kept_ <= limits_.longestRow) return;
    isOverlong_ = true;
    findKeywords({buffer_.data(), kept_});
    const std::size_t tail = std::min(overlap, kept_);
    std::memmove(buffer_.data(), buffer_.data() + kept_ - tail, tail);
    kept_ = tail;
  }

  /// Reserves room for the remaining rows, assuming that they are as long as those so far. Rows are copied only when
  /// their room is used up or all of them are expected to fit, so that reading takes linear time.
  void makeRoom() {
    LutValueTriplets& rows = interpreter_.triplets();
    if (rows.empty() || size_ <= read_) return;
    const auto count = static_cast<double>(rows.size());
    const auto room = static_cast<double>(rows.capacity());
    const double expected = count * static_cast<double>(size_) / static_cast<double>(read_);
    if (expected * 1.01 < room) return;
    constexpr double harmless = 1 << 20;  // few enough rows that a wrong guess costs little memory
    constexpr double shortestRow = 6;     // "0 0 0" and its newline
    const double all = expected * 1.05 + 64;
    const double most = std::max(harmless, count * 2);
    const bool fitsNextChunk = count + static_cast<double>(limits_.chunk) / shortestRow < room;
    if (fitsNextChunk && all > most) return;
    rows.reserve(static_cast<std::size_t>(std::min(all, most)));
  }

  ByteSource source_;
  std::uint64_t size_;
  GenericTextLutInterpreter& interpreter_;
  TextLutLimits limits_;
  std::vector<char> buffer_;
  /// The bytes of an unfinished line at the buffer's beginning.
  std::size_t kept_ = 0;
  std::uint64_t read_ = 0;
  /// The lines that have ended, and whether a line feed that comes next belongs to the last of them.
  std::uint64_t lines_ = 0;
  bool afterReturn_ = false;
  /// Whether the line being read is too long to be a row; then the keywords found in it so far.
  bool isOverlong_ = false;
  LutHeaderWords keywords_;
};

}  // namespace

void readTextLut(ByteSource source, std::uint64_t size, GenericTextLutInterpreter& interpreter,
                 const TextLutLimits& limits) {
  LineCutter(source, size, interpreter, limits).run();
}

}  // namespace meridian::inline v0_2::detail
