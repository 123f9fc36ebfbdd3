// URLs as text: their parts as RFC 3986 cuts them, and percent-encoding.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace meridian::inline v0_2 {

/// The parts of a URL as they are written; each a view into the text.
struct UrlText {
  std::string_view scheme;
  /// Absent where no "//" follows the scheme; it may be empty.
  std::optional<std::string_view> authority;
  std::string_view path;
  /// The query and the fragment with the marks "?" and "#" that begin them; empty where there are none.
  std::string_view behindPath;
};

/// Cuts a text that begins with a scheme and ":"; absent for one that does not. The parts' characters are not looked
/// at.
[[nodiscard]] std::optional<UrlText> splitUrl(std::string_view text) noexcept;

/// Whether RFC 3986 allows each part's characters. Within the brackets of an IP address they are not looked at closer.
[[nodiscard]] bool isWellFormed(const UrlText& url) noexcept;

/// The bytes that a text stands for. A "%" without two hexadecimal digits behind it stands for itself.
[[nodiscard]] std::string percentDecoded(std::string_view text);

/// The path as it stands in a URL: every byte that a path may not show there becomes "%" and two digits.
[[nodiscard]] std::string percentEncodedPath(std::string_view path);

}  // namespace meridian::inline v0_2
