/// \file
/// The errors that stop the media-analysis tool, found before it is started. For example:
///
///     for (const auto& error : errorsOf(basicOptions)) std::cerr << error.message() << '\n';
///     // "/card/a.mov": the path to analyze does not exist: No such file or directory; check the spelling and ...
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "meridian/base/error.h"
#include "meridian/cli/media_analysis_options.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// What makes the basic options unusable.
enum class MediaAnalysisCLIError : std::uint8_t {
  /// There is no path to analyze, or there are only empty ones.
  pathToAnalyzeNotSupplied,
  /// A path does not exist; once for each.
  pathToAnalyzeDoesNotExist,
  workDirectoryNotSupplied,
  /// The path does not exist, or is not a directory.
  workDirectoryDoesNotExist,
  resultsFilePathNotSupplied,
  /// The path exists, even if it is a directory or a dangling link.
  resultsFileAlreadyExists,
  /// The directory does not exist or is not writable, or the path cannot be a file's.
  resultsFilePathNotCreated,
};

template <>
struct EnumerationTable<MediaAnalysisCLIError> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaAnalysisCLIError>>({
      {MediaAnalysisCLIError::pathToAnalyzeNotSupplied, "pathToAnalyzeNotSupplied", "no path to analyze is given",
       "give at least one with -pathToAnalyze"},
      {MediaAnalysisCLIError::pathToAnalyzeDoesNotExist, "pathToAnalyzeDoesNotExist",
       "the path to analyze does not exist", "check the spelling and that the volume is mounted"},
      {MediaAnalysisCLIError::workDirectoryNotSupplied, "workDirectoryNotSupplied", "no work directory is given",
       "give one with -workDirectory"},
      {MediaAnalysisCLIError::workDirectoryDoesNotExist, "workDirectoryDoesNotExist",
       "the work directory does not exist", "create it before the analysis starts"},
      {MediaAnalysisCLIError::resultsFilePathNotSupplied, "resultsFilePathNotSupplied",
       "no path for the results is given", "give one with -resultsFilePath"},
      {MediaAnalysisCLIError::resultsFileAlreadyExists, "resultsFileAlreadyExists",
       "the results file already exists and is not overwritten", "choose another path, or move the file away"},
      {MediaAnalysisCLIError::resultsFilePathNotCreated, "resultsFilePathNotCreated",
       "the results file cannot be created", "choose a path in a directory that exists and that you may write to"},
  });
};

/// An error of the basic options. `place` is the path that it is about; empty for an option that is not supplied.
using MediaAnalysisBasicOptionsError = Error<MediaAnalysisCLIError>;

/// What makes the image options unusable.
enum class MediaAnalysisCLIImageError : std::uint8_t { missingSnapshotLocations, missingMaxImageWidth };

template <>
struct EnumerationTable<MediaAnalysisCLIImageError> {
  static constexpr auto rows = std::to_array<ErrorRow<MediaAnalysisCLIImageError>>({
      {MediaAnalysisCLIImageError::missingSnapshotLocations, "missingSnapshotLocations",
       "no position to take an image at is given", "give at least one with -snapshotLocation"},
      {MediaAnalysisCLIImageError::missingMaxImageWidth, "missingMaxImageWidth", "no image width above 0 is given",
       "give one with -maxImageWidth"},
  });
};

/// An error of the image options. `place` is empty.
using MediaAnalysisImageOptionsError = Error<MediaAnalysisCLIImageError>;

/// Returns an error for each option that is not supplied, in the enumeration's order: a path to analyze, the work
/// directory, the path for the results. An empty text counts as not supplied. Does not ask the file system.
[[nodiscard]] MERIDIAN_API std::vector<MediaAnalysisBasicOptionsError> errorsOfMissingOptions(
    const BasicMediaAnalysisCLIOptions& options);

/// Returns the errors of the options and of the paths in the file system, in the enumeration's order, with an error for
/// each path to analyze that does not exist. Changes nothing: the results file is not created, so creating it can still
/// fail, for example because the volume is full.
[[nodiscard]] MERIDIAN_API std::vector<MediaAnalysisBasicOptionsError> errorsOf(
    const BasicMediaAnalysisCLIOptions& options);

/// Returns an error for each option that is missing, in the enumeration's order. A width that is not finite or not
/// above 0 counts as missing.
[[nodiscard]] MERIDIAN_API std::vector<MediaAnalysisImageOptionsError> errorsOf(
    const DistributedMediaAnalysisImageOptions& options);

}  // namespace meridian::inline v0_2
