#include "meridian/engine/watermark_file.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/engine/error_clause.h"
#include "meridian/platform/file_queries.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {
namespace {

/// More than this many candidates on the way are no search by name any more.
constexpr std::size_t mostCandidates = 64;

/// Adds the items of a directory whose names are equal to the name in lower case.
void addMatches(std::vector<std::string>& matches, const std::string& directory, std::string_view lowercasedName) {
  std::error_code error;
  std::filesystem::directory_iterator entry(directory.empty() ? "." : directory, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (lowercased(name) != lowercasedName) continue;
    matches.push_back(appendingPathComponent(directory, name));
    if (matches.size() >= mostCandidates) return;
  }
}

/// Returns the items whose path in lower case is the given one, in alphabetical order.
std::vector<std::string> pathsInAnyCase(std::string_view lowercasedPath) {
  std::vector<std::string> paths{""};
  for (const std::string_view component : pathComponents(lowercasedPath)) {
    std::vector<std::string> next;
    for (const std::string& path : paths) {
      if (component == "/" || component == "." || component == "..") {
        next.push_back(path.empty() ? std::string(component) : appendingPathComponent(path, component));
      } else {
        addMatches(next, path, component);
      }
    }
    paths = std::move(next);
  }
  std::ranges::sort(paths);
  return paths;
}

Expected<FoundWatermark, std::string> describedImage(const std::string& path, const DescriptionLimits& limits) {
  if (pathIsDirectory(path)) return Unexpected(std::string("is a directory"));
  const auto media = describeMedia(Url::fromFilePath(path), limits);
  if (!media) return Unexpected(clauseOf(media.error()));
  // FFmpeg reads each kind of single image by a format of that name.
  const VideoStreamDescription* const image = media->mainVideo();
  if (image == nullptr || !media->formatName.ends_with("_pipe")) return Unexpected(std::string("is not an image"));
  if (!image->isDecodable) return Unexpected("is an image that cannot be decoded, " + image->codecName);
  return FoundWatermark{path, {image->width, image->height}};
}

}  // namespace

Expected<FoundWatermark, std::string> findWatermark(const std::string& writtenPath, const std::string& storedPath,
                                                    const DescriptionLimits& limits) {
  for (const std::string& path : {writtenPath, storedPath}) {
    if (!path.empty() && pathExists(path)) return describedImage(path, limits);
  }
  const std::vector<std::string> paths = pathsInAnyCase(storedPath);
  if (paths.size() == 1) return describedImage(paths.front(), limits);
  if (paths.empty()) return describedImage(writtenPath.empty() ? storedPath : writtenPath, limits);
  return Unexpected("may be " + inQuotes(paths[0]) + " or " + inQuotes(paths[1]) +
                    ", because its path is lower-cased in reading");
}

}  // namespace meridian::inline v0_2
