#include "meridian/cli/media_analysis_errors.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <system_error>

#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {

namespace {

std::vector<MediaAnalysisBasicOptionsError> errorsOf(const BasicMediaAnalysisCLIOptions& options, bool asksFileSystem) {
  using enum MediaAnalysisCLIError;
  std::vector<MediaAnalysisBasicOptionsError> errors;
  const auto add = [&errors](MediaAnalysisCLIError code, const std::string& path, std::error_code systemError) {
    errors.push_back({.code = code, .place = path, .systemError = systemError});
  };

  if (std::ranges::all_of(options.pathsToAnalyze(), &std::string::empty)) {
    add(pathToAnalyzeNotSupplied, {}, {});
  } else if (asksFileSystem) {
    for (const std::string& path : options.pathsToAnalyze()) {
      if (const auto systemError = itemError(path)) add(pathToAnalyzeDoesNotExist, path, systemError);
    }
  }
  if (const std::string path(options.workDirectory()); path.empty()) {
    add(workDirectoryNotSupplied, {}, {});
  } else if (asksFileSystem) {
    if (const auto systemError = directoryError(path)) add(workDirectoryDoesNotExist, path, systemError);
  }
  if (const std::string path(options.resultsFilePath()); path.empty()) {
    add(resultsFilePathNotSupplied, {}, {});
  } else if (asksFileSystem) {
    const std::error_code systemError = newFileError(path);
    if (systemError == std::errc::file_exists) {
      add(resultsFileAlreadyExists, path, {});
    } else if (systemError) {
      add(resultsFilePathNotCreated, path, systemError);
    }
  }
  return errors;
}

}  // namespace

std::vector<MediaAnalysisBasicOptionsError> errorsOfMissingOptions(const BasicMediaAnalysisCLIOptions& options) {
  return errorsOf(options, false);
}

std::vector<MediaAnalysisBasicOptionsError> errorsOf(const BasicMediaAnalysisCLIOptions& options) {
  return errorsOf(options, true);
}

std::vector<MediaAnalysisImageOptionsError> errorsOf(const DistributedMediaAnalysisImageOptions& options) {
  using enum MediaAnalysisCLIImageError;
  std::vector<MediaAnalysisImageOptionsError> errors;
  if (options.snapshotLocations().empty()) errors.push_back({.code = missingSnapshotLocations});
  const float width = options.maxImageWidth();
  if (!(width > 0) || std::isinf(width)) errors.push_back({.code = missingMaxImageWidth});
  return errors;
}

}  // namespace meridian::inline v0_2
