// Rules for the names of files: what is cut off them, and the characters that a tape or the desktop does not take.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The text without the prefix, or as it is where it does not begin with it. Compares bytes; gives a view into `text`.
[[nodiscard]] constexpr std::string_view deletingPrefix(std::string_view text, std::string_view prefix) noexcept {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

/// The same at the text's end.
[[nodiscard]] constexpr std::string_view deletingSuffix(std::string_view text, std::string_view suffix) noexcept {
  return text.ends_with(suffix) ? text.substr(0, text.size() - suffix.size()) : text;
}

/// A set of characters: those of a text, or all but those. It refers to the text, which must outlive it.
class CharacterSet {
 public:
  /// The characters of a UTF-8 text.
  constexpr explicit CharacterSet(std::string_view characters) noexcept : characters_(characters) {}

  /// All that is not in this set.
  [[nodiscard]] constexpr CharacterSet inverted() const noexcept {
    CharacterSet result(characters_);
    result.isInverted_ = !isInverted_;
    return result;
  }

  /// Whether the set holds one character, given as its UTF-8 bytes. A byte that is part of no character is in no text,
  /// so that sets of listed characters do not hold it and inverted ones do.
  [[nodiscard]] constexpr bool contains(std::string_view character) const noexcept {
    const bool isStray = character.size() == 1 && static_cast<unsigned char>(character.front()) >= 0x80;
    const bool isListed = !isStray && characters_.find(character) != std::string_view::npos;
    return isListed != isInverted_;
  }

 private:
  std::string_view characters_;
  bool isInverted_ = false;
};

inline constexpr std::string_view standardIllegalLtfsCharacters = "*?<>\"|\\";

namespace detail {

inline constexpr auto legalLtfsCharacters = [] {
  std::array<char, '~' - ' ' + 1 - standardIllegalLtfsCharacters.size()> legal{};
  std::size_t count = 0;
  for (char c = ' '; c <= '~'; ++c) {
    if (standardIllegalLtfsCharacters.find(c) == std::string_view::npos) legal[count++] = c;
  }
  return legal;
}();

}  // namespace detail

/// The 88 characters of ASCII from the blank to "~" without the illegal ones. "/" and ":" are among them on purpose:
/// only the desktop forbids them.
inline constexpr std::string_view legalLtfsCharacters(detail::legalLtfsCharacters.data(),
                                                      detail::legalLtfsCharacters.size());
inline constexpr CharacterSet validLtfsCharacters(legalLtfsCharacters);
inline constexpr CharacterSet invalidLtfsCharacters = validLtfsCharacters.inverted();

inline constexpr std::string_view disallowedMacOSFilesystemCharacters = "/:";
inline constexpr CharacterSet disallowedMacOSCharacters(disallowedMacOSFilesystemCharacters);

/// The text without the characters of the set, the others in their order and nothing in their place. Whole characters
/// are removed; a byte that is part of none goes with an inverted set alone.
[[nodiscard]] MERIDIAN_API std::string removingDisallowedCharacters(std::string_view text,
                                                                    CharacterSet disallowedCharactersSet);

/// The characters of the set alone.
[[nodiscard]] MERIDIAN_API std::string removingAllExcept(std::string_view text, CharacterSet allowedCharactersSet);

/// The name as a tape takes it: "Café\t1" gives "Caf1".
[[nodiscard]] MERIDIAN_API std::string removingInvalidLtfsCharacters(std::string_view text);

/// The name as the desktop's file system takes it: "a/b: c" gives "ab c".
[[nodiscard]] MERIDIAN_API std::string removingDisallowedMacOSFilesystemCharacters(std::string_view text);

}  // namespace meridian::inline v0_2
