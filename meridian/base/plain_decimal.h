/// \file
/// A fast path for the numbers that fill most files of numbers: short decimals without an exponent.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2::detail {

inline constexpr std::array<double, 16> powersOfTen{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

struct PlainDecimal {
  double number = 0;
  /// The end of the number; null if the text has to be read by DecimalNumber::fromText.
  const char* end = nullptr;
};

/// Reads the number at the beginning of a text if it is short and has no exponent: at most 15 digits, whose double is
/// exact before one correctly rounded division (W. D. Clinger, "How to Read Floating Point Numbers Accurately", 1990).
/// What follows the number is ignored; the text must have a character that is neither a digit nor a point somewhere.
[[nodiscard]] inline PlainDecimal readPlainDecimal(const char* text) noexcept {
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

}  // namespace meridian::inline v0_2::detail
