/// \file
/// Ratios of two numbers: the exact form of frame rates and aspect ratios. For example:
///
///     constexpr MediaRational ntsc{30000, 1001};
///     ntsc.rawValue()                                        // 29.97002997...
///     NumericRational{1920, 1080} * NumericRational{1, 2}    // 8/9
///     checkedProduct(NumericRational{INT64_MAX, 1}, {2, 1})  // std::nullopt: leaves 64 bits
///     inLowestTerms({50, -4})                                // -25/2
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <optional>
#include <string>

#include "meridian/base/combined_hash.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/export.h"
#include "meridian/media/size.h"

namespace meridian::inline v0_2 {

/// A ratio: two terms of the number type `RawValue`.
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

/// A ratio of two integers, stored as given: only calculations reduce. A denominator of 0 makes the ratio undefined.
///
/// Reducing divides both terms by their `gcd` and never changes their signs; 0 over anything becomes 0/1. It assumes
/// positive terms: with a negative one, `gcd` is the greater term and the division truncates, so that -3/2 reduces to
/// -1/1 and 4/-2 to 1/0. Stored settings depend on that.
///
/// `fromSize`, `*`, `/` and `safeQuotient` terminate the process if a term leaves the signed 64-bit range. Their
/// checked siblings, `checkedFromSize`, `checkedProduct` and `checkedQuotient`, return nothing instead.
struct NumericRational {
  using RawValue = std::int64_t;

  std::int64_t numerator = 0;
  std::int64_t denominator = 1;

  /// Returns width over height, each truncated toward zero. Absent if one is not finite or leaves the signed 64-bit
  /// range.
  [[nodiscard]] static constexpr std::optional<NumericRational> checkedFromSize(const Size& size) noexcept {
    const auto width = truncatedInteger(size.width);
    const auto height = truncatedInteger(size.height);
    if (!width || !height) return std::nullopt;
    return NumericRational{*width, *height};
  }

  /// Returns what `checkedFromSize` does; terminates the process where that is absent.
  [[nodiscard]] static constexpr NumericRational fromSize(const Size& size) {
    const auto ratio = checkedFromSize(size);
    if (!ratio) detail::sizeOutOfRange(size);
    return *ratio;
  }

  /// Returns the reduced product; with the denominator 0 it is not reduced. Absent if a term, before reducing, leaves
  /// the signed 64-bit range.
  [[nodiscard]] friend constexpr std::optional<NumericRational> checkedProduct(const NumericRational& left,
                                                                               const NumericRational& right) noexcept {
    const auto numerators = checkedProduct(left.numerator, right.numerator);
    const auto denominators = checkedProduct(left.denominator, right.denominator);
    if (!numerators || !denominators) return std::nullopt;
    const NumericRational product{*numerators, *denominators};
    return product.denominator == 0 ? product : product.reduced();
  }

  /// Returns the product with the inverse of `right`, as `checkedProduct` does.
  [[nodiscard]] friend constexpr std::optional<NumericRational> checkedQuotient(const NumericRational& left,
                                                                                const NumericRational& right) noexcept {
    return checkedProduct(left, NumericRational{right.denominator, right.numerator});
  }

  /// Return what `checkedProduct` and `checkedQuotient` do; terminate the process where those are absent.
  friend constexpr NumericRational operator*(const NumericRational& left, const NumericRational& right) {
    return orTerminate(checkedProduct(left, right), "*", left, right);
  }
  friend constexpr NumericRational operator/(const NumericRational& left, const NumericRational& right) {
    return orTerminate(checkedQuotient(left, right), "/", left, right);
  }

  /// Returns the quotient as a double; absent if its denominator is 0. Terminates the process where `checkedQuotient`
  /// is absent.
  [[nodiscard]] constexpr std::optional<double> safeQuotient(const NumericRational& rhs) const {
    const NumericRational quotient = orTerminate(checkedQuotient(*this, rhs), "safeQuotient", *this, rhs);
    if (quotient.denominator == 0) return std::nullopt;
    return static_cast<double>(quotient.numerator) / static_cast<double>(quotient.denominator);
  }

  /// Compares by rules that stored settings depend on. Equal numerators make two ratios equal whatever their
  /// denominators are: 1/2 == 1/3. Otherwise ratios with the denominator 0 equal each other and nothing else, and the
  /// rest compare reduced. So this is not an equivalence relation: 2/4 == 1/2 and 1/2 == 1/3, yet 2/4 != 1/3.
  friend constexpr bool operator==(const NumericRational& left, const NumericRational& right) noexcept {
    if (left.numerator == right.numerator) return true;
    if (left.denominator == 0) return right.denominator == 0;
    if (right.denominator == 0) return false;
    const NumericRational reducedLeft = left.reduced();
    const NumericRational reducedRight = right.reduced();
    return reducedLeft.numerator == reducedRight.numerator && reducedLeft.denominator == reducedRight.denominator;
  }

