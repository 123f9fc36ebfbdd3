/// \file
/// The flags of the media-analysis tool as words, for completion.
#pragma once

#include <string>
#include <vector>

#include "meridian/cli/media_analysis_flags.h"

namespace meridian::command {

/// Returns all flags as they are written: "-pathToAnalyze".
[[nodiscard]] inline std::vector<std::string> analysisFlags() {
  std::vector<std::string> flags;
  for (const auto flag : allCases<MediaAnalysisCLIFlag>()) flags.push_back(cliFlag(flag));
  for (const auto flag : allCases<MediaAnalysisImageCLIFlags>()) flags.push_back(cliFlag(flag));
  for (const auto flag : allCases<CLICustodialFlag>()) flags.push_back(cliFlag(flag));
  return flags;
}

}  // namespace meridian::command
