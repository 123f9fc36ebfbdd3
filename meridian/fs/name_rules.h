/// \file
/// Rules for file names: prefixes and suffixes, and the characters that LTFS tapes or the desktop allow. For example:
///
///     removingInvalidLtfsCharacters("Café: 1/2?");              // "Caf: 1/2"
///     removingDisallowedMacOSFilesystemCharacters("Café: 1/2");  // "Café 12"
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Returns the text without the prefix, or all of it if it does not begin with the prefix. Compares bytes; returns a
/// view into `text`.
[[nodiscard]] constexpr std::string_view deletingPrefix(std::string_view text, std::string_view prefix) noexcept {
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

/// Returns the text without the suffix, or all of it if it does not end with the suffix; likewise.
[[nodiscard]] constexpr std::string_view deletingSuffix(std::string_view text, std::string_view suffix) noexcept {
  return text.ends_with(suffix) ? text.substr(0, text.size() - suffix.size()) : text;
}

/// Returns true if a file can have this name: it is not empty, "." or "..", and holds no separator and no NUL byte.
[[nodiscard]] constexpr bool isFileName(std::string_view name) noexcept {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

/// Returns true if the last component of the path is a file name, without a trailing separator, and the path holds no
/// NUL byte. Does not ask the file system.
[[nodiscard]] MERIDIAN_API bool pathNamesFile(std::string_view path) noexcept;

/// A set of characters: those of a text, or all others. Keeps a view of the text, which must outlive the set.
class CharacterSet {
 public:
  /// Makes the set of the characters of a UTF-8 text.
  constexpr explicit CharacterSet(std::string_view characters) noexcept : characters_(characters) {}

  /// Returns the set of everything that is not in this one.
  [[nodiscard]] constexpr CharacterSet inverted() const noexcept {
    CharacterSet result(characters_);
    result.isInverted_ = !isInverted_;
    return result;
  }

  /// Returns true if the set holds the character, given as its UTF-8 bytes. A byte that is not part of a character is
  /// never in a text, so it is only in inverted sets.
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

/// The 88 ASCII characters from space to "~" except the illegal ones. "/" and ":" are legal here: only the desktop
/// forbids them.
inline constexpr std::string_view legalLtfsCharacters(detail::legalLtfsCharacters.data(),
                                                      detail::legalLtfsCharacters.size());
inline constexpr CharacterSet validLtfsCharacters(legalLtfsCharacters);
inline constexpr CharacterSet invalidLtfsCharacters = validLtfsCharacters.inverted();

inline constexpr std::string_view disallowedMacOSFilesystemCharacters = "/:";
inline constexpr CharacterSet disallowedMacOSCharacters(disallowedMacOSFilesystemCharacters);

/// Returns the text without the characters of the set; nothing replaces them. Works on whole characters; a byte that is
/// not part of one is only removed by an inverted set.
[[nodiscard]] MERIDIAN_API std::string removingDisallowedCharacters(std::string_view text,
                                                                    CharacterSet disallowedCharactersSet);

/// Returns only those characters of the text that are in the set.
[[nodiscard]] MERIDIAN_API std::string removingAllExcept(std::string_view text, CharacterSet allowedCharactersSet);

/// Returns the name without the characters that an LTFS tape does not allow: "Café\t1" gives "Caf1".
[[nodiscard]] MERIDIAN_API std::string removingInvalidLtfsCharacters(std::string_view text);

/// Returns the name without the characters that the desktop's file system does not allow: "a/b: c" gives "ab c".
[[nodiscard]] MERIDIAN_API std::string removingDisallowedMacOSFilesystemCharacters(std::string_view text);

}  // namespace meridian::inline v0_2
