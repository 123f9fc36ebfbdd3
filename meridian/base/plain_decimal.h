/// \file
/// A fast path for the numbers that fill most files of numbers: short decimals without an exponent.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2::detail {

inline constexpr std::array<double, 16> powersOfTen{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

struct PlainDecimal {
  double number = 0;
  /// The end of the number; null if the text has to be read by DecimalNumber::fromText.
  const char* end = nullptr;
};

/// How many bytes have to be readable after the NUL that ends the text of `readPlainDecimal`.
inline constexpr std::size_t plainDecimalPadding = 16;

/// Does what readPlainDecimal does, one character after the other.
[[nodiscard]] inline PlainDecimal readPlainDecimalByCharacters(const char* text) noexcept {
  const bool negative = *text == '-';
  const char* place = text + static_cast<std::ptrdiff_t>(negative || *text == '+');
  std::uint64_t digits = 0;  // wraps only for more digits than are accepted
  const auto readDigits = [&] {
    const char* const first = place;
    for (; isDigit(*place); ++place) digits = digits * 10 + static_cast<std::uint64_t>(*place - '0');
    return place - first;
  };
  std::ptrdiff_t count = readDigits();
  std::ptrdiff_t decimals = 0;
  if (*place == '.') {
    ++place;
    decimals = readDigits();
    count += decimals;
  }
  constexpr std::ptrdiff_t mostDigits = 15;
  if (count == 0 || count > mostDigits || *place == 'e' || *place == 'E') return {};
  const double number = static_cast<double>(digits) / powersOfTen[static_cast<std::size_t>(decimals)];
  return {negative ? -number : number, place};
}

/// Eight characters as the values of digits, the first in the lowest byte.
struct EightDigits {
  std::uint64_t values = 0;
  /// The highest bit of the first byte that is not a digit; bytes after it may have theirs set too. 0 if all are
  /// digits.
  std::uint64_t others = 0;

  /// Reads characters of which those of `zeros` become 0: digits where it has "0".
  static EightDigits read(const char* text, std::uint64_t zeros, std::uint64_t limits) noexcept {
    EightDigits digits;
    std::memcpy(&digits.values, text, sizeof(digits.values));
    digits.values ^= zeros;
    // The sum sets the highest bit of bytes above the limit; a carry comes from a byte that has that bit itself.
    digits.others = ((digits.values + limits) | digits.values) & 0x8080808080808080;
    return digits;
  }

  /// Returns the number that eight digits make: pairs of digits are added, then pairs of pairs, then both halves.
  static std::uint64_t number(std::uint64_t values) noexcept {
    values = values * 10 + (values >> 8U);
    constexpr std::uint64_t pair = 0x000000FF000000FF;
    return ((values & pair) * (100 + (std::uint64_t{1000000} << 32U)) +
            ((values >> 16U) & pair) * (1 + (std::uint64_t{10000} << 32U))) >>
           32U;
  }
};

/// Reads the number at the beginning of a text if it is short and has no exponent: at most 15 digits, whose double is
/// exact before one correctly rounded division (W. D. Clinger, "How to Read Floating Point Numbers Accurately", 1990).
/// What follows the number is ignored. The text ends with a NUL, after which `plainDecimalPadding` bytes are readable.
///
/// Most programs write "D.DDDDDD", and many leave zeros at the end out. Both are read a word at a time. The first form
/// has a known length, so that a processor reads the next number before it has checked this one.
[[nodiscard]] inline PlainDecimal readPlainDecimal(const char* text) noexcept {
  if constexpr (std::endian::native == std::endian::little) {
    const auto endsNumber = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
    const EightDigits six = EightDigits::read(text, 0x3030303030302E30, 0x7676767676767F76);
    if (six.others == 0 && endsNumber(text[8])) {
      // The digit before the point takes the point's place.
      const std::uint64_t values = (six.values & ~std::uint64_t{0xFFFF}) | (six.values & 0xFF) << 8U;
      return {static_cast<double>(EightDigits::number(values)) / powersOfTen[6], text + 8};
    }
    const auto whole = static_cast<std::uint64_t>(static_cast<unsigned char>(text[0])) - '0';
    const bool hasPoint = text[1] == '.';
    const char* const decimals = text + (hasPoint ? 2 : 1);
    const EightDigits digits = EightDigits::read(decimals, 0x3030303030303030, 0x7676767676767676);
    const auto bits = static_cast<unsigned>(std::countr_zero(digits.others)) & ~7U;
    const std::size_t count = bits / 8;  // at most 7 of 8 digits
    if (whole <= 9 && digits.others != 0 && (hasPoint || count == 0) && endsNumber(decimals[count])) {
      // The last digit moves to the highest byte; zeros precede the first.
      const std::uint64_t values = (digits.values << (63 - bits)) << 1U;
      const double scale = powersOfTen[count];
      const double number = static_cast<double>(whole) * scale + static_cast<double>(EightDigits::number(values));
      return {number / scale, decimals + count};
    }
  }
  return readPlainDecimalByCharacters(text);
}

}  // namespace meridian::inline v0_2::detail
