/// \file
/// Split URLs as text into their parts (RFC 3986), and percent-encode paths. For example:
///
///     splitUrl("https://host/a%20b?x=1")->path;  // "/a%20b"
///     percentDecoded("/a%20b");                  // "/a b"
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace meridian::inline v0_2 {

/// The parts of a URL, still encoded, as views into the text.
struct UrlText {
  std::string_view scheme;
  /// What follows "//"; may be empty. Absent without "//".
  std::optional<std::string_view> authority;
  std::string_view path;
  /// The query and the fragment, including their leading "?" and "#"; empty if there are none.
  std::string_view afterPath;
};

/// Splits a text that begins with a scheme and ":"; absent if it does not. Only the scheme's characters are checked.
[[nodiscard]] std::optional<UrlText> splitUrl(std::string_view text) noexcept;

/// Returns true if all characters of the authority, path, query and fragment are valid there (RFC 3986). The text in
/// the brackets of an IP address is not parsed further.
[[nodiscard]] bool isWellFormed(const UrlText& url) noexcept;

/// Returns the text with its "%2F" sequences decoded. A "%" without two hexadecimal digits after it is kept.
[[nodiscard]] std::string percentDecoded(std::string_view text);

/// Returns the path as a URL spells it, with every byte that is not valid in a URL's path as "%" and two digits.
[[nodiscard]] std::string percentEncodedPath(std::string_view path);

}  // namespace meridian::inline v0_2
