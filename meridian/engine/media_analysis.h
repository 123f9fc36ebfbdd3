/// \file
/// Carries out what the media-analysis tool's arguments ask for: media described and decoded, still images taken. For
/// example:
///
///     const auto read = readMediaAnalysisArguments(words);
///     const auto analysis = analyzeMedia(read.basic, read.image ? &*read.image : nullptr);
///     if (!analysis) return report(analysis.error());
///     analysis->items.front().description->duration
///     analysis->items.front().images.front().path  // "/work/A7F3/A7F3-1-1.jpg"
///
/// `writeMediaAnalysis` (media_analysis_json.h) writes the results file.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/expected.h"
#include "meridian/base/function_ref.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_options.h"
#include "meridian/engine/deep_analysis.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/media_description.h"
#include "meridian/engine/media_error.h"
#include "meridian/engine/media_snapshot.h"
#include "meridian/export.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/media/timecode_components.h"

namespace meridian::inline v0_2 {

/// Why an analysis does not begin or is not finished, beyond what the options' own errors say.
enum class MediaAnalysisErrorCode : std::uint8_t {
  unusableIdentifier,
  unusableCompressionFactor,
  unusableImageHeight,
  imageDirectoryNotCreated,
  imageNotWritten,
  stopped,
};

template <>
struct EnumerationTable<MediaAnalysisErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaAnalysisErrorCode>>({
      {MediaAnalysisErrorCode::unusableIdentifier, "unusableIdentifier",
       "cannot be part of the names of the images, as an identifier has to be",
       "use an identifier of 1 to 200 bytes of UTF-8 without \"/\", other than \".\" and \"..\""},
      {MediaAnalysisErrorCode::unusableCompressionFactor, "unusableCompressionFactor", "is not a compression factor",
       "give a number from 0 to 1, the best, or leave it out for 0.8"},
      {MediaAnalysisErrorCode::unusableImageHeight, "unusableImageHeight", "is not the height of an image",
       "give a number above 0, or leave it out"},
      {MediaAnalysisErrorCode::imageDirectoryNotCreated, "imageDirectoryNotCreated", "cannot be created for the images",
       "use an identifier that no earlier analysis in this work directory had, and check that you may write to it"},
      {MediaAnalysisErrorCode::imageNotWritten, "imageNotWritten", "cannot be written",
       "check that the volume has space"},
      {MediaAnalysisErrorCode::stopped, "stopped", "the analysis was stopped before it was finished"},
  });
};

/// Names the path, the identifier or the number in `place`. `systemError` is set for imageDirectoryNotCreated and
/// imageNotWritten.
using MediaAnalysisRunError = Error<MediaAnalysisErrorCode>;

/// Any error of an analysis.
using MediaAnalysisError =
    std::variant<MediaAnalysisRunError, MediaAnalysisBasicOptionsError, MediaAnalysisImageOptionsError, MediaError,
                 MediaSnapshotError, DeepAnalysisError, LutError>;

/// Returns the raw value of the error's code: "pathToAnalyzeDoesNotExist", "damaged".
[[nodiscard]] inline std::string_view codeOf(const MediaAnalysisError& error) {
  return std::visit([](const auto& each) { return rawValue(each.code); }, error);
}

/// Returns the error as one line for a person, safe for a terminal.
[[nodiscard]] inline std::string messageOf(const MediaAnalysisError& error) {
  return std::visit([](const auto& each) { return each.message(); }, error);
}

/// What was asked for and is not done.
enum class MediaAnalysisWarningCode : std::uint8_t { noFinderImages };

template <>
struct EnumerationTable<MediaAnalysisWarningCode> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaAnalysisWarningCode>>({
      {MediaAnalysisWarningCode::noFinderImages, "noFinderImages", "has no meaning on this platform and is ignored"},
  });
};

/// Names the flag in `place`.
using MediaAnalysisWarning = Warning<MediaAnalysisWarningCode>;

