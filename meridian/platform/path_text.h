// Paths as text: what the platform calls a path's last component and its extension, and the path of a URL.
#pragma once

#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian {

/// The part behind the last separator, separators at the end left aside: "/card/clip.mov" and "/card/clip.mov/" give
/// "clip.mov". Empty for an empty path and for one of separators alone.
[[nodiscard]] MERIDIAN_API std::string_view lastPathComponent(std::string_view path) noexcept;

/// The extension of the last component, without its dot: "mov" for "/card/clip.mov", "gz" for "a.tar.gz". Empty where
/// the only dot begins the name (".mov"), ends it ("clip.") or there is none.
[[nodiscard]] MERIDIAN_API std::string_view pathExtension(std::string_view path) noexcept;

/// The path of a URL as RFC 3986 reads it, percent-decoded: "/a b.mov" for "https://host/a%20b.mov?x=1#t". A text that
/// does not begin with a scheme and "://" is a path already and comes back as it is; a "%" without two hexadecimal
/// digits behind it stands for itself.
[[nodiscard]] MERIDIAN_API std::string pathOfUrl(std::string_view pathOrUrl);

}  // namespace meridian
