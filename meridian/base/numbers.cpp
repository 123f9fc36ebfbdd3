#include "meridian/base/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "meridian/base/digits.h"

namespace meridian {
namespace {

template <typename Number>
std::string shortestText(Number number) {
  if (std::isnan(number)) return "nan";  // to_chars would write its sign

  // Beyond these a plain form is mostly zeros. The upper bound is that of ECMAScript's Number::toString as well.
  constexpr Number leastPlain = static_cast<Number>(1e-7);
  constexpr Number firstTooLarge = static_cast<Number>(1e21);
  const Number magnitude = std::fabs(number);
  const bool plain = magnitude == 0 || (magnitude >= leastPlain && magnitude < firstTooLarge);

  // A sign, 21 digits before the point, or 0.0000001 and 17 digits: well within 64 characters.
  std::array<char, 64> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number,
                                          plain ? std::chars_format::fixed : std::chars_format::scientific);
  std::string result(text.data(), end);
  if (plain && result.find('.') == std::string::npos) result += ".0";
  return result;
}

constexpr bool isHexDigit(char c) noexcept {
  return detail::isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// What a sign may stand before, in the form that std::from_chars takes.
struct Magnitude {
  std::string_view digits;
  std::chars_format format = std::chars_format::general;
};

Magnitude magnitudeOf(std::string_view unsignedText) noexcept {
  // After "0x" from_chars would take a sign, "inf" and "nan" as well, which C does not.
  if (unsignedText.size() > 2 && unsignedText[0] == '0' && (unsignedText[1] == 'x' || unsignedText[1] == 'X') &&
      (isHexDigit(unsignedText[2]) || unsignedText[2] == '.')) {
    return {unsignedText.substr(2), std::chars_format::hex};
  }
  return {unsignedText, std::chars_format::general};
}

/// Whether a well-formed number too large or too small for its type is the former: whether its leading digit, other
/// than 0, stands at or before the units place. The numbers between are in range, so nothing finer is needed.
bool isTooLarge(const Magnitude& magnitude) noexcept {
  const bool hex = magnitude.format == std::chars_format::hex;
  const std::size_t exponentMark = magnitude.digits.find_first_of(hex ? "pP" : "eE");
  const std::string_view mantissa = magnitude.digits.substr(0, exponentMark);

  const std::size_t leading = mantissa.find_first_not_of("0.");
  const std::size_t point = mantissa.find('.') == std::string_view::npos ? mantissa.size() : mantissa.find('.');
  const std::int64_t placesPerDigit = hex ? 4 : 1;
  const std::int64_t place = (static_cast<std::int64_t>(point) - static_cast<std::int64_t>(leading)) * placesPerDigit;

  if (exponentMark == std::string_view::npos) return place > 0;
  const std::string_view exponentText = magnitude.digits.substr(exponentMark + 1);
  const bool negative = exponentText.starts_with('-');
  const auto exponent = integerFromText(exponentText);
  if (!exponent) return !negative;  // an exponent beyond 64 bits outweighs any mantissa that fits into memory
  // The exponent is the larger part wherever a sum could overflow, since a place is bounded by the text's length.
  constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / 2;
  if (*exponent > limit || *exponent < -limit) return !negative;
  return place + *exponent > 0;
}

template <typename Number>
std::optional<Number> numberFromText(std::string_view text) noexcept {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || text.front() == '-' || text.front() == '+') return std::nullopt;

  const Magnitude magnitude = magnitudeOf(text);
  // libstdc++ takes two signs in a hexadecimal number's exponent ("0x1p+-1").
  if (magnitude.format == std::chars_format::hex && text.find("+-") != std::string_view::npos) return std::nullopt;
  Number number = 0;
  const char* const last = magnitude.digits.data() + magnitude.digits.size();
  const auto [end, error] = std::from_chars(magnitude.digits.data(), last, number, magnitude.format);
  if (error == std::errc::invalid_argument || end != last) return std::nullopt;
  if (error == std::errc::result_out_of_range) {
    number = isTooLarge(magnitude) ? std::numeric_limits<Number>::infinity() : Number{0};
  }
  return negative ? -number : number;
}

}  // namespace

std::string shortestDecimalText(float number) { return shortestText(number); }

std::string shortestDecimalText(double number) { return shortestText(number); }

std::string fixedDecimalText(double number, int decimals) {
  if (std::isnan(number)) return "nan";
  decimals = std::clamp(decimals, 0, 100);
  // A sign, the 309 digits of the largest double, a point, and the decimals.
  std::array<char, 512> text{};
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals);
  return {text.data(), end};
}

std::optional<float> floatFromText(std::string_view text) noexcept { return numberFromText<float>(text); }

std::optional<double> doubleFromText(std::string_view text) noexcept { return numberFromText<double>(text); }

std::optional<std::int64_t> integerFromText(std::string_view text) noexcept {
  // from_chars takes no "+", and after one no further sign may stand.
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.empty() || !detail::isDigit(text.front())) return std::nullopt;
  }
  std::int64_t number = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, number);
  if (error != std::errc{} || end != last) return std::nullopt;
  return number;
}

}  // namespace meridian
