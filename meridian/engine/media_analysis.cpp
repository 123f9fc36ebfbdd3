#include "meridian/engine/media_analysis.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <random>
#include <system_error>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/base/text.h"
#include "meridian/cli/media_analysis_flags.h"
#include "meridian/engine/libav/ffmpeg_version.h"
#include "meridian/platform/file_queries.h"
#include "meridian/platform/path_text.h"
#include "meridian/platform/whole_file.h"

namespace meridian::inline v0_2 {
namespace {

using enum MediaAnalysisErrorCode;
using Errors = std::vector<MediaAnalysisError>;

/// Leaves room for the numbers in a name of 255 bytes, which is what file systems have.
constexpr std::size_t longestIdentifier = 200;

bool isUsableIdentifier(std::string_view identifier) noexcept {
  return !identifier.empty() && identifier.size() <= longestIdentifier && identifier != "." && identifier != ".." &&
         identifier.find('/') == std::string_view::npos && identifier.find('\0') == std::string_view::npos &&
         isValidUtf8(identifier);
}

/// False also for NaN.
bool isPart(float number) noexcept { return number >= 0 && number <= 1; }
bool isLength(float number) noexcept { return number > 0 && std::isfinite(number); }

Errors errorsBefore(const BasicMediaAnalysisCLIOptions& basic, const DistributedMediaAnalysisImageOptions* image) {
  using enum MediaAnalysisCLIError;
  Errors errors;
  for (MediaAnalysisBasicOptionsError& error : errorsOf(basic)) {
    const bool isOfWorkDirectory = error.code == workDirectoryNotSupplied || error.code == workDirectoryDoesNotExist;
    if (error.code == pathToAnalyzeNotSupplied || (image != nullptr && isOfWorkDirectory)) {
      errors.emplace_back(std::move(error));
    }
  }
  if (image == nullptr) return errors;
  std::ranges::copy(errorsOf(*image), std::back_inserter(errors));
  for (const float location : image->snapshotLocations()) {
    if (isPart(location)) continue;
    errors.emplace_back(MediaSnapshotError{MediaSnapshotErrorCode::locationOutOfRange, shortestDecimalText(location)});
  }
  if (const auto factor = image->compressionFactor(); factor && !isPart(*factor)) {
    errors.emplace_back(MediaAnalysisRunError{unusableCompressionFactor, shortestDecimalText(*factor)});
  }
  if (const auto height = image->imageHeight(); height && !isLength(*height)) {
    errors.emplace_back(MediaAnalysisRunError{unusableImageHeight, shortestDecimalText(*height)});
  }
  if (const auto identifier = basic.analysisId(); identifier && !isUsableIdentifier(*identifier)) {
    errors.emplace_back(MediaAnalysisRunError{unusableIdentifier, std::string(*identifier)});
  }
  return errors;
}

std::string randomIdentifier() {
  constexpr std::string_view digits = "0123456789abcdef";
  std::random_device random;
  std::string text;
  while (text.size() < 16) text += digits[random() % digits.size()];
  return text;
}

/// The directory of the images, which is removed with them unless it is kept.
class ImageDirectory {
 public:
  [[nodiscard]] static Expected<ImageDirectory, MediaAnalysisRunError> create(
      const std::string& workDirectory, const std::optional<std::string_view>& identifier) {
    while (true) {
      ImageDirectory directory(identifier ? std::string(*identifier) : randomIdentifier());
      directory.path_ = appendingPathComponent(workDirectory, directory.identifier_);
      if (mkdir(directory.path_.c_str(), 0777) == 0) return directory;
      const std::error_code error(errno, std::generic_category());
      // What is there is not ours to remove.
      std::string path = std::exchange(directory.path_, {});
      if (!identifier && error == std::errc::file_exists) continue;
      return Unexpected(MediaAnalysisRunError{imageDirectoryNotCreated, std::move(path), {}, error});
    }
  }

