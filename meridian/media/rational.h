// Ratios of two numbers: the exact form of frame rates and aspect ratios.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>

#include "meridian/base/combined_hash.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/export.h"
#include "meridian/media/size.h"

namespace meridian::inline v0_2 {

/// A ratio: two terms, whose number type the ratio names as `RawValue`.
template <typename Ratio>
concept RatioRepresentable = requires(const Ratio& ratio) {
  typename Ratio::RawValue;
  { ratio.numerator } -> std::convertible_to<typename Ratio::RawValue>;
  { ratio.denominator } -> std::convertible_to<typename Ratio::RawValue>;
};

struct NumericRational;

namespace detail {

[[noreturn]] MERIDIAN_API void rationalOverflow(const char* operation, const NumericRational& left,
                                                const NumericRational& right);
[[noreturn]] MERIDIAN_API void sizeOutOfRange(const Size& size);

}  // namespace detail

/// A ratio of two integers, kept as given: only the operators reduce. The denominator 0 is the undefined value.
///
/// Reducing divides both terms by their `gcd` and never changes their signs; 0 over anything reduces to 0/1. It takes
/// positive terms for granted: where one is negative, `gcd` is the greater of them and the division truncates, so that
/// -3/2 reduces to -1/1 and 4/-2 to 1/0. That is kept on purpose, since stored settings were made by it.
///
/// The operators and `safeQuotient` stop the process where a product leaves the signed 64-bit range.
struct NumericRational {
  using RawValue = std::int64_t;

  std::int64_t numerator = 0;
  std::int64_t denominator = 1;

  /// Width over height, each truncated toward zero. Stops the process when one is not finite or outside the signed
  /// 64-bit range.
  [[nodiscard]] static constexpr NumericRational fromSize(const Size& size) {
    const auto width = truncatedInteger(size.width);
    const auto height = truncatedInteger(size.height);
    if (!width || !height) detail::sizeOutOfRange(size);
    return {*width, *height};
  }

  /// The quotient as a double; absent when it has the denominator 0.
  [[nodiscard]] constexpr std::optional<double> safeQuotient(const NumericRational& rhs) const {
    const NumericRational quotient = crossed(*this, {rhs.denominator, rhs.numerator}, "safeQuotient", rhs);
    if (quotient.denominator == 0) return std::nullopt;
    if (quotient.numerator == 0) return 0.0;
    const NumericRational reduced = quotient.reduced();
    if (reduced.denominator == 0) return std::nullopt;
    return static_cast<double>(reduced.numerator) / static_cast<double>(reduced.denominator);
  }

  /// Two ratios with one numerator are equal whatever their denominators: 1/2 == 1/3, on purpose. Otherwise those with
  /// the denominator 0 equal each other and nothing else, and the rest compare reduced. So this is no equivalence:
  /// 2/4 == 1/2 and 1/2 == 1/3, yet 2/4 != 1/3.
  friend constexpr bool operator==(const NumericRational& left, const NumericRational& right) noexcept {
    if (left.numerator == right.numerator) return true;
    if (left.denominator == 0) return right.denominator == 0;
    if (right.denominator == 0) return false;
    const NumericRational reducedLeft = left.reduced();
    const NumericRational reducedRight = right.reduced();
    return reducedLeft.numerator == reducedRight.numerator && reducedLeft.denominator == reducedRight.denominator;
  }

  /// Reduced; with the denominator 0 as it is.
  friend constexpr NumericRational operator*(const NumericRational& left, const NumericRational& right) {
    return crossed(left, right, "*", right).reducedUnlessUndefined();
  }
  friend constexpr NumericRational operator/(const NumericRational& left, const NumericRational& right) {
    return crossed(left, {right.denominator, right.numerator}, "/", right).reducedUnlessUndefined();
  }

 private:
  /// The terms multiplied with those of `factor`. `right` is the operand to name when that overflows.
  [[nodiscard]] static constexpr NumericRational crossed(const NumericRational& left, const NumericRational& factor,
                                                         const char* operation, const NumericRational& right) {
    const auto numerator = checkedProduct(left.numerator, factor.numerator);
    const auto denominator = checkedProduct(left.denominator, factor.denominator);
    if (!numerator || !denominator) detail::rationalOverflow(operation, left, right);
    return {*numerator, *denominator};
  }

