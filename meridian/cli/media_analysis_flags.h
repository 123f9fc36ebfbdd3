/// \file
/// The flags of the media-analysis tool's command line, and which values they accept. For example:
///
///     cliFlag(MediaAnalysisCLIFlag::workDirectory);                   // "-workDirectory"
///     tableRow(MediaAnalysisImageCLIFlags::snapshotLocation).repeats  // true
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/cli/sanitizer.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The kind of value that follows a flag of the analysis tool.
enum class MediaAnalysisCLIValue : std::uint8_t {
  none,
  /// A path or an identifier: any text that does not begin with "-", kept as written.
  text,
  /// A finite 32-bit float, 0 or more.
  number,
  /// A whole number from 0 to 2147483647.
  integer,
};

/// One line of a table of the analysis tool's flags. If `repeats` is true, all values of the flag count; otherwise the
/// last one.
template <typename Flag>
struct MediaAnalysisFlagRow {
  Flag value;
  std::string_view rawValue;
  MediaAnalysisCLIValue accepts = MediaAnalysisCLIValue::none;
  bool repeats = false;
  std::string_view description = {};
};

/// What is analysed, and where the results go.
enum class MediaAnalysisCLIFlag : std::uint8_t {
  pathToAnalyze,
  analysisId,
  workDirectory,
  resultsFilePath,
  deepAnalysis,
};

template <>
struct EnumerationTable<MediaAnalysisCLIFlag> {
  static constexpr auto rows = std::to_array<MediaAnalysisFlagRow<MediaAnalysisCLIFlag>>({
      {MediaAnalysisCLIFlag::pathToAnalyze, "pathToAnalyze", MediaAnalysisCLIValue::text, true},
      {MediaAnalysisCLIFlag::analysisId, "analysisId", MediaAnalysisCLIValue::text},
      {MediaAnalysisCLIFlag::workDirectory, "workDirectory", MediaAnalysisCLIValue::text},
      {MediaAnalysisCLIFlag::resultsFilePath, "resultsFilePath", MediaAnalysisCLIValue::text},
      {MediaAnalysisCLIFlag::deepAnalysis, "deepAnalysis", MediaAnalysisCLIValue::none},
  });
};

/// Which still images are taken.
enum class MediaAnalysisImageCLIFlags : std::uint8_t {
  compressionFactor,
  snapshotLocation,
  maxImageWidth,
  imageHeight,
  allowFinderImages,
  lutFile,
};

template <>
struct EnumerationTable<MediaAnalysisImageCLIFlags> {
  static constexpr auto rows = std::to_array<MediaAnalysisFlagRow<MediaAnalysisImageCLIFlags>>({
      {MediaAnalysisImageCLIFlags::compressionFactor, "compressionFactor", MediaAnalysisCLIValue::number},
      {MediaAnalysisImageCLIFlags::snapshotLocation, "snapshotLocation", MediaAnalysisCLIValue::number, true},
      {MediaAnalysisImageCLIFlags::maxImageWidth, "maxImageWidth", MediaAnalysisCLIValue::number},
      {MediaAnalysisImageCLIFlags::imageHeight, "imageHeight", MediaAnalysisCLIValue::number},
      {MediaAnalysisImageCLIFlags::allowFinderImages, "allowFinderImages", MediaAnalysisCLIValue::none},
      {MediaAnalysisImageCLIFlags::lutFile, "lutFile", MediaAnalysisCLIValue::text},
  });
};

/// Returns the flag as it is written on a command line: "-pathToAnalyze", "-snapshotLocation".
[[nodiscard]] MERIDIAN_API std::string cliFlag(MediaAnalysisCLIFlag flag);
[[nodiscard]] MERIDIAN_API std::string cliFlag(MediaAnalysisImageCLIFlags flag);

/// Returns the flag that is written before each snapshot location: "-snapshotLocation".
[[nodiscard]] MERIDIAN_API std::string snapShotLocationsCLIValue();

/// Returns a sanitizer that knows the image flags alone, and applies the options to every word before it looks for
/// flags.
[[nodiscard]] MERIDIAN_API CLIArgumentSanitizer sanitizeAll(CLISanitizationOptions options);

}  // namespace meridian::inline v0_2
