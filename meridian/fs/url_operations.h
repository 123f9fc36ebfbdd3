// Tests of addresses and cuts of their paths, as copying applications need them to map one tree onto another.
//
// All of them work on the address's `path`, percent-decoded and as it is given. Only those whose comment says so look
// at the file system.
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

/// Whether the item exists and is a directory; links are followed. Asks the file system.
[[nodiscard]] MERIDIAN_API bool isDirectory(const Url& url) noexcept;

/// Whether the item is hidden, on this system by a dot that begins its name; absent where it cannot be read. Asks the
/// file system.
[[nodiscard]] MERIDIAN_API std::optional<bool> isHiddenItem(const Url& url) noexcept;

/// Whether the scheme is one of `remoteURLSchemes`, exactly: "HTTPS" is none, on purpose.
[[nodiscard]] MERIDIAN_API bool isRemote(const Url& url) noexcept;

/// Whether the volume on which the item lies can hold such links (see `volumeLinks`). Asks the file system; throws
/// `std::system_error`, with the path in its message, where it does not answer.
[[nodiscard]] MERIDIAN_API bool fileSystemSupportsSymbolicLinks(const Url& url);
[[nodiscard]] MERIDIAN_API bool fileSystemSupportsHardLinks(const Url& url);

/// Whether the paths are equal without regard to case. No other normalisation: "/a" and "/a/" differ.
[[nodiscard]] MERIDIAN_API bool pathIsEqual(const Url& url, const Url& to);

/// Whether the text occurs anywhere in the path: a test of containment and not of a prefix, on purpose. Any path
/// contains the empty text.
[[nodiscard]] MERIDIAN_API bool isSubPath(const Url& url, std::string_view ofPath) noexcept;

/// Whether the path begins with the text, or with the other's path, as texts: "/a/bc" begins with "/a/b".
[[nodiscard]] MERIDIAN_API bool hasPrefix(const Url& url, std::string_view prefix) noexcept;
[[nodiscard]] MERIDIAN_API bool hasPrefix(const Url& url, const Url& prefix) noexcept;

/// Whether the path begins with the other's, component by component and both standardized: "/a/./b/c" with "/a/b", but
/// not "/a/bc". A path of which nothing is left, "" or ".", counts as a prefix of everything.
[[nodiscard]] MERIDIAN_API bool hasPrefixDirectory(const Url& url, const Url& prefix);

/// A range of bytes in a text.
struct TextRange {
  std::size_t begin = 0;
  /// Behind the last byte.
  std::size_t end = 0;

  friend constexpr bool operator==(const TextRange&, const TextRange&) = default;
};

/// Where the address's path stands at the beginning of the other's; absent where the other's does not begin with it.
[[nodiscard]] MERIDIAN_API std::optional<TextRange> prefixRange(const Url& url, const Url& of) noexcept;

/// Whether the item lies below the address. Nothing contains itself or what lies in the same folder as it, both without
/// regard to case; what else begins with the path does, as a text: "/a/b" contains "/a/bc/d", on purpose. The root "/"
/// contains all other absolute paths, and the empty path all other paths. Where the item has to exist, the file system
/// is asked last.
[[nodiscard]] MERIDIAN_API bool containsItem(const Url& url, const Url& item, bool ensureItemExists = false);

/// The file address of the path without separators at its end: "/x/y" for "/x/y///", the empty path for "//".
[[nodiscard]] MERIDIAN_API Url trimmingTrailingPathSeparators(const Url& url);

/// The file address of the folder that the item lies in, from a volume's folder on: for "/vol/card/A/1.mov" below
/// "/vol/card" it is "A". The folder's path is cut off as a text; one that the item's folder does not begin with leaves
/// the path whole, but for a "/" that begins it, and one with a "/" at its end does not cut off that very folder. The
/// file's name is never included, on purpose: the last argument has no effect and stays for those who pass it.
[[nodiscard]] MERIDIAN_API Url subPath(const Url& url, std::string_view fromVolumeFolder, bool includingFileName);

/// The path of `subPath`, without one more "/" at its beginning.
[[nodiscard]] MERIDIAN_API std::string subPathString(const Url& url, std::string_view fromVolumeFolder,
                                                     bool includingFileName);

}  // namespace meridian::inline v0_2
