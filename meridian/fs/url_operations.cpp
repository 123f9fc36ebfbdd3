#include "meridian/fs/url_operations.h"

#include <algorithm>

#include "meridian/base/text.h"
#include "meridian/fs/name_rules.h"
#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {

bool isDirectory(const Url& url) noexcept { return pathIsDirectory(url.path()); }

std::optional<bool> isHiddenItem(const Url& url) noexcept { return pathIsHidden(url.path()); }

bool isRemote(const Url& url) noexcept {
  return std::ranges::find(remoteURLSchemes, url.scheme()) != remoteURLSchemes.end();
}

bool fileSystemSupportsSymbolicLinks(const Url& url) { return volumeLinks(url.path()).symbolic; }
bool fileSystemSupportsHardLinks(const Url& url) { return volumeLinks(url.path()).hard; }

bool pathIsEqual(const Url& url, const Url& to) { return equalsIgnoringCase(url.path(), to.path()); }

bool isSubPath(const Url& url, std::string_view ofPath) noexcept {
  return url.path().find(ofPath) != std::string::npos;
}

bool hasPrefix(const Url& url, std::string_view prefix) noexcept { return url.path().starts_with(prefix); }
bool hasPrefix(const Url& url, const Url& prefix) noexcept { return hasPrefix(url, prefix.path()); }

bool hasPrefixDirectory(const Url& url, const Url& prefix) {
  const Url standardizedPrefix = prefix.standardized();
  if (standardizedPrefix.path() == ".") return true;  // the standardized path without components
  const Url standardized = url.standardized();
  const auto components = standardized.pathComponents();
  const auto first = standardizedPrefix.pathComponents();
  return first.size() <= components.size() && std::equal(first.begin(), first.end(), components.begin());
}

std::optional<TextRange> prefixRange(const Url& url, const Url& of) noexcept {
  if (!hasPrefix(of, url.path())) return std::nullopt;
  return TextRange{0, url.path().size()};
}

bool containsItem(const Url& url, const Url& item, bool ensureItemExists) {
  if (pathIsEqual(url, item)) return false;
  // The root is in no directory and has no neighbours.
  const bool hasNeighbours = !url.lastPathComponent().empty();
  if (hasNeighbours && pathIsEqual(url.deletingLastPathComponent(), item.deletingLastPathComponent())) return false;
  return hasPrefix(item, url.path()) && (!ensureItemExists || pathExists(item.path()));
}

Url trimmingTrailingPathSeparators(const Url& url) {
  return Url::fromFilePath(std::string(withoutTrailingSeparators(url.path())));
}

Url subPath(const Url& url, std::string_view fromVolumeFolder, bool /*includingFileName*/) {
  const Url directory = url.deletingLastPathComponent();
  return Url::fromFilePath(std::string(deletingPrefix(deletingPrefix(directory.path(), fromVolumeFolder), "/")));
}

std::string subPathString(const Url& url, std::string_view fromVolumeFolder, bool includingFileName) {
  return std::string(deletingPrefix(subPath(url, fromVolumeFolder, includingFileName).path(), "/"));
}

}  // namespace meridian::inline v0_2
