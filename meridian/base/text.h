// Text rules for UTF-8: lower-casing, trimming, and comparing without regard to case, by Unicode's rules.
//
// Every function takes any bytes. Where they are valid UTF-8 the Unicode rules apply; each byte that is not part of a
// valid sequence (a stray or overlong sequence, a surrogate, a truncated character) stands for itself: it is never
// changed, dropped or matched by anything but the same byte. Text that is all ASCII takes a fast path.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The text with every character lower-cased by its full, context-free Unicode mapping, whatever the locale:
/// "ProRes" gives "prores", "ÉTÉ" gives "été". U+0130 (capital I with dot) gives "i" and U+0307, so it never turns into
/// a plain "i"; a final sigma is not treated apart, so that the pieces of a text lower-case as the whole does.
[[nodiscard]] MERIDIAN_API std::string lowercased(std::string_view text);

/// The part of `text` without white space and new lines at both ends (Unicode's White_Space property: blanks, tabs,
/// line ends, U+0085, U+00A0, U+2000 to U+200A, U+2028, U+3000 ...). A view into `text`; empty when nothing is left.
[[nodiscard]] inline std::string_view trimmed(std::string_view text) noexcept;

/// The text's full Unicode case folding, the form in which texts that differ only in case are equal:
/// "STRASSE" and "straße" both give "strasse". No other normalisation: a composed and a decomposed "é" stay different.
[[nodiscard]] MERIDIAN_API std::string caseFolded(std::string_view text);

/// Whether the two texts have the same case folding.
[[nodiscard]] MERIDIAN_API bool equalsIgnoringCase(std::string_view left, std::string_view right);

/// Whether the case folding of `piece` occurs in that of `text`, whole characters only. Every text contains the empty
/// one. Takes time in proportion to the product of both lengths in the worst case: made for pieces as short as names.
[[nodiscard]] MERIDIAN_API bool containsIgnoringCase(std::string_view text, std::string_view piece);

/// Whether all of `text` is valid UTF-8 (no overlong sequences, surrogates or truncated characters).
[[nodiscard]] MERIDIAN_API bool isValidUtf8(std::string_view text) noexcept;

/// The columns that the text takes on a terminal: two for a wide character, none for one that combines with the
/// character before it, one for every other and for each byte that is no valid UTF-8.
[[nodiscard]] MERIDIAN_API std::size_t displayWidth(std::string_view text) noexcept;

/// A character of a text, or a byte that is part of none.
struct TextUnit {
  /// The character's code point, or the byte.
  char32_t value = 0;
  /// Bytes that it takes in the text.
  std::size_t length = 1;
  bool isCharacter = false;
};

/// The unit at the beginning of a text that is not empty.
[[nodiscard]] MERIDIAN_API TextUnit firstUnit(std::string_view text) noexcept;

namespace detail {

/// `trimmed` for any text.
[[nodiscard]] MERIDIAN_API std::string_view trimmedAtBothEnds(std::string_view text) noexcept;

}  // namespace detail

inline std::string_view trimmed(std::string_view text) noexcept {
  // Nearly every text begins and ends with a visible ASCII character.
  const auto isVisible = [](char c) { return c > ' ' && c < '\x7f'; };
  if (!text.empty() && isVisible(text.front()) && isVisible(text.back())) return text;
  return detail::trimmedAtBothEnds(text);
}

}  // namespace meridian::inline v0_2
