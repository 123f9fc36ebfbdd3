// Argument vectors of the analysis tool of any bytes: what was read is written and read again without a loss.
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

MediaAnalysisCLIReading readingOf(const std::vector<std::string>& words) {
  return readMediaAnalysisArguments(std::vector<std::string_view>(words.begin(), words.end()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Without any byte `data` may be null.
  const std::string_view input = size == 0 ? "" : std::string_view(reinterpret_cast<const char*>(data), size);
  const MediaAnalysisCLIReading read = readingOf(fuzz::wordsOf(input));
  for (const MediaAnalysisCLIRemark& remark : read.remarks)
    require(!remark.message().empty(), "each remark says something");
  require(read.allFlagsAreValid() == !read.unknownFlags().has_value(), "unknown flags are named");

  std::vector<std::string> words;
  const auto write = [&words](const MediaAnalysisCLIOptions& options) {
    require(lossesInReading(options).empty(), "what was read can be read");
    for (std::string& word : options.commandLineArguments()) words.push_back(std::move(word));
  };
  write(read.basic);
  if (read.image) write(*read.image);
  write(read.custodial);
  const MediaAnalysisCLIReading again = readingOf(words);
  require(again.basic == read.basic && again.image == read.image && again.custodial == read.custodial,
          "written options read back");
  require(again.remarks.empty(), "a written vector has no remarks");
  require(missingOptions(again.basic) == missingOptions(read.basic), "the same is missing");
  return 0;
}
