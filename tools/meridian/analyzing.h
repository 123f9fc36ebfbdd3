/// \file
/// Analyses media, for every program that is asked to. For example:
///
///     return analyzeWords(words, {.program = "meridian-media-analysis", .needsResultsFile = true});
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/engine/media_analysis.h"
#include "tools/meridian/command.h"

namespace meridian::command {

/// How an analysis is reported.
struct AnalysisRequest {
  /// What begins each message.
  std::string_view program;
  /// Words that name no results file are an error; otherwise the results are printed.
  bool needsResultsFile = false;
  /// Results that are printed are printed as JSON.
  bool isJson = false;
  /// Decodes everything, whatever the words say.
  bool isDeep = false;
  DeepAnalysisOptions deep = {};
  /// Is called with the results after they are printed or written, if it is set.
  std::function<void(const MediaAnalysis&)> use = {};
};

/// Carries out the media-analysis tool's words. Without a results file, and if none is needed, prints the results.
/// Errors and warnings go to standard error, a line each. Returns `failed` if the words are unusable, in which case
/// nothing is analysed, or if an item has an error. Throws UsageError for JSON to be printed and a results file at
/// once. Throws CommandError if the process that the words name as the parent has ended, or if the results cannot be
/// written; nothing is left then.
[[nodiscard]] Status analyzeWords(std::span<const std::string_view> words, const AnalysisRequest& request);

/// Describes the files and prints the results, likewise.
[[nodiscard]] Status analyzeFiles(std::vector<std::string> paths, const AnalysisRequest& request);

}  // namespace meridian::command
