// Paths as text: what the platform calls a path's components and its extension, and the path of a URL.
//
// Nothing here asks the file system or follows a link. A path holds any bytes; "/" alone separates its components, and
// several of them, or some at the end, separate as one does. "." and ".." are components as any other, except in
// `standardizedPath`.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The path without the separators at its end; empty for separators alone.
[[nodiscard]] MERIDIAN_API std::string_view withoutTrailingSeparators(std::string_view path) noexcept;

/// The part behind the last separator, separators at the end left aside: "/card/clip.mov" and "/card/clip.mov/" give
/// "clip.mov". Empty for an empty path and for one of separators alone.
[[nodiscard]] MERIDIAN_API std::string_view lastPathComponent(std::string_view path) noexcept;

/// The extension of the last component, without its dot: "mov" for "/card/clip.mov", "gz" for "a.tar.gz". Empty where
/// the only dot begins the name (".mov"), ends it ("clip.") or there is none.
[[nodiscard]] MERIDIAN_API std::string_view pathExtension(std::string_view path) noexcept;

/// The path of the folder that the last component stands in, without separators at its end: "/card" for
/// "/card/clip.mov" and "/card//clip.mov/". "/" for "/clip.mov" and for "/" itself; "." for a name without a folder
/// ("clip.mov") and for the empty path, so that joining the component again names the same item.
[[nodiscard]] MERIDIAN_API std::string_view deletingLastPathComponent(std::string_view path) noexcept;

/// The path without its extension and the dot before it; separators at the end stay. Unchanged where `pathExtension` is
/// empty: ".mov", "clip.", "..".
[[nodiscard]] MERIDIAN_API std::string deletingPathExtension(std::string_view path);

/// The path with a component, or several, joined to its end by one separator: ("/card", "clip.mov") and
/// ("/card/", "/clip.mov") give "/card/clip.mov". The component alone, without separators at its beginning, where the
/// path is empty; the path unchanged where the component is.
[[nodiscard]] MERIDIAN_API std::string appendingPathComponent(std::string_view path, std::string_view component);

/// The components in their order; "/" is the first one of an absolute path: "/", "card", "clip.mov" for
/// "/card//clip.mov/". None for the empty path.
[[nodiscard]] MERIDIAN_API std::vector<std::string_view> pathComponents(std::string_view path);

/// The path without "." components, with each ".." and the component before it taken away, one separator between
/// components and none at the end. An absolute path does not climb above the root ("/../a" gives "/a"); in a relative
/// one a ".." with nothing before it stays. "." where nothing is left of a relative path that was not empty.
[[nodiscard]] MERIDIAN_API std::string standardizedPath(std::string_view path);

/// The path of a URL as RFC 3986 reads it, percent-decoded: "/a b.mov" for "https://host/a%20b.mov?x=1#t". A text that
/// does not begin with a scheme and "://" is a path already and comes back as it is; a "%" without two hexadecimal
/// digits behind it stands for itself.
[[nodiscard]] MERIDIAN_API std::string pathOfUrl(std::string_view pathOrUrl);

}  // namespace meridian::inline v0_2
