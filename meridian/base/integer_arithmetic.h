// Integer arithmetic that notices when a result does not fit.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <optional>
#include <type_traits>

namespace meridian::inline v0_2 {

/// The product; absent when it leaves the range of the type.
template <std::integral Integer>
[[nodiscard]] constexpr std::optional<Integer> checkedProduct(Integer left,
                                                              std::type_identity_t<Integer> right) noexcept {
  Integer product = 0;
  if (__builtin_mul_overflow(left, right, &product)) return std::nullopt;
  return product;
}

/// The sum; absent when it leaves the range of the type.
template <std::integral Integer>
[[nodiscard]] constexpr std::optional<Integer> checkedSum(Integer left, std::type_identity_t<Integer> right) noexcept {
  Integer sum = 0;
  if (__builtin_add_overflow(left, right, &sum)) return std::nullopt;
  return sum;
}

/// The number truncated toward zero; absent when it is not finite or lies outside the signed 64-bit range.
[[nodiscard]] constexpr std::optional<std::int64_t> truncatedInteger(double number) noexcept {
  // 2^63, the first double beyond the range; the least number of the range is a double itself.
  constexpr double limit = 9223372036854775808.0;
  const bool fits = number >= -limit && number < limit;  // not so for what is not a number
  if (!fits) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

/// Returns the number truncated toward zero; absent when it is negative, not finite, or outside the unsigned 64-bit
/// range.
[[nodiscard]] constexpr std::optional<std::uint64_t> truncatedUnsignedInteger(double number) noexcept {
  constexpr double limit = 18446744073709551616.0;  // 2^64, the first double beyond the range
  const bool fits = number >= 0 && number < limit;  // false for NaN
  if (!fits) return std::nullopt;
  return static_cast<std::uint64_t>(number);
}

/// The greatest common divisor of two positive numbers; of 0 and a number, that number. With a negative number among
/// the two the result is the greater of them, on purpose: stored settings were reduced by this rule, which takes
/// positive terms for granted.
[[nodiscard]] constexpr std::int64_t gcd(std::int64_t num1, std::int64_t num2) noexcept {
  std::int64_t small = std::min(num1, num2);
  std::int64_t large = std::max(num1, num2);
  if (small < 1) return large;
  while (small > 0) {
    const std::int64_t remainder = large % small;
    large = std::max(small, remainder);
    small = std::min(small, remainder);
  }
  return large;
}

}  // namespace meridian::inline v0_2
