/// \file
/// Classes of ASCII characters, the same in every locale; bytes outside ASCII belong to none.
#pragma once

namespace meridian::inline v0_2::detail {

[[nodiscard]] constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

[[nodiscard]] constexpr bool isUppercaseLetter(char c) noexcept { return c >= 'A' && c <= 'Z'; }

[[nodiscard]] constexpr bool isLetter(char c) noexcept { return isUppercaseLetter(c) || (c >= 'a' && c <= 'z'); }

[[nodiscard]] constexpr bool isAsciiWhiteSpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Returns the lower-case form of an ASCII letter, and any other character unchanged.
[[nodiscard]] constexpr char lowercasedAscii(char c) noexcept {
  return isUppercaseLetter(c) ? static_cast<char>(c + ('a' - 'A')) : c;
}

}  // namespace meridian::inline v0_2::detail
