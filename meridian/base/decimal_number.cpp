#include "meridian/base/decimal_number.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "meridian/base/ascii.h"
#include "meridian/base/numbers.h"

namespace meridian::inline v0_2 {
namespace {

/// The parts of a decimal text that follows the grammar.
struct DecimalText {
  bool isNegative = false;
  std::string_view whole;
  std::string_view fraction;
  /// With its sign; empty if there is none.
  std::string_view exponent;
};

std::string_view takeDigits(std::string_view& text) noexcept {
  const auto end = std::ranges::find_if_not(text, detail::isDigit);
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(digits.size());
  return digits;
}

std::optional<DecimalText> decimalTextOf(std::string_view text) noexcept {
  DecimalText result;
  result.isNegative = text.starts_with('-');
  if (result.isNegative || text.starts_with('+')) text.remove_prefix(1);
  result.whole = takeDigits(text);
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    result.fraction = takeDigits(text);
  }
  if (result.whole.empty() && result.fraction.empty()) return std::nullopt;
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    const std::string_view exponent = text;
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    if (takeDigits(text).empty()) return std::nullopt;
    result.exponent = exponent;
  }
  if (!text.empty()) return std::nullopt;
  return result;
}

/// Returns the exponent, clamped to what no text in memory can compensate.
std::int64_t exponentOf(const DecimalText& text) noexcept {
  constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / 4;
  if (text.exponent.empty()) return 0;
  const auto exponent = integerFromText(text.exponent);
  if (!exponent) return text.exponent.starts_with('-') ? -limit : limit;
  return std::clamp(*exponent, -limit, limit);
}

/// Returns the digits before the point once the exponent has moved it, clamped to the signed 64-bit range.
std::int64_t integerOf(const DecimalText& text) noexcept {
  constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
  const std::uint64_t limit = text.isNegative ? largest + 1 : largest;
  std::int64_t pending = static_cast<std::int64_t>(text.whole.size()) + exponentOf(text);  // digits before the point
  std::uint64_t integer = 0;
  bool overflows = false;
  const auto append = [&](std::uint64_t digit) {
    overflows = overflows || integer > (limit - digit) / 10;
    if (!overflows) integer = integer * 10 + digit;
  };
  for (const std::string_view digits : {text.whole, text.fraction}) {
    for (const char c : digits) {
      if (pending <= 0) break;
      append(static_cast<std::uint64_t>(c - '0'));
      --pending;
    }
  }
  // The zeros that a large exponent adds leave a zero unchanged and soon overflow any other number.
  for (; pending > 0 && integer != 0 && !overflows; --pending) append(0);
  if (overflows) integer = limit;
  return text.isNegative ? static_cast<std::int64_t>(-integer) : static_cast<std::int64_t>(integer);
}

}  // namespace

std::optional<DecimalNumber> DecimalNumber::fromText(std::string_view text) noexcept {
  const auto parts = decimalTextOf(text);
  if (!parts) return std::nullopt;
  const auto number = doubleFromText(text);
  if (!number || !std::isfinite(*number)) return std::nullopt;
  return DecimalNumber(*number, integerOf(*parts));
}

}  // namespace meridian::inline v0_2
