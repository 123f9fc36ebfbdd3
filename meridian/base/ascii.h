/// \file
/// Classes of ASCII characters, the same in every locale. Bytes outside ASCII are in none of them. For example:
///
///     isDigit('7');            // true
///     lowercasedAscii('\xc9');  // '\xc9'
#pragma once

namespace meridian::inline v0_2::detail {

/// Returns true for "0" to "9".
[[nodiscard]] constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Returns true for "A" to "Z".
[[nodiscard]] constexpr bool isUppercaseLetter(char c) noexcept { return c >= 'A' && c <= 'Z'; }

/// Returns true for "A" to "Z" and "a" to "z".
[[nodiscard]] constexpr bool isLetter(char c) noexcept { return isUppercaseLetter(c) || (c >= 'a' && c <= 'z'); }

/// Returns true for the space, tab, newline, vertical tab, form feed and carriage return.
[[nodiscard]] constexpr bool isAsciiWhiteSpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Returns true for the space and tab.
[[nodiscard]] constexpr bool isAsciiBlank(char c) noexcept { return c == ' ' || c == '\t'; }

/// Returns true for the characters that end lines: line feed and carriage return.
[[nodiscard]] constexpr bool isNewline(char c) noexcept { return c == '\n' || c == '\r'; }

/// Returns the lower-case form of an ASCII letter, and any other byte unchanged.
[[nodiscard]] constexpr char lowercasedAscii(char c) noexcept {
  return isUppercaseLetter(c) ? static_cast<char>(c + ('a' - 'A')) : c;
}

}  // namespace meridian::inline v0_2::detail
