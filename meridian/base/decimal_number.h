// Numbers read from decimal texts: the double nearest to the text, and the text's exact integer value.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// A number as a decimal text gives it. Its double is correctly rounded and always finite. Its integer value is that
/// of the text, which the double cannot hold from 2^53 on, and which the double may have been rounded up to
/// ("0.99999999999999999999" is the double 1 and the integer 0).
class DecimalNumber {
 public:
  constexpr DecimalNumber() noexcept = default;
  /// A number that is just this double, which is finite.
  constexpr explicit DecimalNumber(double number) noexcept : DecimalNumber(number, saturatedInteger(number)) {}
  /// A number by its double and its integer value, which nothing holds against each other.
  constexpr DecimalNumber(double number, std::int64_t integer) noexcept : double_(number), integer_(integer) {}

  /// Reads a whole text: an optional sign, digits with an optional point among, before or behind them, an optional
  /// exponent ("e" or "E", an optional sign, digits), and nothing else: no blank, comma, "inf", "nan" or "0x". Absent
  /// for anything else, and for a number too large for a finite double; one too small for a double is zero.
  [[nodiscard]] MERIDIAN_API static std::optional<DecimalNumber> fromText(std::string_view text) noexcept;

  [[nodiscard]] constexpr double doubleValue() const noexcept { return double_; }

  /// Truncated toward zero, and limited to the signed 64-bit range.
  [[nodiscard]] constexpr std::int64_t integerValue() const noexcept { return integer_; }

  /// Whether the double says all there is: whether its own integer value is the number's.
  [[nodiscard]] constexpr bool isPlain() const noexcept { return integer_ == saturatedInteger(double_); }

  friend constexpr bool operator==(const DecimalNumber&, const DecimalNumber&) noexcept = default;

 private:
  [[nodiscard]] static constexpr std::int64_t saturatedInteger(double number) noexcept {
    return truncatedInteger(number).value_or(number < 0 ? INT64_MIN : INT64_MAX);
  }

  double double_ = 0;
  std::int64_t integer_ = 0;
};

}  // namespace meridian::inline v0_2
