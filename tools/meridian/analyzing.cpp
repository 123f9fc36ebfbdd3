#include "tools/meridian/analyzing.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <iostream>
#include <list>
#include <nlohmann/json.hpp>
#include <optional>
#include <stop_token>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/cli/media_analysis_argument_factory.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_reading.h"
#include "meridian/platform/path_text.h"
#include "meridian/platform/process_watch.h"
#include "meridian/serialization/media_analysis_json.h"
#include "tools/meridian/engine_module.h"
#include "tools/meridian/interruption.h"
#include "tools/meridian/media_report.h"
#include "tools/meridian/output.h"
#include "tools/meridian/progress_bar.h"
#include "tools/meridian/terminal.h"

namespace meridian::command {
namespace {

using Factory = MediaAnalysisCLIArgumentFactory;

/// What is analysed, and for whom.
struct AnalysisWork {
  const BasicMediaAnalysisCLIOptions& basic;
  const DistributedMediaAnalysisImageOptions* image = nullptr;
  std::optional<std::int32_t> parent = std::nullopt;
};

void report(const AnalysisRequest& request, std::string_view kind, std::string_view message) {
  std::cerr << request.program << ": " << kind << message << '\n';
}

/// Words without which something else would be analysed than is meant: an image without its LUT, for example.
bool isError(MediaAnalysisCLIWarningCode code) noexcept {
  using enum MediaAnalysisCLIWarningCode;
  return code == unknownFlag || code == missingValue || code == unreadableNumber || code == unreadableInteger;
}

/// Returns true if the words are usable; reports what is wrong with them.
bool areUsable(const MediaAnalysisCLIReading& read, const AnalysisRequest& request) {
  using enum MediaAnalysisCLIError;
  bool isUsable = true;
  for (const MediaAnalysisCLIWarning& warning : read.warnings) {
    report(request, isError(warning.code) ? "" : "warning: ", warning.message());
    isUsable = isUsable && !isError(warning.code);
  }
  for (const MediaAnalysisBasicOptionsError& error : errorsOf(read.basic)) {
    // A path that does not exist is an error of its item. What is not needed may be missing, and the engine looks at
    // what it needs itself.
    const bool isOfResults = error.code == resultsFileAlreadyExists || error.code == resultsFilePathNotCreated;
    const bool isMissing = error.code == resultsFilePathNotSupplied || error.code == workDirectoryNotSupplied;
    if (!isOfResults && !(isMissing && request.needsResultsFile)) continue;
    report(request, "", error.message());
    isUsable = false;
  }
  return isUsable;
}

/// Returns the analysis; absent if the options are unusable, which is reported. Throws CommandError if the parent ends.
std::optional<MediaAnalysis> analyzed(const AnalysisWork& work, const AnalysisRequest& request,
                                      const std::stop_source& stop) {
  std::atomic<bool> parentHasEnded = false;
  std::optional<ProcessWatch> parent;
  if (work.parent) {
    parent.emplace(*work.parent, [&parentHasEnded, stop]() mutable {
      parentHasEnded = true;
      stop.request_stop();
    });
  }
  ProgressBar bar;
  const auto show = [&bar](const MediaAnalysisProgress& progress) {
    const std::string place = std::to_string(progress.item + 1) + " of " + std::to_string(progress.itemCount) + ' ';
    const std::size_t columns = standardErrorWidth().value_or(ProgressBar::columns);
    const std::size_t left = columns - std::min(columns, ProgressBar::columns + place.size());
    bar.show(place + shortened(printable(lastPathComponent(progress.path)), left), progress.portion);
  };
  auto analysis = engineModule().analyze(work.basic, work.image, show, stop.get_token(), request.deep);
  bar.clear();
  if (parentHasEnded) {
    if (analysis) engineModule().removeImages(*analysis);
    throw CommandError("process " + std::to_string(*work.parent) +
                       ", for which -parentPid asks, has ended; the analysis was stopped and nothing is left of it");
  }
  if (analysis) return *std::move(analysis);
  for (const MediaAnalysisError& error : analysis.error()) report(request, "", messageOf(error));
  return std::nullopt;
}

void reportFindings(const MediaAnalysis& analysis, const AnalysisRequest& request) {
  for (const MediaAnalysisWarning& warning : analysis.warnings) report(request, "warning: ", warning.message());
  for (const LutWarning& warning : analysis.lutWarnings) report(request, "warning: ", warning.message());
  for (const MediaAnalysisItem& item : analysis.items) {
    if (item.description) {
      for (const MediaWarning& warning : item.description->warnings) report(request, "warning: ", warning.message());
    }
    if (item.error) report(request, "", messageOf(*item.error));
  }
}

void warnOfInvalidPaths(const MediaAnalysis& analysis, const AnalysisRequest& request) {
  std::size_t count = 0;
  for (const MediaAnalysisItem& item : analysis.items) {
    if (!isValidUtf8(item.path)) ++count;
    const auto isInvalid = [](const MediaAnalysisImage& image) { return !isValidUtf8(image.path); };
    count += static_cast<std::size_t>(std::ranges::count_if(item.images, isInvalid));
  }
  warnOfInvalid(count, "path", "\"files\" is in the order of the paths", request.program);
}

void printResults(const MediaAnalysis& analysis, const AnalysisRequest& request) {
  if (request.isJson) {
    warnOfInvalidPaths(analysis, request);
    printJson(analysis);
  } else {
    printMediaReport(analysis);
  }
}

/// Lets the images go with a process that a signal ends.
std::list<RemovedOnInterruption> removedImages(const MediaAnalysis& analysis) {
  std::list<RemovedOnInterruption> removed;
  if (!analysis.imageDirectory.empty()) removed.emplace_back(analysis.imageDirectory);
  for (const MediaAnalysisItem& item : analysis.items) {
    for (const MediaAnalysisImage& image : item.images) removed.emplace_back(image.path);
  }
  return removed;
}

/// Returns the analysis as `analyzed`. A signal ends the process when nothing is left of the analysis.
std::optional<MediaAnalysis> analyzedUnlessInterrupted(const AnalysisWork& work, const AnalysisRequest& request) {
  const std::stop_source stop;
  const StopOnInterruption interruption(stop);
  auto analysis = analyzed(work, request, stop);
  if (analysis && stop.stop_requested()) engineModule().removeImages(*analysis);
  interruption.endIfInterrupted();
  return analysis;
}

Status analyze(const AnalysisWork& work, const AnalysisRequest& request) {
  // A file that gets too large for the process, or a pipe without a reader, is an error like a full volume.
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  std::optional<InterruptionsHeld> held(std::in_place);
  const auto analysis = analyzedUnlessInterrupted(work, request);
  if (!analysis) return failed;
  const std::string path(work.basic.resultsFilePath());
  if (path.empty()) {
    // The reader of the results may be slow.
    const std::list<RemovedOnInterruption> unfinished = removedImages(*analysis);
    held.reset();
    printResults(*analysis, request);
    if (!std::cout.flush()) {
      engineModule().removeImages(*analysis);
      throw CommandError("standard output cannot be written");
    }
  } else {
    warnOfInvalidPaths(*analysis, request);
    if (const auto written = writeMediaAnalysis(*analysis, path); !written) {
      engineModule().removeImages(*analysis);
      throw CommandError(written.error());
    }
  }
  reportFindings(*analysis, request);
  if (request.use) request.use(*analysis);
  return analysis->isFlawless() ? done : failed;
}

}  // namespace

Status analyzeWords(std::span<const std::string_view> words, const AnalysisRequest& request) {
  const MediaAnalysisCLIReading read = readMediaAnalysisArguments(words);
  if (request.isJson && !read.basic.resultsFilePath().empty()) {
    throw UsageError("--json prints the results, which -resultsFilePath writes to a file; give only one of them");
  }
  if (!areUsable(read, request)) return failed;
  const auto paths = read.basic.pathsToAnalyze();
  Factory::BasicOptions basic = read.basic;
  if (request.isDeep) {
    const auto identifier = read.basic.analysisId();
    basic = Factory::buildBasicOptions({paths.begin(), paths.end()}, std::string(read.basic.workDirectory()),
                                       std::string(read.basic.resultsFilePath()),
                                       identifier ? std::optional(std::string(*identifier)) : std::nullopt, true);
  }
  return analyze({basic, read.image ? &*read.image : nullptr, read.custodial.parentPid()}, request);
}

Status analyzeFiles(std::vector<std::string> paths, const AnalysisRequest& request) {
  if (std::ranges::find(paths, "") != paths.end()) throw UsageError("a name among FILES is empty");
  return analyze({Factory::buildBasicOptions(std::move(paths), {}, {}, std::nullopt, request.isDeep)}, request);
}

}  // namespace meridian::command
