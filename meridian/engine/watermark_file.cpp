#include "meridian/engine/watermark_file.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "meridian/base/is_in.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/engine/error_clause.h"
#include "meridian/platform/file_identity.h"
#include "meridian/platform/file_queries.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {
namespace {

using Clock = std::chrono::steady_clock;

/// Items of one level of a path, each of which is another one.
class Candidates {
 public:
  /// Adds the item at a path, unless it is there under another name or does not exist.
  void add(std::string path) {
    const auto identity = targetIdentity(path);
    if (!identity || isIn(identities_, *identity)) return;
    identities_.push_back(*identity);
    paths_.push_back(std::move(path));
  }
  [[nodiscard]] const std::vector<std::string>& paths() const noexcept { return paths_; }

 private:
  std::vector<FileIdentity> identities_;
  std::vector<std::string> paths_;
};

/// Adds the items of a directory whose names are equal to the name in lower case. Returns why it cannot go on.
std::string_view addMatches(Candidates& matches, const std::string& directory, std::string_view lowercasedName,
                            Clock::time_point deadline) {
  // With more than this many candidates it is no search by name any more.
  constexpr std::size_t mostCandidates = 64;
  std::error_code error;
  std::filesystem::directory_iterator entry(directory.empty() ? "." : directory, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (Clock::now() > deadline) return "cannot be found within the time limit";
    const std::string name = entry->path().filename().string();
    if (lowercased(name) != lowercasedName) continue;
    matches.add(appendingPathComponent(directory, name));
    if (matches.paths().size() > mostCandidates) return "has too many names that differ in case alone";
  }
  return {};
}

/// Returns the items whose path in lower case is the given one, in alphabetical order, or why they cannot be told.
Expected<std::vector<std::string>, std::string> pathsInAnyCase(std::string_view lowercasedPath,
                                                               Clock::time_point deadline) {
  std::vector<std::string> paths{""};
  for (const std::string_view component : pathComponents(lowercasedPath)) {
    Candidates next;
    for (const std::string& path : paths) {
      if (component == "/" || component == "." || component == "..") {
        next.add(path.empty() ? std::string(component) : appendingPathComponent(path, component));
      } else if (const auto reason = addMatches(next, path, component, deadline); !reason.empty()) {
        return Unexpected(std::string(reason));
      }
    }
    paths = next.paths();
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
  if (image->width <= 0 || image->height <= 0) return Unexpected(std::string("is an image without a readable size"));
  if (!image->isDecodable) return Unexpected("is an image that cannot be decoded, " + image->codecName);
  return FoundWatermark{path, {image->width, image->height}};
}

}  // namespace

Expected<FoundWatermark, std::string> findWatermark(const std::string& writtenPath, const std::string& storedPath,
                                                    const DescriptionLimits& limits) {
  for (const std::string& path : {writtenPath, storedPath}) {
    if (!path.empty() && pathExists(path)) return describedImage(path, limits);
  }
  const auto paths = pathsInAnyCase(storedPath, limits.deadline());
  if (!paths) return Unexpected(paths.error());
  if (paths->size() == 1) return describedImage(paths->front(), limits);
  if (paths->empty()) return describedImage(writtenPath.empty() ? storedPath : writtenPath, limits);
  return Unexpected("may be " + inQuotes((*paths)[0]) + " or " + inQuotes((*paths)[1]) +
                    ", because its path is lower-cased in reading");
}

}  // namespace meridian::inline v0_2
