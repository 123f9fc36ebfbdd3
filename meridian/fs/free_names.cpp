#include "meridian/fs/free_names.h"

#include <algorithm>

#include "meridian/fs/name_schemes.h"

namespace meridian::inline v0_2 {
namespace {

template <typename Scheme>
std::string unusedSuffixOf(const Scheme& scheme, ExistenceQuery exists) {
  return unusedSuffix(scheme,
                      [exists](std::span<const std::string> paths) { return std::ranges::any_of(paths, exists); });
}

}  // namespace

Url filePathAdjustedForCollision(const Url& path, ExistenceQuery exists) {
  const detail::PathScheme scheme(path);
  const std::string suffix = unusedSuffixOf(scheme, exists);
  return suffix.empty() ? path : Url::fromFilePath(scheme.paths(suffix).front());
}

std::string lastPathComponentAdjustedForCollision(std::string_view baseName, std::span<const Url> amongstDirectories,
                                                  std::optional<std::string_view> pathExtension,
                                                  ExistenceQuery exists) {
  if (amongstDirectories.empty()) return std::string(baseName);
  const detail::NameScheme scheme(baseName, amongstDirectories, pathExtension);
  return scheme.name(unusedSuffixOf(scheme, exists));
}

UrlsByExtension consistentFilePathsAdjustedForCollision(const Url& outputDirectory, std::string_view fileName,
                                                        std::span<const std::string> extensions,
                                                        ExistenceQuery exists) {
  return consistentFilePathsAdjustedForCollisionAcrossDirectories({&outputDirectory, 1}, fileName, extensions, exists);
}

UrlsByExtension consistentFilePathsAdjustedForCollisionAcrossDirectories(std::span<const Url> directories,
                                                                         std::string_view fileName,
                                                                         std::span<const std::string> extensions,
                                                                         ExistenceQuery exists) {
  UrlsByExtension urls;
  if (directories.empty()) return urls;
  const detail::SetScheme scheme(directories, fileName, extensions);
  const std::string suffix = unusedSuffixOf(scheme, exists);
  for (const std::string& extension : scheme.extensions()) {
    urls.emplace(extension, directories.back().appendingPathComponent(scheme.name(suffix, extension)));
  }
  return urls;
}

}  // namespace meridian::inline v0_2
