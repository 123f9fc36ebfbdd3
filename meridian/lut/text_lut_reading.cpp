#include "meridian/lut/text_lut_reading.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/plain_decimal.h"

namespace meridian::inline v0_2::detail {
namespace {

/// Zeros behind the bytes of a buffer, which end every number.
constexpr std::size_t padding = 16;

/// A header word that lies across two pieces of a line is found where they overlap by this much.
constexpr std::size_t overlap = 64;

constexpr bool isLineEnd(char c) noexcept { return c == '\n' || c == '\r'; }
constexpr bool isBlank(char c) noexcept { return c == ' ' || c == '\t'; }

struct PlainRow {
  LutColor color;
  /// At the row's line end; null where the line has to be read the general way.
  const char* end = nullptr;
};

/// Reads a line that is a row of three short decimals, possibly with blanks around it, as nearly all lines are.
PlainRow readPlainRow(const char* place) noexcept {
  while (isBlank(*place)) ++place;
  const PlainDecimal first = readPlainDecimal(place);
  if (first.end == nullptr || !isBlank(*first.end)) return {};
  const PlainDecimal second = readPlainDecimal(first.end + 1);
  if (second.end == nullptr || !isBlank(*second.end)) return {};
  const PlainDecimal third = readPlainDecimal(second.end + 1);
  if (third.end == nullptr) return {};
  const char* end = third.end;
  while (isBlank(*end)) ++end;
  if (!isLineEnd(*end)) return {};
  return {{first.number, second.number, third.number}, end};
}

/// Leaves two of each run of blanks, so that one blank between two numbers and more of them are told apart as before.
/// The length of what is left.
std::size_t withShortBlanks(std::span<char> line) noexcept {
  std::size_t run = 0;
  const auto rest = std::ranges::remove_if(line, [&run](char c) {
    run = isBlank(c) ? run + 1 : 0;
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
      buffer_.resize(kept_ + limits_.chunk + padding);
      const std::size_t count = source_({buffer_.data() + kept_, limits_.chunk});
      const std::size_t filled = kept_ + count;
      std::memset(buffer_.data() + filled, 0, padding);
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
  /// Hands over every line that ends in the buffer from `begin` to `end`. Where the first that does not end begins.
  std::size_t takeLines(std::size_t begin, std::size_t end) {
    const char* place = buffer_.data() + begin;
    const char* const last = buffer_.data() + end;
    while (place < last) {
      if (isLineEnd(*place)) {
        ++place;
        continue;
      }
      if (!isOverlong_) {
        if (const PlainRow row = readPlainRow(place); row.end != nullptr) {
          interpreter_.record(row.color);
          place = row.end + 1;
          continue;
        }
      }
      const char* const lineEnd = std::find_if(place, last, isLineEnd);
      if (lineEnd == last) break;
      endLine({place, lineEnd});
      place = lineEnd + 1;
    }
    return static_cast<std::size_t>(place - buffer_.data());
  }

  /// Hands over a line, or the rest of one that is too long to be a row.
  void endLine(std::string_view rest) {
    std::string shortened;
    if (!isOverlong_ && rest.size() > limits_.longestRow) {
      shortened = rest;
      shortened.resize(withShortBlanks(shortened));
      rest = shortened;
      isOverlong_ = rest.size() > limits_.longestRow;
    }
    if (isOverlong_) {
      findWords(rest);
      interpreter_.interpretOverlong(words_);
      isOverlong_ = false;
      words_ = {};
    } else {
      interpreter_.interpret(rest);
    }
  }

  void findWords(std::string_view piece) {
    // Behind the first row no header is looked for.
    if (interpreter_.triplets().empty()) words_ |= LutHeaderWords::in(piece);
  }

  /// Moves the beginning of a line that does not end yet to the buffer's beginning, and makes a long one short.
  void keep(std::size_t begin, std::size_t end) {
    std::memmove(buffer_.data(), buffer_.data() + begin, end - begin);
    kept_ = end - begin;
    if (!isOverlong_ && kept_ > limits_.longestRow) kept_ = withShortBlanks({buffer_.data(), kept_});
    if (!isOverlong_ && kept_ <= limits_.longestRow) return;
    isOverlong_ = true;
    findWords({buffer_.data(), kept_});
    const std::size_t tail = std::min(overlap, kept_);
    std::memmove(buffer_.data(), buffer_.data() + kept_ - tail, tail);
    kept_ = tail;
  }

  /// Makes room for the rows of the rest of the text, if they go on as so far.
  void makeRoom() {
    LutValueTriplets& rows = interpreter_.triplets();
    if (rows.empty() || size_ <= read_) return;
    const auto count = static_cast<double>(rows.size());
    const double expected = count * static_cast<double>(size_) / static_cast<double>(read_);
    if (expected * 1.01 < static_cast<double>(rows.capacity())) return;
    constexpr double harmless = 1 << 20;  // rows that take little enough memory to be wrong about
    const double enough = std::min(expected * 1.05 + 64, std::max(harmless, count * 2));
    if (enough > static_cast<double>(rows.capacity())) rows.reserve(static_cast<std::size_t>(enough));
  }

  ByteSource source_;
  std::uint64_t size_;
  GenericTextLutInterpreter& interpreter_;
  TextLutLimits limits_;
  std::vector<char> buffer_;
  /// Bytes at the buffer's beginning that begin a line.
  std::size_t kept_ = 0;
  std::uint64_t read_ = 0;
  /// Whether the line that is being read is too long to be a row; then the words found in it so far.
  bool isOverlong_ = false;
  LutHeaderWords words_;
};

}  // namespace

void readTextLut(ByteSource source, std::uint64_t size, GenericTextLutInterpreter& interpreter,
                 const TextLutLimits& limits) {
  LineCutter(source, size, interpreter, limits).run();
}

}  // namespace meridian::inline v0_2::detail
