/// \file
/// Split and join paths as text. For example:
///
///     lastPathComponent("/card/clip.mov");                // "clip.mov"
///     pathExtension("/card/clip.mov");                    // "mov"
///     appendingPathComponent("/card", "clip.mov");        // "/card/clip.mov"
///
/// Nothing here asks the file system or follows a link. A path holds any bytes; "/" alone separates components, and
/// consecutive or trailing separators count as one. "." and ".." are ordinary components, except in `standardizedPath`.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Returns the path without its trailing separators; empty if it only holds separators.
[[nodiscard]] MERIDIAN_API std::string_view withoutTrailingSeparators(std::string_view path) noexcept;

/// Returns the part after the last separator, ignoring trailing ones: "/card/clip.mov" and "/card/clip.mov/" give
/// "clip.mov". Empty if the path is empty or only holds separators.
[[nodiscard]] MERIDIAN_API std::string_view lastPathComponent(std::string_view path) noexcept;

/// Returns the extension of the last component, without its dot: "mov" for "/card/clip.mov", "gz" for "a.tar.gz". Empty
/// if there is no dot, or the last one begins the name (".mov") or ends it ("clip.").
[[nodiscard]] MERIDIAN_API std::string_view pathExtension(std::string_view path) noexcept;

/// Returns the directory that contains the last component, without trailing separators: "/card" for "/card/clip.mov"
/// and "/card//clip.mov/". "/" for "/clip.mov" and for "/" itself; "." for a bare name ("clip.mov") and for the empty
/// path, so that appending the component again names the same item.
[[nodiscard]] MERIDIAN_API std::string_view deletingLastPathComponent(std::string_view path) noexcept;

/// Returns the path without its extension and the dot before it; keeps trailing separators. Unchanged if
/// `pathExtension` is empty: ".mov", "clip.", "..".
[[nodiscard]] MERIDIAN_API std::string deletingPathExtension(std::string_view path);

/// Returns the path with one or more components appended after a single separator: ("/card", "clip.mov") and
/// ("/card/", "/clip.mov") give "/card/clip.mov". If the path is empty, returns the component without its leading
/// separators; if the component is empty, returns the path unchanged.
[[nodiscard]] MERIDIAN_API std::string appendingPathComponent(std::string_view path, std::string_view component);

/// Returns the components in order, beginning with "/" if the path is absolute: "/", "card", "clip.mov" for
/// "/card//clip.mov/". Empty for the empty path.
[[nodiscard]] MERIDIAN_API std::vector<std::string_view> pathComponents(std::string_view path);

/// Returns the path without "." components, ".." components resolved against the component before them, with single
/// separators and no trailing one. An absolute path stops at the root ("/../a" gives "/a"); a relative path keeps
/// leading ".." components. Returns "." if nothing is left of a non-empty relative path.
[[nodiscard]] MERIDIAN_API std::string standardizedPath(std::string_view path);

/// Returns the percent-decoded path of a URL (RFC 3986): "/a b.mov" for "https://host/a%20b.mov?x=1#t". Text that does
/// not begin with a scheme and "://" is already a path and is returned unchanged. A "%" without two hexadecimal digits
/// after it is kept.
[[nodiscard]] MERIDIAN_API std::string pathOfUrl(std::string_view pathOrUrl);

}  // namespace meridian::inline v0_2