/// An image of an item, in a file.
struct MediaAnalysisImage {
  /// As it was asked for, from 0 to 1.
  float location = 0;
  /// As in `MediaSnapshot`.
  std::optional<std::int64_t> frame;
  std::optional<double> seconds;
  std::optional<TimecodeComponents> timecode;
  std::string path;
  int width = 0;
  int height = 0;

  friend bool operator==(const MediaAnalysisImage&, const MediaAnalysisImage&) = default;
};

/// What was found out about a path.
struct MediaAnalysisItem {
  /// As given.
  std::string path;
  /// Absent if the item cannot be described.
  std::optional<MediaDescription> description;
  /// In the order of the locations, without those that failed. An item without video has none, which is no error.
  std::vector<MediaAnalysisImage> images;
  /// Absent unless it was asked for, or if the item cannot be decoded.
  std::optional<DeepAnalysis> deep;
  /// The first error. What a deep analysis could not decode is one.
  std::optional<MediaAnalysisError> error;

  friend bool operator==(const MediaAnalysisItem&, const MediaAnalysisItem&) = default;
};

/// The results of an analysis.
struct MediaAnalysis {
  /// As given; absent if none was.
  std::optional<std::string> analysisId;
  /// FFmpeg's release: "5.1.9-0+deb12u1".
  std::string ffmpegVersion;
  /// One for each path, in their order.
  std::vector<MediaAnalysisItem> items;
  std::vector<MediaAnalysisWarning> warnings;
  /// What may surprise about the LUT.
  std::vector<LutWarning> lutWarnings;
  /// The directory in which the images are; empty if there are none.
  std::string imageDirectory;

  /// Returns true if no item has an error.
  [[nodiscard]] bool isFlawless() const noexcept {
    return std::ranges::none_of(items, [](const MediaAnalysisItem& item) { return item.error.has_value(); });
  }

  friend bool operator==(const MediaAnalysis&, const MediaAnalysis&) = default;
};

/// How far an analysis is. The path is valid during the call only.
struct MediaAnalysisProgress {
  /// The item that is begun or worked on, from 0.
  std::size_t item = 0;
  std::size_t itemCount = 0;
  std::string_view path;
  /// From 0 to 1.
  double portion = 0;
};

using MediaAnalysisProgressBlock = FunctionRef<void(const MediaAnalysisProgress&)>;

/// Does nothing; for callers that show no progress.
inline void ignoreProgress(const MediaAnalysisProgress& /*progress*/) noexcept {}

/// Describes every path, and with image options takes the images. Paths are independent of each other: what is wrong
/// with one is an error in its item, and the others are analysed. Nothing begins if the options are unusable: then all
/// their errors are returned. Of the basic options, the results file is not used, and the work directory only if there
/// are image options. What `allowFinderImages` asks for is not done, which a warning says.
///
/// With `deepAnalysis` each item is decoded as a whole, as by `analyzeDeeply`, whose options are `deep`.
///
/// Images are JPEG files ID-ITEM-IMAGE.jpg, counted from 1, in a new directory ID in the work directory, where ID is
/// the identifier of the analysis, or a random name without one. Each file is there as a whole or not at all. The
/// directory is gone if there are no images.
///
/// When the token asks for a stop, the images and their directory are removed, and the only error is `stopped`. It is
/// looked at between items and between the frames that are decoded.
[[nodiscard]] MERIDIAN_API Expected<MediaAnalysis, std::vector<MediaAnalysisError>> analyzeMedia(
    const BasicMediaAnalysisCLIOptions& basic, const DistributedMediaAnalysisImageOptions* image = nullptr,
    MediaAnalysisProgressBlock progress = ignoreProgress, const std::stop_token& stop = {},
    const DescriptionLimits& limits = {}, const DeepAnalysisOptions& deep = {});

/// Removes the images of an analysis and their directory, for callers that cannot use the results.
MERIDIAN_API void removeImages(const MediaAnalysis& analysis) noexcept;

}  // namespace meridian::inline v0_2
