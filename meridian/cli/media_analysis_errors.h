// Why the media-analysis tool cannot work with its options.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/cli/media_analysis_options.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// One line of a table of the tool's errors: what is wrong, and what to do about it.
template <typename Error>
struct MediaAnalysisErrorRow {
  Error value;
  std::string_view rawValue;
  std::string_view description;
  std::string_view remedy;
};

/// What makes the basic options unusable.
enum class MediaAnalysisCLIError : std::uint8_t {
  pathToAnalyzeNotSupplied,
  pathToAnalyzeDoesNotExist,
  workDirectoryNotSupplied,
  workDirectoryDoesNotExist,
  resultsFilePathNotSupplied,
  resultsFileAlreadyExists,
  resultsFilePathNotCreated,
};

template <>
struct EnumerationTable<MediaAnalysisCLIError> {
  static constexpr auto rows = std::to_array<MediaAnalysisErrorRow<MediaAnalysisCLIError>>({
      {MediaAnalysisCLIError::pathToAnalyzeNotSupplied, "pathToAnalyzeNotSupplied", "there is no path to analyze",
       "give at least one with -pathToAnalyze"},
      {MediaAnalysisCLIError::pathToAnalyzeDoesNotExist, "pathToAnalyzeDoesNotExist",
       "a path to analyze does not exist", "see whether it is spelt right and its volume is there"},
      {MediaAnalysisCLIError::workDirectoryNotSupplied, "workDirectoryNotSupplied", "there is no work directory",
       "give one with -workDirectory"},
      {MediaAnalysisCLIError::workDirectoryDoesNotExist, "workDirectoryDoesNotExist",
       "the work directory does not exist", "make it before the analysis starts"},
      {MediaAnalysisCLIError::resultsFilePathNotSupplied, "resultsFilePathNotSupplied",
       "there is no path for the results", "give one with -resultsFilePath"},
      {MediaAnalysisCLIError::resultsFileAlreadyExists, "resultsFileAlreadyExists",
       "the results file exists already and is not written over", "give another path, or move the file away"},
      {MediaAnalysisCLIError::resultsFilePathNotCreated, "resultsFilePathNotCreated",
       "the results file cannot be created", "give a path in a folder that exists and can be written to"},
  });
};

/// What makes the image options unusable.
enum class MediaAnalysisCLIImageError : std::uint8_t { missingSnapshotLocations, missingMaxImageWidth };

template <>
struct EnumerationTable<MediaAnalysisCLIImageError> {
  static constexpr auto rows = std::to_array<MediaAnalysisErrorRow<MediaAnalysisCLIImageError>>({
      {MediaAnalysisCLIImageError::missingSnapshotLocations, "missingSnapshotLocations",
       "there is no position to take an image at", "give at least one with -snapshotLocation"},
      {MediaAnalysisCLIImageError::missingMaxImageWidth, "missingMaxImageWidth",
       "there is no width above 0 for the images", "give one with -maxImageWidth"},
  });
};

/// An error of the basic options, and what it is about.
struct MediaAnalysisCLIFault {
  MediaAnalysisCLIError error = MediaAnalysisCLIError::pathToAnalyzeNotSupplied;
  /// The path that was asked for; empty where there is none.
  std::string path;
  /// The file system's answer, where it was asked.
  std::error_code systemError;

  /// The error for a person, safe for a terminal, with the path, the system's words and what to do.
  [[nodiscard]] MERIDIAN_API std::string message() const;

  friend bool operator==(const MediaAnalysisCLIFault&, const MediaAnalysisCLIFault&) = default;
};

/// The error for a person, with what to do.
[[nodiscard]] MERIDIAN_API std::string message(MediaAnalysisCLIImageError error);

/// What the options alone show to be missing, in the enumeration's order: a path to analyze, the work directory, the
/// path for the results. An empty text is none.
[[nodiscard]] MERIDIAN_API std::vector<MediaAnalysisCLIError> missingOptions(
    const BasicMediaAnalysisCLIOptions& options);

/// The same, with what the file system says of the paths, in the enumeration's order; a path to analyze that is not
/// there has a fault of its own. Asks and changes nothing: no results file is created, so that creating it can still
/// fail, as for a full volume.
[[nodiscard]] MERIDIAN_API std::vector<MediaAnalysisCLIFault> faultsOf(const BasicMediaAnalysisCLIOptions& options);

/// What is missing, in the enumeration's order. A width that is no finite number above 0 is none.
[[nodiscard]] MERIDIAN_API std::vector<MediaAnalysisCLIImageError> errorsOf(
    const DistributedMediaAnalysisImageOptions& options);

}  // namespace meridian::inline v0_2
