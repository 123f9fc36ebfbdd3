#include "meridian/base/numbers.h"

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): so is strtod_l

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2 {
namespace {

template <typename Number>
std::string shortestText(Number number) {
  if (std::isnan(number)) return "nan";  // to_chars would write its sign

  // Outside these bounds the digits are mostly zeros. The upper bound is that of ECMAScript's Number::toString.
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

/// Returns the "C" locale, independent of the process locale.
locale_t cLocale() noexcept {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

float parsed(const char* text, char** end, float /*type*/) noexcept { return strtof_l(text, end, cLocale()); }
double parsed(const char* text, char** end, double /*type*/) noexcept { return strtod_l(text, end, cLocale()); }

template <typename Number>
std::optional<Number> numberFromText(std::string_view text) noexcept {
  // strtod would skip leading white space.
  if (text.empty() || detail::isAsciiWhiteSpace(text.front())) return std::nullopt;
  // strtod needs a NUL after the text. Most numbers are short enough not to allocate memory; for a long text, running
  // out of it terminates the process.
  std::array<char, 64> shortText;  // NOLINT(cppcoreguidelines-pro-type-member-init): only what is copied is read
  std::string longText;
  const char* begin = shortText.data();
  if (text.size() < shortText.size()) {
    *std::ranges::copy(text, shortText.begin()).out = '\0';
  } else {
    longText = text;
    begin = longText.c_str();
  }
  char* end = nullptr;
  const Number number = parsed(begin, &end, Number{});
  if (end != begin + text.size()) return std::nullopt;
  return number;
}

}  // namespace

std::string shortestDecimalText(float number) { return shortestText(number); }

std::string shortestDecimalText(double number) { return shortestText(number); }

std::string plainDecimalText(double number) {
  std::string text = shortestText(number);
  if (text.ends_with(".0")) text.resize(text.size() - 2);
  return text;
}

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
  // from_chars rejects "+", but would accept a "-" after it.
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

}  // namespace meridian::inline v0_2