  [[nodiscard]] constexpr NumericRational reduced() const noexcept {
    if (numerator == 0) return {0, 1};
    const std::int64_t divisor = gcd(numerator, denominator);
    if (divisor < 2) return *this;
    return {numerator / divisor, denominator / divisor};
  }
  [[nodiscard]] constexpr NumericRational reducedUnlessUndefined() const noexcept {
    return denominator == 0 ? *this : reduced();
  }
};

/// A ratio of two doubles, such as of an image's sides.
struct CGFloatRational {
  using RawValue = double;

  double numerator = 0;
  double denominator = 1;

  /// This ratio over the other; absent when the denominator of the result is exactly 0.
  [[nodiscard]] constexpr std::optional<double> safeQuotient(const CGFloatRational& rhs) const noexcept {
    const double divisor = denominator * rhs.numerator;
    if (divisor == 0) return std::nullopt;
    return (numerator * rhs.denominator) / divisor;
  }

  friend constexpr bool operator==(const CGFloatRational&, const CGFloatRational&) = default;
};

/// A rate or a duration as a ratio of two integers, such as 30000/1001, kept as given: equal when both terms are.
struct MediaRational {
  /// The type of the terms; `rawValue()` is the quotient.
  using RawValue = std::int64_t;

  std::int64_t numerator = 0;
  std::int64_t denominator = 1;

  /// A whole number over 1, any other in millionths, truncated toward zero and not reduced: 29.97 is 29970000/1000000,
  /// and what is below a millionth 0/1000000.
  /// Absent for 0, for what is not finite, and for what leaves the signed 64-bit range, in millionths too.
  [[nodiscard]] static constexpr std::optional<MediaRational> fromRawValue(double rawValue) noexcept {
    constexpr double limit = 9223372036854775808.0;           // 2^63
    const bool fits = rawValue > -limit && rawValue < limit;  // not so for what is not a number
    if (rawValue == 0 || !fits) return std::nullopt;
    const auto whole = static_cast<std::int64_t>(rawValue);
    if (static_cast<double>(whole) == rawValue) return MediaRational{whole, 1};
    constexpr std::int64_t scale = 1'000'000;
    const auto scaled = truncatedInteger(rawValue * static_cast<double>(scale));
    if (!scaled) return std::nullopt;
    return MediaRational{*scaled, scale};
  }

  /// timeValue/timeScale; absent when the scale is 0.
  [[nodiscard]] static constexpr std::optional<MediaRational> fromTime(std::int64_t timeValue,
                                                                       std::int64_t timeScale) noexcept {
    if (timeScale == 0) return std::nullopt;
    return MediaRational{timeValue, timeScale};
  }

  /// The quotient of the terms; infinite or not a number when the denominator is 0. A quotient read back with
  /// `fromRawValue` is generally another ratio: 30000/1001 comes back as 29970029/1000000, and by truncation a ratio
  /// may lose a millionth each time (267.799 comes back as 267.798999).
  [[nodiscard]] constexpr double rawValue() const noexcept {
    using Limits = std::numeric_limits<double>;
    if (denominator != 0) return static_cast<double>(numerator) / static_cast<double>(denominator);
    if (numerator == 0) return Limits::quiet_NaN();
    return numerator > 0 ? Limits::infinity() : -Limits::infinity();
  }

  /// The terms as a ratio to calculate with.
  [[nodiscard]] constexpr NumericRational rational() const noexcept { return {numerator, denominator}; }

  /// The quotient with two decimals: "29.97".
  [[nodiscard]] MERIDIAN_API std::string roundedDecimalString() const;

  friend constexpr bool operator==(const MediaRational&, const MediaRational&) = default;
};

static_assert(RatioRepresentable<NumericRational> && RatioRepresentable<CGFloatRational> &&
              RatioRepresentable<MediaRational>);

}  // namespace meridian::inline v0_2

/// The same for all ratios: any two are joined by a chain of equal ones (1/2 == 1/0 == 5/0 == 5/7), so no other hash
/// agrees with `==`. For a container keyed by ratios, use the two terms as the key.
template <>
struct std::hash<meridian::NumericRational> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::NumericRational&) const noexcept { return 0; }
};

template <>
struct std::hash<meridian::CGFloatRational> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::CGFloatRational& ratio) const noexcept {
    return meridian::combinedHash(ratio.numerator, ratio.denominator);
  }
};

template <>
struct std::hash<meridian::MediaRational> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::MediaRational& ratio) const noexcept {
    return meridian::combinedHash(ratio.numerator, ratio.denominator);
  }
};
