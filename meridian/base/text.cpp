// The only file that uses utf8proc.
#include "meridian/base/text.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2 {
namespace {

constexpr bool isAscii(char c) noexcept { return static_cast<unsigned char>(c) < 0x80; }

// Eight characters at a time, as the bytes of one word.
constexpr std::uint64_t everyByte(unsigned char byte) noexcept { return byte * std::uint64_t{0x0101010101010101}; }
constexpr std::uint64_t highBits = everyByte(0x80);
constexpr std::size_t wordSize = sizeof(std::uint64_t);

std::uint64_t wordAt(const char* text) noexcept {
  std::uint64_t word = 0;
  std::memcpy(&word, text, sizeof word);
  return word;
}

/// Lower-cases eight ASCII characters. An addition sets a byte's high bit if the character is "A" or greater, another
/// one if it is greater than "Z"; where only the first is set, the character is a capital, and the high bit shifted by
/// two is the bit 0x20 that turns it into a small letter.
constexpr std::uint64_t asciiLower(std::uint64_t word) noexcept {
  const std::uint64_t fromA = word + everyByte(0x80 - 'A');
  const std::uint64_t beyondZ = word + everyByte(0x80 - 'Z' - 1);
  return word | ((fromA ^ beyondZ) & highBits) >> 2;
}

bool isAsciiOnly(std::string_view text) noexcept {
  std::uint64_t all = 0;
  for (; text.size() >= wordSize; text.remove_prefix(wordSize)) all |= wordAt(text.data());
  for (const char c : text) all |= static_cast<unsigned char>(c);
  return (all & highBits) == 0;
}

/// The last unit of a text that is not empty.
TextUnit lastUnit(std::string_view text) noexcept {
  for (std::size_t length = 1; length <= std::min<std::size_t>(4, text.size()); ++length) {
    const TextUnit unit = firstUnit(text.substr(text.size() - length));
    if (unit.isCharacter && unit.length == length) return unit;
  }
  return {.value = static_cast<unsigned char>(text.back())};
}

bool isWhiteSpace(const TextUnit& unit) noexcept {
  if (!unit.isCharacter) return false;
  if (unit.value < 0x80) return detail::isAsciiWhiteSpace(static_cast<char>(unit.value));
  if (unit.value == 0x85) return true;
  const auto category = utf8proc_category(static_cast<utf8proc_int32_t>(unit.value));
  return category == UTF8PROC_CATEGORY_ZS || category == UTF8PROC_CATEGORY_ZL || category == UTF8PROC_CATEGORY_ZP;
}

void append(std::string& text, utf8proc_int32_t character) {
  std::array<utf8proc_uint8_t, 4> bytes{};
  const auto length = utf8proc_encode_char(character, bytes.data());
  text.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(length));
}

/// The text with `mapping` applied to every character outside ASCII.
template <typename Mapping>
std::string mapped(std::string_view text, Mapping appendMapped) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    if (isAscii(text[offset])) {
      result += detail::lowercasedAscii(text[offset++]);
      continue;
    }
    const TextUnit unit = firstUnit(text.substr(offset));
    if (unit.isCharacter) {
      appendMapped(result, static_cast<utf8proc_int32_t>(unit.value));
    } else {
      result += text[offset];
    }
    offset += unit.length;
  }
  return result;
}

/// The text lower-cased if it is all ASCII, and otherwise mapped. Nearly every text is ASCII, so it is lower-cased
/// while that is found out.
template <typename Mapping>
std::string lowerOrMapped(std::string_view text, Mapping appendMapped) {
  std::string result(text);
  std::uint64_t all = 0;
  const auto lowerWord = [&](char* at) {
    const std::uint64_t word = wordAt(at);
    all |= word;
    const std::uint64_t lower = asciiLower(word);
    std::memcpy(at, &lower, sizeof lower);
  };
  const std::size_t size = result.size();
  if (size >= wordSize) {
    for (std::size_t at = 0; at + wordSize <= size; at += wordSize) lowerWord(result.data() + at);
    // The last word overlaps the one before; lower-casing twice changes nothing.
    if (size % wordSize != 0) lowerWord(result.data() + size - wordSize);
  } else {
    for (char& c : result) {
      all |= static_cast<unsigned char>(c);
      c = detail::lowercasedAscii(c);
    }
  }
  if ((all & highBits) != 0) result = mapped(text, appendMapped);
  return result;
}

