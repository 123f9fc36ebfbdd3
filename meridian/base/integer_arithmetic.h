/// \file
/// Integer arithmetic whose result is absent if it does not fit. For example:
///
///     checkedSum<std::int64_t>(INT64_MAX, 1)  // std::nullopt
///     truncatedInteger(-1.9)                  // -1
///     gcd(1920, 1080)                         // 120
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <optional>
#include <type_traits>

namespace meridian::inline v0_2 {

/// Returns the product; absent if it leaves the range of the type.
template <std::integral Integer>
[[nodiscard]] constexpr std::optional<Integer> checkedProduct(Integer left,
                                                              std::type_identity_t<Integer> right) noexcept {
  Integer product = 0;
  if (__builtin_mul_overflow(left, right, &product)) return std::nullopt;
  return product;
}

/// Returns the sum; absent if it leaves the range of the type.
template <std::integral Integer>
[[nodiscard]] constexpr std::optional<Integer> checkedSum(Integer left, std::type_identity_t<Integer> right) noexcept {
  Integer sum = 0;
  if (__builtin_add_overflow(left, right, &sum)) return std::nullopt;
  return sum;
}

/// Returns the number truncated toward zero; absent if it is not finite or leaves the signed 64-bit range.
[[nodiscard]] constexpr std::optional<std::int64_t> truncatedInteger(double number) noexcept {
  constexpr double limit = 9223372036854775808.0;        // 2^63, the first double beyond the range; -2^63 is within
  const bool fits = number >= -limit && number < limit;  // false for NaN
  if (!fits) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

/// 2^64, the first double beyond the unsigned 64-bit range.
inline constexpr double beyondUnsignedRange = 18446744073709551616.0;

/// Returns the number truncated toward zero; absent if it is negative, not finite, or beyond the unsigned 64-bit range.
[[nodiscard]] constexpr std::optional<std::uint64_t> truncatedUnsignedInteger(double number) noexcept {
  const bool fits = number >= 0 && number < beyondUnsignedRange;  // false for NaN
  if (!fits) return std::nullopt;
  return static_cast<std::uint64_t>(number);
}

/// Returns the greatest common divisor of two positive numbers; of 0 and a number, that number. If one of the two is
/// negative, returns the greater of them: stored settings were reduced by this rule, which assumes positive terms.
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
