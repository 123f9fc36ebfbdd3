/// \file
/// Numbers read from decimal text: the double nearest to the text, and the text's exact integer value. For example:
///
///     const auto number = DecimalNumber::fromText("9007199254740993");  // 2^53 + 1
///     number->doubleValue();   // 9007199254740992.0
///     number->integerValue();  // 9007199254740993
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// A number as decimal text states it. Its double is correctly rounded and always finite. Its integer value is that of
/// the text: exact where a double no longer is, from 2^53 on, and unaffected by the double's rounding
/// ("0.99999999999999999999" is the double 1 and the integer 0).
class DecimalNumber {
 public:
  constexpr DecimalNumber() noexcept = default;
  /// Makes a number of a finite double.
  constexpr explicit DecimalNumber(double number) noexcept : DecimalNumber(number, saturatedInteger(number)) {}
  /// Makes a number of its double and its integer value, which are not compared.
  constexpr DecimalNumber(double number, std::int64_t integer) noexcept : double_(number), integer_(integer) {}

  /// Reads a whole text: an optional sign, digits with an optional point before, among or after them, an optional
  /// exponent ("e" or "E", an optional sign, digits), and nothing else: no blank, comma, "inf", "nan" or "0x". Returns
  /// nothing for any other text and for a number too large for a finite double; one too small for a double is zero.
  [[nodiscard]] MERIDIAN_API static std::optional<DecimalNumber> fromText(std::string_view text) noexcept;

  [[nodiscard]] constexpr double doubleValue() const noexcept { return double_; }

  /// Returns the number truncated toward zero and clamped to the signed 64-bit range.
  [[nodiscard]] constexpr std::int64_t integerValue() const noexcept { return integer_; }

  /// Returns whether the double alone is enough: whether its own integer value is the number's.
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
