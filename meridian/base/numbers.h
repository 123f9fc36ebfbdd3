/// \file
/// Numbers as text and back, independent of the process locale. For example:
///
///     shortestDecimalText(23.976F)  // "23.976"
///     fixedDecimalText(23.976, 2)   // "23.98"
///     doubleFromText("0x1.8p3")     // 12.0
///     doubleFromText("1,5")         // std::nullopt: no locale makes the comma a decimal point
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Returns the shortest decimal text that reads back as the same number: "30.0", "23.976", "100000.0", "0.0001". Has a
/// decimal point and no exponent from 1e-7 up to, not including, 1e21, and an exponent outside ("1e+21", "1e-08"). A
/// number that is not finite gives "inf", "-inf" or "nan"; "-0.0" keeps its sign.
[[nodiscard]] MERIDIAN_API std::string shortestDecimalText(float number);
[[nodiscard]] MERIDIAN_API std::string shortestDecimalText(double number);

/// Returns the same without the ".0" of a whole number: "1920", "23.976".
[[nodiscard]] MERIDIAN_API std::string plainDecimalText(double number);

/// Returns the number with this many decimals (clamped to 0 to 100), correctly rounded, as C's "%.2f" does in the "C"
/// locale: 23.976 with two decimals is "23.98". A number that is not finite gives "inf", "-inf" or "nan".
[[nodiscard]] MERIDIAN_API std::string fixedDecimalText(double number, int decimals);

/// Read a whole text as a floating-point number by the grammar of C's `strtof` and `strtod` in the "C" locale: an
/// optional sign, then decimal digits with an optional point and exponent, or a hexadecimal number ("0x1.8p3"), or
/// "inf", "infinity", "nan", "nan(...)", in any case. The number is correctly rounded; one that is too large becomes
/// infinite, one that is too small zero. Absent for anything else: an empty text, white space anywhere, a comma, a NUL.
[[nodiscard]] MERIDIAN_API std::optional<float> floatFromText(std::string_view text) noexcept;
[[nodiscard]] MERIDIAN_API std::optional<double> doubleFromText(std::string_view text) noexcept;

/// Reads a whole text as a decimal integer: an optional "+" or "-", then digits. Absent for anything else and for a
/// number outside the signed 64-bit range.
[[nodiscard]] MERIDIAN_API std::optional<std::int64_t> integerFromText(std::string_view text) noexcept;

}  // namespace meridian::inline v0_2
