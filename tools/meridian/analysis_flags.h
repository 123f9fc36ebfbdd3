/// \file
/// The flags of the media-analysis tool, for help and completion.
#pragma once

#include <string>
#include <string_view>
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

/// One line for each flag.
inline constexpr std::string_view analysisFlagMeanings =
    "  -pathToAnalyze      A media file or a directory of numbered images; again for more\n"
    "  -workDirectory      Where still images go, as JPEG files in a new directory\n"
    "  -resultsFilePath    Gets the results as JSON, and must not exist\n"
    "  -analysisId         The name of the new directory, and what the names of its images begin with\n"
    "  -snapshotLocation   Takes an image at each of these parts of the duration, from 0 to 1\n"
    "  -maxImageWidth      The largest width of an image in pixels; images need it\n"
    "  -imageHeight        The height of an image, unless it would become too wide or be enlarged\n"
    "  -compressionFactor  The quality of an image from 0 to 1, the best; 0.8 if left out\n"
    "  -lutFile            Applies this LUT to the images\n"
    "  -deepAnalysis       Decodes everything: frames, damage, black, silence, scenes, loudness, MD5\n"
    "  -allowFinderImages  Has no meaning on this platform\n"
    "  -parentPid          Stops when the process with this number ends\n"
    "  -parentAppNumber    Tells which application started the tool; changes nothing\n";

}  // namespace meridian::command
