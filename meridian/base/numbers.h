// Numbers as text, the same whatever the process locale is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The shortest decimal text that reads back as the same number, with a point: "30.0", "23.976", "100000.0", "0.0001".
/// Plain form from 1e-7 up to, not including, 1e21, where a large whole number has all its digits; beyond, an exponent
/// ("1e+21", "1e-08"). "inf", "-inf" and "nan" where the number is not finite; "-0.0" keeps its sign.
[[nodiscard]] MERIDIAN_API std::string shortestDecimalText(float number);
[[nodiscard]] MERIDIAN_API std::string shortestDecimalText(double number);

/// Returns the same without the ".0" of a whole number: "1920", "23.976".
[[nodiscard]] MERIDIAN_API std::string plainDecimalText(double number);

/// The number with this many decimals, at least 0 and at most 100, correctly rounded: 23.976 with two is "23.98". As
/// C's "%.2f" in the "C" locale, whatever the process locale is; also "inf", "-inf", "nan".
[[nodiscard]] MERIDIAN_API std::string fixedDecimalText(double number, int decimals);

/// Reads a whole text as a floating-point number by the grammar of C's `strtof` and `strtod` in the "C" locale: an
/// optional sign, then decimal digits with an optional point and exponent, or a hexadecimal number ("0x1.8p3"), or
/// "inf", "infinity", "nan", "nan(...)", in any case. Correctly rounded; too large a number is infinite, too small a
/// one zero, as in C. Absent for anything else: an empty text, white space anywhere, a comma, characters left over.
[[nodiscard]] MERIDIAN_API std::optional<float> floatFromText(std::string_view text) noexcept;
[[nodiscard]] MERIDIAN_API std::optional<double> doubleFromText(std::string_view text) noexcept;

/// Reads a whole text as a decimal integer: an optional "+" or "-", then digits and nothing else. Absent for anything
/// else and for a number outside the signed 64-bit range.
[[nodiscard]] MERIDIAN_API std::optional<std::int64_t> integerFromText(std::string_view text) noexcept;

}  // namespace meridian::inline v0_2
