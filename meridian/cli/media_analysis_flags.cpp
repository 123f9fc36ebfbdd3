#include "meridian/cli/media_analysis_flags.h"

#include <utility>
#include <vector>

namespace meridian::inline v0_2 {

std::string cliFlag(MediaAnalysisCLIFlag flag) { return "-" + std::string(rawValue(flag)); }

std::string cliFlag(MediaAnalysisImageCLIFlags flag) { return "-" + std::string(rawValue(flag)); }

std::string snapShotLocationsCLIValue() { return cliFlag(MediaAnalysisImageCLIFlags::snapshotLocation); }

CLIArgumentSanitizer sanitizeAll(CLISanitizationOptions options) {
  std::vector<std::string> flags;
  for (const MediaAnalysisImageCLIFlags flag : allCases<MediaAnalysisImageCLIFlags>()) flags.push_back(cliFlag(flag));
  return CLIArgumentSanitizer(std::move(flags), options);
}

}  // namespace meridian::inline v0_2