  ImageDirectory(const ImageDirectory&) = delete;
  ImageDirectory& operator=(const ImageDirectory&) = delete;
  ImageDirectory(ImageDirectory&& other) noexcept
      : identifier_(std::move(other.identifier_)),
        path_(std::exchange(other.path_, {})),
        images_(std::move(other.images_)) {}
  ImageDirectory& operator=(ImageDirectory&&) = delete;
  ~ImageDirectory() {
    if (path_.empty()) return;
    for (const std::string& image : images_) unlink(image.c_str());
    rmdir(path_.c_str());
  }

  /// Writes an image, and returns its path.
  [[nodiscard]] Expected<std::string, MediaAnalysisRunError> write(std::size_t item, std::size_t image,
                                                                   std::string_view content) {
    const std::string name = identifier_ + '-' + std::to_string(item + 1) + '-' + std::to_string(image + 1) + ".jpg";
    std::string path = appendingPathComponent(path_, name);
    const auto failure = [&path](std::error_code error) {
      return Unexpected(MediaAnalysisRunError{imageNotWritten, path, {}, error});
    };
    auto file = WholeFile::create(path);
    if (!file) return failure(file.error());
    if (const auto error = file->write(content)) return failure(error);
    if (const auto error = file->publish()) return failure(error);
    images_.push_back(path);
    return path;
  }

  /// Keeps the directory if it has images. Returns its path; empty if it has none.
  [[nodiscard]] std::string keep() noexcept { return images_.empty() ? std::string() : std::exchange(path_, {}); }

 private:
  explicit ImageDirectory(std::string identifier) : identifier_(std::move(identifier)) {}

  std::string identifier_;
  std::string path_;
  std::vector<std::string> images_;
};

/// What all images of an analysis have in common.
struct ImageTaking {
  const DistributedMediaAnalysisImageOptions& options;
  std::optional<SnapshotLut> lut;
  ImageDirectory directory;

  [[nodiscard]] SnapshotOptions snapshotOptions() const noexcept {
    SnapshotOptions snapshot{.maxWidth = options.maxImageWidth(), .lut = lut ? &*lut : nullptr};
    if (const auto height = options.imageHeight()) snapshot.height = *height;
    if (const auto factor = options.compressionFactor()) snapshot.compressionFactor = *factor;
    return snapshot;
  }
};

Expected<ImageTaking, Errors> prepared(const BasicMediaAnalysisCLIOptions& basic,
                                       const DistributedMediaAnalysisImageOptions& options) {
  std::optional<SnapshotLut> lut;
  if (const auto path = options.lutToApply()) {
    auto read = SnapshotLut::read(Url::fromFilePath(std::string(*path)));
    if (!read) return Unexpected(Errors{std::move(read).error()});
    lut = *std::move(read);
  }
  auto directory = ImageDirectory::create(std::string(basic.workDirectory()), basic.analysisId());
  if (!directory) return Unexpected(Errors{std::move(directory).error()});
  return ImageTaking{options, std::move(lut), *std::move(directory)};
}

/// Takes the images of an item. Calls `advance` before each with the number of those that are done.
template <typename Advance>
void takeImages(MediaAnalysisItem& item, std::size_t number, ImageTaking& taking, const std::stop_token& stop,
                const Advance& advance) {
  const auto fail = [&item](auto error) {
    if (!item.error) item.error = std::move(error);
  };
  auto snapshots = MediaSnapshots::open(*item.description, taking.snapshotOptions());
  if (!snapshots) return fail(std::move(snapshots).error());
  const auto locations = taking.options.snapshotLocations();
  for (std::size_t image = 0; image < locations.size() && !stop.stop_requested(); ++image) {
    advance(image);
    auto taken = snapshots->at(locations[image], stop);
    if (!taken) {
      fail(std::move(taken).error());
      continue;
    }
    auto path = taking.directory.write(number, image, taken->jpeg);
    if (!path) {
      fail(std::move(path).error());
      continue;
    }
    item.images.push_back({locations[image], taken->frame, taken->seconds, taken->timecode, *std::move(path),
                           taken->width, taken->height});
  }
}

/// What parts of an item's work are of the whole.
struct Portions {
  std::size_t imageCount = 0;
  bool decodes = false;

  /// All of an item takes longer to decode than anything else does.
  static constexpr double decoding = 0.9;

