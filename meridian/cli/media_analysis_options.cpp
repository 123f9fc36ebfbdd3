#include "meridian/cli/media_analysis_options.h"

#include "meridian/base/numbers.h"
#include "meridian/cli/media_analysis_flags.h"
#include "meridian/cli/sanitizer.h"

namespace meridian::inline v0_2 {

MediaAnalysisCLIOptions::~MediaAnalysisCLIOptions() = default;
BasicMediaAnalysisCLIOptions::~BasicMediaAnalysisCLIOptions() = default;
DistributedMediaAnalysisImageOptions::~DistributedMediaAnalysisImageOptions() = default;
MediaAnalysisCLICustodialOptions::~MediaAnalysisCLICustodialOptions() = default;

std::vector<std::string> MediaAnalysisCLIOptions::commandLineArguments() const {
  std::vector<std::string> elements;
  enumerateArguments([&elements](std::string_view flag, std::optional<std::string_view> value) {
    elements.emplace_back(flag);
    if (value) elements.emplace_back(*value);
  });
  return elements;
}

TextDictionary MediaAnalysisCLIOptions::dictionaryOfArguments() const {
  TextDictionary dictionary;
  enumerateArguments([&dictionary](std::string_view flag, std::optional<std::string_view> value) {
    dictionary.set(flag, value.value_or(std::string_view()));
  });
  return dictionary;
}

void BasicMediaAnalysisCLIOptions::enumerateArguments(ArgumentBlock block) const {
  const std::string pathFlag = cliFlag(MediaAnalysisCLIFlag::pathToAnalyze);
  for (const std::string& path : pathsToAnalyze()) block(pathFlag, path);
  block(cliFlag(MediaAnalysisCLIFlag::workDirectory), workDirectory());
  block(cliFlag(MediaAnalysisCLIFlag::resultsFilePath), resultsFilePath());
  if (const auto id = analysisId()) block(cliFlag(MediaAnalysisCLIFlag::analysisId), id);
  if (deepAnalysis()) block(cliFlag(MediaAnalysisCLIFlag::deepAnalysis), std::nullopt);
}

void DistributedMediaAnalysisImageOptions::enumerateArguments(ArgumentBlock block) const {
  using Flag = MediaAnalysisImageCLIFlags;
  const auto tell = [&block](Flag flag, std::optional<float> number) {
    if (number) block(cliFlag(flag), shortestDecimalText(*number));
  };
  for (const float location : snapshotLocations()) tell(Flag::snapshotLocation, location);
  tell(Flag::maxImageWidth, maxImageWidth());
  tell(Flag::imageHeight, imageHeight());
  tell(Flag::compressionFactor, compressionFactor());
  if (allowFinderImages()) block(cliFlag(Flag::allowFinderImages), std::nullopt);
  if (const auto path = lutToApply()) block(cliFlag(Flag::lutFile), path);
}

void MediaAnalysisCLICustodialOptions::enumerateArguments(ArgumentBlock block) const {
  const auto pid = parentPid();
  if (!pid) return;
  block(cliFlag(CLICustodialFlag::parentPid), std::to_string(*pid));
  if (const auto number = parentAppNumber()) block(cliFlag(CLICustodialFlag::parentAppNumber), std::to_string(*number));
}

}  // namespace meridian::inline v0_2
