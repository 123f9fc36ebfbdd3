/// \file
/// Text rules for UTF-8: lower-casing, trimming, and comparing without regard to case, by Unicode's rules, in every
/// locale. For example:
///
///     lowercased("ProRes ÉTÉ");                   // "prores été"
///     trimmed("\u3000 clip.mov\n");               // "clip.mov"
///     containsIgnoringCase("Straße 7", "STRASSE");  // true
///
/// Every function accepts any bytes. A byte that is not part of a valid UTF-8 character (a stray or truncated sequence,
/// an overlong form, a surrogate) is never changed or removed, and is equal to the same byte alone. ASCII text has a
/// fast path.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Lower-cases every character by its full, context-free Unicode mapping: "ProRes" gives "prores", "ÉTÉ" gives "été".
/// U+0130 (capital I with dot) gives "i" and U+0307, so it is never equal to a plain "i". A final sigma is not special,
/// so that the pieces of a text lower-case as the whole does.
[[nodiscard]] MERIDIAN_API std::string lowercased(std::string_view text);

/// Returns a view of `text` without the white space at both ends (Unicode's White_Space property: spaces, tabs,
/// newlines, U+0085, U+00A0, U+2000 to U+200A, U+2028, U+3000 ...). Empty if nothing is left.
[[nodiscard]] inline std::string_view trimmed(std::string_view text) noexcept;

/// Returns the text's full Unicode case folding, which is the same for texts that differ only in case: "STRASSE" and
/// "straße" both give "strasse". Nothing else is normalised: a composed and a decomposed "é" stay different.
[[nodiscard]] MERIDIAN_API std::string caseFolded(std::string_view text);

/// Returns true if the two texts have the same case folding.
[[nodiscard]] MERIDIAN_API bool equalsIgnoringCase(std::string_view left, std::string_view right);

/// Returns true if the case folding of `piece` occurs in that of `text`, as whole characters. Every text contains the
/// empty one. O(text * piece) in the worst case; made for pieces as short as names.
[[nodiscard]] MERIDIAN_API bool containsIgnoringCase(std::string_view text, std::string_view piece);

/// Returns true if all of `text` is valid UTF-8 (no overlong forms, surrogates or truncated characters).
[[nodiscard]] MERIDIAN_API bool isValidUtf8(std::string_view text) noexcept;

/// Returns the number of columns that the text fills on a terminal: two for a wide character, none for one that
/// combines with the character before it, one for any other and for each byte that is not valid UTF-8.
[[nodiscard]] MERIDIAN_API std::size_t displayWidth(std::string_view text) noexcept;

/// A character of a text, or a byte that is not part of a valid character.
struct TextUnit {
  /// The character's code point, or the byte.
  char32_t value = 0;
  /// Its length in bytes, 1 to 4.
  std::size_t length = 1;
  bool isCharacter = false;
};

/// Returns the first unit of the text, which must not be empty.
[[nodiscard]] MERIDIAN_API TextUnit firstUnit(std::string_view text) noexcept;

namespace detail {

/// Returns what `trimmed` returns, for any text.
[[nodiscard]] MERIDIAN_API std::string_view trimmedAtBothEnds(std::string_view text) noexcept;

}  // namespace detail

inline std::string_view trimmed(std::string_view text) noexcept {
  // Nearly every text begins and ends with a visible ASCII character.
  const auto isVisible = [](char c) { return c > ' ' && c < '\x7f'; };
  if (!text.empty() && isVisible(text.front()) && isVisible(text.back())) return text;
  return detail::trimmedAtBothEnds(text);
}

}  // namespace meridian::inline v0_2
