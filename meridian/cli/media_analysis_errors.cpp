#include "meridian/cli/media_analysis_errors.h"

#include <algorithm>
#include <cmath>

#include "meridian/base/printable.h"
#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {

std::string MediaAnalysisCLIFault::message() const {
  std::string text(description(error));
  if (!path.empty()) text += ": " + inQuotes(path);
  if (systemError) text += " (" + systemError.message() + ")";
  return text + "; " + std::string(tableRow(error).remedy);
}

std::string message(MediaAnalysisCLIImageError error) {
  return std::string(description(error)) + "; " + std::string(tableRow(error).remedy);
}

std::vector<MediaAnalysisCLIError> missingOptions(const BasicMediaAnalysisCLIOptions& options) {
  std::vector<MediaAnalysisCLIError> errors;
  if (std::ranges::all_of(options.pathsToAnalyze(), &std::string::empty)) {
    errors.push_back(MediaAnalysisCLIError::pathToAnalyzeNotSupplied);
  }
  if (options.workDirectory().empty()) errors.push_back(MediaAnalysisCLIError::workDirectoryNotSupplied);
  if (options.resultsFilePath().empty()) errors.push_back(MediaAnalysisCLIError::resultsFilePathNotSupplied);
  return errors;
}

std::vector<MediaAnalysisCLIFault> faultsOf(const BasicMediaAnalysisCLIOptions& options) {
  const std::vector<MediaAnalysisCLIError> missing = missingOptions(options);
  std::vector<MediaAnalysisCLIFault> faults;
  const auto reportedAsMissing = [&](MediaAnalysisCLIError error) {
    if (std::ranges::find(missing, error) == missing.end()) return false;
    faults.push_back({error, {}, {}});
    return true;
  };

  if (!reportedAsMissing(MediaAnalysisCLIError::pathToAnalyzeNotSupplied)) {
    for (const std::string& path : options.pathsToAnalyze()) {
      const std::error_code fault = itemError(path);
      if (fault) faults.push_back({MediaAnalysisCLIError::pathToAnalyzeDoesNotExist, path, fault});
    }
  }
  if (!reportedAsMissing(MediaAnalysisCLIError::workDirectoryNotSupplied)) {
    const std::string path(options.workDirectory());
    const std::error_code fault = directoryError(path);
    if (fault) faults.push_back({MediaAnalysisCLIError::workDirectoryDoesNotExist, path, fault});
  }
  if (!reportedAsMissing(MediaAnalysisCLIError::resultsFilePathNotSupplied)) {
    const std::string path(options.resultsFilePath());
    const std::error_code fault = newFileError(path);
    if (fault == std::errc::file_exists) {
      faults.push_back({MediaAnalysisCLIError::resultsFileAlreadyExists, path, {}});
    } else if (fault) {
      faults.push_back({MediaAnalysisCLIError::resultsFilePathNotCreated, path, fault});
    }
  }
  return faults;
}

std::vector<MediaAnalysisCLIImageError> errorsOf(const DistributedMediaAnalysisImageOptions& options) {
  std::vector<MediaAnalysisCLIImageError> errors;
  if (options.snapshotLocations().empty()) errors.push_back(MediaAnalysisCLIImageError::missingSnapshotLocations);
  const float width = options.maxImageWidth();
  if (!(width > 0) || std::isinf(width)) errors.push_back(MediaAnalysisCLIImageError::missingMaxImageWidth);
  return errors;
}

}  // namespace meridian::inline v0_2
