/// \file
/// Compares URLs and cuts their paths, as copying applications do to map one tree onto another. For example:
///
///     const Url clip = Url::fromFilePath("/vol/card/A/1.mov");
///     hasPrefixDirectory(clip, Url::fromFilePath("/vol/card"));  // true
///     subPathString(clip, "/vol/card", false);                   // "A"
///
/// All functions work on the `path` of the URL, percent-decoded and otherwise as given. Paths are compared byte by byte
/// unless the comment says otherwise. Only the functions whose comment says so ask the file system.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "meridian/export.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

inline constexpr std::array<std::string_view, 2> remoteURLSchemes{"https", "http"};

/// Returns true if the item exists and is a directory; follows links. Asks the file system.
[[nodiscard]] MERIDIAN_API bool isDirectory(const Url& url) noexcept;

/// Returns whether the item is hidden, on this system by a leading dot; absent if it cannot be read. Asks the file
/// system.
[[nodiscard]] MERIDIAN_API std::optional<bool> isHiddenItem(const Url& url) noexcept;

/// Returns true if the scheme is one of `remoteURLSchemes`. Compares case, so "HTTPS" is not remote.
[[nodiscard]] MERIDIAN_API bool isRemote(const Url& url) noexcept;

/// Returns true if the volume of the item can hold such links (see `volumeLinks`). Asks the file system; throws
/// `std::system_error`, with the path in its message, if the system cannot say.
[[nodiscard]] MERIDIAN_API bool fileSystemSupportsSymbolicLinks(const Url& url);
[[nodiscard]] MERIDIAN_API bool fileSystemSupportsHardLinks(const Url& url);

/// Returns true if the paths are equal without regard to case. Nothing else is normalised: "/a" and "/a/" differ.
[[nodiscard]] MERIDIAN_API bool pathIsEqual(const Url& url, const Url& to);

/// Returns true if the text occurs anywhere in the path: despite its name, a search and not a prefix test. Every path
/// contains the empty text.
[[nodiscard]] MERIDIAN_API bool isSubPath(const Url& url, std::string_view ofPath) noexcept;

/// Returns true if the path begins with the text, or with the other path, as text: "/a/bc" begins with "/a/b".
[[nodiscard]] MERIDIAN_API bool hasPrefix(const Url& url, std::string_view prefix) noexcept;
[[nodiscard]] MERIDIAN_API bool hasPrefix(const Url& url, const Url& prefix) noexcept;

/// Returns true if the standardized path begins with the components of the other one, standardized too: "/a/./b/c"
/// begins with "/a/b", "/a/bc" does not. A prefix without components, "" or ".", is a prefix of every path.
[[nodiscard]] MERIDIAN_API bool hasPrefixDirectory(const Url& url, const Url& prefix);

/// A range of bytes in a text.
struct TextRange {
  std::size_t begin = 0;
  /// After the last byte.
  std::size_t end = 0;

  friend constexpr bool operator==(const TextRange&, const TextRange&) = default;
};

/// Returns the range of the path of `url` at the beginning of the path of `of`, in bytes; absent if `of` does not begin
/// with `url`.
[[nodiscard]] MERIDIAN_API std::optional<TextRange> prefixRange(const Url& url, const Url& of) noexcept;

/// Returns true if the item is below `url`. A URL does not contain itself or a neighbour in the same directory, both
/// without regard to case; otherwise it contains everything that begins with its path as text, so "/a/b" contains
/// "/a/bc/d". The root "/" contains every other absolute path, and the empty path every other path. With
/// `ensureItemExists`, asks the file system last.
[[nodiscard]] MERIDIAN_API bool containsItem(const Url& url, const Url& item, bool ensureItemExists = false);

/// Returns the file URL of the path without trailing separators: "/x/y" for "/x/y///", the empty path for "//".
[[nodiscard]] MERIDIAN_API Url trimmingTrailingPathSeparators(const Url& url);

/// Returns the file URL of the item's directory, relative to a volume's folder: "A" for "/vol/card/A/1.mov" and
/// "/vol/card". Removes `fromVolumeFolder` from the directory's path as a text prefix, then one leading "/". So a path
/// that does not begin with the prefix only loses its leading "/", and a prefix with a trailing "/" is not removed from
/// the path of that very directory. The file name is never included: `includingFileName` has no effect and is accepted
/// for callers that pass it.
[[nodiscard]] MERIDIAN_API Url subPath(const Url& url, std::string_view fromVolumeFolder, bool includingFileName);

/// Returns the path of `subPath`, without one more leading "/".
[[nodiscard]] MERIDIAN_API std::string subPathString(const Url& url, std::string_view fromVolumeFolder,
                                                     bool includingFileName);

}  // namespace meridian::inline v0_2