 private:
  [[nodiscard]] static constexpr NumericRational orTerminate(const std::optional<NumericRational>& result,
                                                             const char* operation, const NumericRational& left,
                                                             const NumericRational& right) {
    if (!result) detail::rationalOverflow(operation, left, right);
    return *result;
  }

  [[nodiscard]] constexpr NumericRational reduced() const noexcept {
    if (numerator == 0) return {0, 1};
    const std::int64_t divisor = gcd(numerator, denominator);
    if (divisor < 2) return *this;
    return {numerator / divisor, denominator / divisor};
  }
};

/// A ratio of two doubles, such as the sides of an image.
struct CGFloatRational {
  using RawValue = double;

  double numerator = 0;
  double denominator = 1;

  /// Returns this ratio divided by the other; absent if the denominator of the result is exactly 0.
  [[nodiscard]] constexpr std::optional<double> safeQuotient(const CGFloatRational& rhs) const noexcept {
    const double divisor = denominator * rhs.numerator;
    if (divisor == 0) return std::nullopt;
    return (numerator * rhs.denominator) / divisor;
  }

  friend constexpr bool operator==(const CGFloatRational&, const CGFloatRational&) = default;
};

/// A rate or a duration as a ratio of two integers, such as 30000/1001. It is stored as given; two are equal if both
/// terms are.
struct MediaRational {
  /// The type of the terms; `rawValue()` is the quotient.
  using RawValue = std::int64_t;

  std::int64_t numerator = 0;
  std::int64_t denominator = 1;

  /// Returns a whole number over 1, and any other in millionths, truncated toward zero and not reduced: 29.97 is
  /// 29970000/1000000, and 1e-9 is 0/1000000. Absent for 0, -2^63 and numbers that are not finite, and if the number,
  /// or a fraction's millionths, leave the signed 64-bit range.
  [[nodiscard]] static constexpr std::optional<MediaRational> fromRawValue(double rawValue) noexcept {
    const auto whole = truncatedInteger(rawValue);
    if (rawValue == 0 || !whole || *whole == std::numeric_limits<std::int64_t>::min()) return std::nullopt;
    if (static_cast<double>(*whole) == rawValue) return MediaRational{*whole, 1};
    constexpr std::int64_t scale = 1'000'000;
    const auto scaled = truncatedInteger(rawValue * static_cast<double>(scale));
    if (!scaled) return std::nullopt;
    return MediaRational{*scaled, scale};
  }

  /// Returns timeValue/timeScale; absent if the scale is 0.
  [[nodiscard]] static constexpr std::optional<MediaRational> fromTime(std::int64_t timeValue,
                                                                       std::int64_t timeScale) noexcept {
    if (timeScale == 0) return std::nullopt;
    return MediaRational{timeValue, timeScale};
  }

  /// Returns the quotient of the terms; infinite or NaN if the denominator is 0. `fromRawValue` generally does not
  /// restore the ratio: 30000/1001 becomes 29970029/1000000, and truncation may lose another millionth each time
  /// (267.799 becomes 267.798999).
  [[nodiscard]] constexpr double rawValue() const noexcept {
    using Limits = std::numeric_limits<double>;
    if (denominator != 0) return static_cast<double>(numerator) / static_cast<double>(denominator);
    if (numerator == 0) return Limits::quiet_NaN();
    return numerator > 0 ? Limits::infinity() : -Limits::infinity();
  }

  /// Returns the terms as a ratio to calculate with.
  [[nodiscard]] constexpr NumericRational rational() const noexcept { return {numerator, denominator}; }

  /// Returns the quotient with two decimals: "29.97".
  [[nodiscard]] MERIDIAN_API std::string roundedDecimalString() const;

  friend constexpr bool operator==(const MediaRational&, const MediaRational&) = default;
};

/// Returns the ratio in lowest terms with a positive denominator; absent if its denominator is 0 or a term cannot be
/// negated.
[[nodiscard]] constexpr std::optional<MediaRational> inLowestTerms(const MediaRational& ratio) noexcept {
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  if (ratio.denominator == 0 || ratio.numerator == least || ratio.denominator == least) return std::nullopt;
  const std::int64_t divisor = std::gcd(ratio.numerator, ratio.denominator) * (ratio.denominator < 0 ? -1 : 1);
  return MediaRational{ratio.numerator / divisor, ratio.denominator / divisor};
}

static_assert(RatioRepresentable<NumericRational> && RatioRepresentable<CGFloatRational> &&
              RatioRepresentable<MediaRational>);

}  // namespace meridian::inline v0_2

/// Hashes every ratio alike: a chain of equal ratios joins any two (1/2 == 1/0 == 5/0 == 5/7), so no other hash agrees
/// with `==`. In a container, use the two terms as the key instead.
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
