// Argument vectors of the analysis tool from any bytes: options that were read are written and read back unchanged.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "fuzz/words.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_reading.h"

using namespace meridian;
using fuzz::require;

namespace {

MediaAnalysisCLIReading readingOf(const std::vector<std::string>& words) { return readMediaAnalysisArguments(words); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Without input, `data` may be null.
  const std::string_view input = size == 0 ? "" : std::string_view(reinterpret_cast<const char*>(data), size);
  const MediaAnalysisCLIReading read = readingOf(fuzz::wordsOf(input));
  for (const MediaAnalysisCLIWarning& warning : read.warnings)
    require(!warning.message().empty(), "each warning has a message");
  require(read.allFlagsAreValid() == !read.unknownFlags().has_value(), "unknown flags are listed");

  std::vector<std::string> words;
  const auto write = [&words](const MediaAnalysisCLIOptions& options) {
    require(warningsOfWriting(options).empty(), "options that were read can be written");
    for (std::string& word : options.commandLineArguments()) words.push_back(std::move(word));
  };
  write(read.basic);
  if (read.image) write(*read.image);
  write(read.custodial);
  const MediaAnalysisCLIReading again = readingOf(words);
  require(again.basic == read.basic && again.image == read.image && again.custodial == read.custodial,
          "written options read back");
  require(again.warnings.empty(), "a written vector reads without warnings");
  require(errorsOfMissingOptions(again.basic) == errorsOfMissingOptions(read.basic), "the same options are missing");
  return 0;
}