void appendLowercased(std::string& text, utf8proc_int32_t character) {
  // The only character whose full mapping, without context, is longer than its simple one (SpecialCasing.txt).
  constexpr utf8proc_int32_t capitalIWithDot = 0x130;
  if (character == capitalIWithDot) {
    text += "i\u0307";
  } else {
    append(text, utf8proc_tolower(character));
  }
}

void appendCaseFolded(std::string& text, utf8proc_int32_t character) {
  std::array<utf8proc_int32_t, 4> folded{};
  int lastBoundClass = 0;
  const auto count = utf8proc_decompose_char(character, folded.data(), static_cast<utf8proc_ssize_t>(folded.size()),
                                             UTF8PROC_CASEFOLD, &lastBoundClass);
  for (utf8proc_ssize_t i = 0; i < count; ++i) append(text, folded[static_cast<std::size_t>(i)]);
}

/// The text as one number for each unit, so that a match cannot begin or end inside a character: a character's code
/// point, or for a byte that is not part of a character a number above all code points.
std::u32string units(std::string_view text) {
  constexpr char32_t firstBeyondUnicode = 0x110000;
  std::u32string result;
  result.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    const TextUnit unit = firstUnit(text.substr(offset));
    result += unit.isCharacter ? unit.value : firstBeyondUnicode + unit.value;
    offset += unit.length;
  }
  return result;
}

}  // namespace

TextUnit firstUnit(std::string_view text) noexcept {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) return {.value = first, .length = 1, .isCharacter = true};
  utf8proc_int32_t character = 0;
  const std::size_t longest = std::min<std::size_t>(4, text.size());
  const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                       static_cast<utf8proc_ssize_t>(longest), &character);
  if (length <= 0) return {.value = first};
  return {.value = static_cast<char32_t>(character), .length = static_cast<std::size_t>(length), .isCharacter = true};
}

std::string lowercased(std::string_view text) { return lowerOrMapped(text, appendLowercased); }

std::string_view detail::trimmedAtBothEnds(std::string_view text) noexcept {
  while (!text.empty()) {
    const TextUnit unit = firstUnit(text);
    if (!isWhiteSpace(unit)) break;
    text.remove_prefix(unit.length);
  }
  while (!text.empty()) {
    const TextUnit unit = lastUnit(text);
    if (!isWhiteSpace(unit)) break;
    text.remove_suffix(unit.length);
  }
  return text;
}

std::string caseFolded(std::string_view text) { return lowerOrMapped(text, appendCaseFolded); }

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  if (isAsciiOnly(left) && isAsciiOnly(right)) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return detail::lowercasedAscii(a) == detail::lowercasedAscii(b); });
  }
  return caseFolded(left) == caseFolded(right);
}

bool containsIgnoringCase(std::string_view text, std::string_view piece) {
  if (isAsciiOnly(text) && isAsciiOnly(piece)) {
    return std::search(text.begin(), text.end(), piece.begin(), piece.end(),
                       [](char a, char b) { return detail::lowercasedAscii(a) == detail::lowercasedAscii(b); }) !=
               text.end() ||
           piece.empty();
  }
  return units(caseFolded(text)).find(units(caseFolded(piece))) != std::u32string::npos;
}

bool isValidUtf8(std::string_view text) noexcept {
  if (isAsciiOnly(text)) return true;
  for (std::size_t offset = 0; offset < text.size();) {
    const TextUnit unit = firstUnit(text.substr(offset));
    if (!unit.isCharacter) return false;
    offset += unit.length;
  }
  return true;
}

std::size_t displayWidth(std::string_view text) noexcept {
  std::size_t width = 0;
  while (!text.empty()) {
    const TextUnit unit = firstUnit(text);
    const int columns = unit.isCharacter ? utf8proc_charwidth(static_cast<utf8proc_int32_t>(unit.value)) : 1;
    width += static_cast<std::size_t>(columns);
    text.remove_prefix(unit.length);
  }
  return width;
}

}  // namespace meridian::inline v0_2
