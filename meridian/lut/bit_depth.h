// Code values of one bit depth at another.
#pragma once

#include <bit>
#include <cstdint>
#include <optional>

namespace meridian::inline v0_2 {

/// A code value of depth `from` at depth `to`: to fewer bits by a shift to the right (64 bits and more leave 0), to
/// more by a multiplication with a power of two. Unchanged where the depths are equal or one is not above 0. Absent
/// where the product leaves 64 bits.
[[nodiscard]] constexpr std::optional<std::uint64_t> rescaledCodeValue(std::uint64_t value, std::int64_t from,
                                                                       std::int64_t to) noexcept {
  if (from <= 0 || to <= 0 || from == to) return value;
  if (to < from) return from - to >= 64 ? 0 : value >> (from - to);
  if (value == 0) return value;
  if (to - from > std::countl_zero(value)) return std::nullopt;
  return value << (to - from);
}

/// The largest code value of a depth: 2^depth - 1; 0 for a depth below 1 and, on purpose, for one of 64 or more.
[[nodiscard]] constexpr std::uint64_t largestCodeValue(std::int64_t depth) noexcept {
  return depth < 1 || depth >= 64 ? 0 : (std::uint64_t{1} << depth) - 1;
}

/// The bits that the power of two that is at least `value` has as its exponent: 10 for 1023, and 10 for 1024 as well,
/// on purpose. 0 for a value of 1 or less.
[[nodiscard]] constexpr std::int64_t bitDepthOfMaximum(std::int64_t value) noexcept {
  return value <= 1 ? 0 : static_cast<std::int64_t>(std::bit_width(static_cast<std::uint64_t>(value) - 1));
}

}  // namespace meridian::inline v0_2