  [[nodiscard]] double beforeImage(std::size_t image) const noexcept {
    const double portion = static_cast<double>(1 + image) / static_cast<double>(1 + imageCount);
    return decodes ? portion * (1 - decoding) : portion;
  }
  [[nodiscard]] static double ofDecoding(double portion) noexcept { return 1 - decoding + portion * decoding; }
};

/// Decodes all of an item.
void decodeItem(MediaAnalysisItem& item, const DeepAnalysisOptions& options, const std::stop_token& stop,
                DeepAnalysisProgressBlock progress) {
  auto deep = analyzeDeeply(*item.description, options, progress, stop);
  if (!deep) {
    if (!item.error) item.error = std::move(deep).error();
    return;
  }
  if (!item.error) {
    if (auto error = errorOfFaults(*deep, item.path)) item.error = *std::move(error);
  }
  item.deep = *std::move(deep);
}

void describeItem(MediaAnalysisItem& item, const DescriptionLimits& limits) {
  if (const auto missing = itemError(item.path)) {
    item.error = MediaAnalysisBasicOptionsError{
        .code = MediaAnalysisCLIError::pathToAnalyzeDoesNotExist, .place = item.path, .systemError = missing};
    return;
  }
  auto described = describeMedia(Url::fromFilePath(item.path), limits);
  if (described) {
    item.description = *std::move(described);
  } else {
    item.error = std::move(described).error();
  }
}

}  // namespace

Expected<MediaAnalysis, std::vector<MediaAnalysisError>> analyzeMedia(const BasicMediaAnalysisCLIOptions& basic,
                                                                      const DistributedMediaAnalysisImageOptions* image,
                                                                      MediaAnalysisProgressBlock progress,
                                                                      const std::stop_token& stop,
                                                                      const DescriptionLimits& limits,
                                                                      const DeepAnalysisOptions& deep) {
  if (auto errors = errorsBefore(basic, image); !errors.empty()) return Unexpected(std::move(errors));
  MediaAnalysis analysis;
  analysis.ffmpegVersion = libav::ffmpegVersion();
  if (const auto identifier = basic.analysisId()) analysis.analysisId = *identifier;
  std::optional<ImageTaking> taking;
  if (image != nullptr) {
    auto usable = prepared(basic, *image);
    if (!usable) return Unexpected(std::move(usable).error());
    taking.emplace(*std::move(usable));
    if (taking->lut) analysis.lutWarnings = taking->lut->warnings();
    if (image->allowFinderImages()) {
      analysis.warnings.push_back(
          {MediaAnalysisWarningCode::noFinderImages, cliFlag(MediaAnalysisImageCLIFlags::allowFinderImages)});
    }
  }

  const auto paths = basic.pathsToAnalyze();
  const Portions portions{taking ? image->snapshotLocations().size() : 0, basic.deepAnalysis()};
  for (std::size_t number = 0; number < paths.size() && !stop.stop_requested(); ++number) {
    MediaAnalysisItem& item = analysis.items.emplace_back();
    item.path = paths[number];
    const auto advance = [&](double done) {
      progress(
          {number, paths.size(), item.path, (static_cast<double>(number) + done) / static_cast<double>(paths.size())});
    };
    advance(0);
    describeItem(item, limits);
    if (taking && item.description && item.description->mainVideo() != nullptr) {
      takeImages(item, number, *taking, stop, [&](std::size_t images) { advance(portions.beforeImage(images)); });
    }
    if (basic.deepAnalysis() && item.description && !stop.stop_requested()) {
      decodeItem(item, deep, stop, [&](double portion) { advance(Portions::ofDecoding(portion)); });
    }
  }
  if (stop.stop_requested()) return Unexpected(Errors{MediaAnalysisRunError{MediaAnalysisErrorCode::stopped}});
  if (taking) analysis.imageDirectory = taking->directory.keep();
  return analysis;
}

void removeImages(const MediaAnalysis& analysis) noexcept {
  for (const MediaAnalysisItem& item : analysis.items) {
    for (const MediaAnalysisImage& image : item.images) unlink(image.path.c_str());
  }
  if (!analysis.imageDirectory.empty()) rmdir(analysis.imageDirectory.c_str());
}

}  // namespace meridian::inline v0_2
