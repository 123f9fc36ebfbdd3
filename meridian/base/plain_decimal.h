// A fast path for the numbers that fill most files of numbers: short decimals without an exponent.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2::detail {

/// Returns how many of the eight characters, from the first on, are digits.
[[nodiscard]] inline int leadingDigits(std::uint64_t characters) noexcept {
  // A byte's high bit is set unless it is a digit: below '0' the subtraction borrows, above '9' the addition carries.
  // A borrow or carry only comes from a byte that is not a digit itself, so the first one found is always right.
  const std::uint64_t aboveNine = characters + 0x4646464646464646;
  const std::uint64_t belowZero = characters - 0x3030303030303030;
  const std::uint64_t others = (aboveNine | belowZero | characters) & 0x8080808080808080;
  return others == 0 ? 8 : std::countr_zero(others) / 8;
}

/// Returns the value of eight digits, the first of which is in the lowest byte; zero bytes count as leading zeros.
[[nodiscard]] inline std::uint64_t valueOfEight(std::uint64_t digits) noexcept {
  digits = digits * 10 + (digits >> 8);
  constexpr std::uint64_t pairs = 0x000000FF000000FF;
  constexpr std::uint64_t hundredsAndMillions = 0x000F424000000064;  // 100 + (1000000 << 32)
  constexpr std::uint64_t onesAndTenThousands = 0x0000271000000001;  // 1 + (10000 << 32)
  return ((digits & pairs) * hundredsAndMillions + ((digits >> 16) & pairs) * onesAndTenThousands) >> 32;
}

inline constexpr std::array<double, 16> powersOfTen{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

struct PlainDecimal {
  double number = 0;
  /// The end of the number; null if the text has to be read by DecimalNumber::fromText.
  const char* end = nullptr;
};

/// Reads the number at the beginning of a text if it is short and has no exponent: at most 15 digits, whose double is
/// exact before one correctly rounded division (W. D. Clinger, "How to Read Floating Point Numbers Accurately", 1990).
/// What follows the number is ignored. There must be 8 readable bytes from the end of the text on, the first of which
/// is neither a digit nor a point.
[[nodiscard]] inline PlainDecimal readPlainDecimal(const char* text) noexcept {
  if constexpr (std::endian::native != std::endian::little) return {};  // the general path serves
  const bool negative = *text == '-';
  const char* place = text + static_cast<std::ptrdiff_t>(negative || *text == '+');
  const char* const first = place;
  std::uint64_t digits = 0;
  for (; isDigit(*place); ++place) digits = digits * 10 + static_cast<std::uint64_t>(*place - '0');
  std::ptrdiff_t count = place - first;
  std::ptrdiff_t decimals = 0;
  if (*place == '.') {
    ++place;
    std::uint64_t characters = 0;
    std::memcpy(&characters, place, sizeof(characters));
    const int read = leadingDigits(characters);
    if (read > 0) {
      // The digits are moved to the upper end, with zeros before them.
      digits = digits * static_cast<std::uint64_t>(powersOfTen[static_cast<std::size_t>(read)]) +
               valueOfEight((characters - 0x3030303030303030) << (64 - 8 * read));
      decimals = read;
      place += read;
    }
    if (read == 8) {
      for (; isDigit(*place); ++place, ++decimals) digits = digits * 10 + static_cast<std::uint64_t>(*place - '0');
    }
    count += decimals;
  }
  constexpr std::ptrdiff_t mostDigits = 15;
  if (count == 0 || count > mostDigits || *place == 'e' || *place == 'E') return {};
  const double number = static_cast<double>(digits) / powersOfTen[static_cast<std::size_t>(decimals)];
  return {negative ? -number : number, place};
}

}  // namespace meridian::inline v0_2::detail
