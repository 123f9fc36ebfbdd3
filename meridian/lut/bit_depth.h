/// \file
/// Arithmetic with code values and bit depths. For example:
///
///     rescaledCodeValue(1023, 10, 12);  // 4092: two bits more
///     largestCodeValue(10);             // 1023
///     bitDepthOfMaximum(1023);          // 10
#pragma once

#include <bit>
#include <cstdint>
#include <optional>

namespace meridian::inline v0_2 {

/// Converts a code value from `from` bits to `to` bits: to fewer bits by a right shift (64 bits and more leave 0), to
/// more by multiplication with a power of two. Returns it unchanged if the depths are equal or one is below 1; absent
/// if the product exceeds 64 bits.
[[nodiscard]] constexpr std::optional<std::uint64_t> rescaledCodeValue(std::uint64_t value, std::int64_t from,
                                                                       std::int64_t to) noexcept {
  if (from <= 0 || to <= 0 || from == to) return value;
  if (to < from) return from - to >= 64 ? 0 : value >> (from - to);
  if (value == 0) return value;
  if (to - from > std::countl_zero(value)) return std::nullopt;
  return value << (to - from);
}

/// Returns the largest code value of a depth, 2^depth - 1; 0 for a depth below 1 and, deliberately, for 64 and above:
/// converters then return 0, 0, 0.
[[nodiscard]] constexpr std::uint64_t largestCodeValue(std::int64_t depth) noexcept {
  return depth < 1 || depth >= 64 ? 0 : (std::uint64_t{1} << depth) - 1;
}

/// Returns the exponent of the smallest power of two that is at least `value`: 10 for 1023 and, deliberately, 10 for
/// 1024 as well. 0 for a value of 1 or less.
[[nodiscard]] constexpr std::int64_t bitDepthOfMaximum(std::int64_t value) noexcept {
  return value <= 1 ? 0 : static_cast<std::int64_t>(std::bit_width(static_cast<std::uint64_t>(value) - 1));
}

}  // namespace meridian::inline v0_2
