// meridian analyze: shows what is in media, or carries out the media-analysis tool's arguments.
#include <algorithm>
#include <string>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/platform/file_identity.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/analysis_flags.h"
#include "tools/meridian/analyzing.h"
#include "tools/meridian/loaded_module.h"
#include "tools/meridian/plot_module.h"
#include "tools/meridian/replacement_file.h"

namespace meridian::command {
namespace {

Status analyzed(const Arguments& arguments, const AnalysisRequest& request) {
  if (!arguments.has("files")) return analyzeWords(arguments.words, request);
  return analyzeFiles(arguments.given.at("files"), request);
}

/// Returns the path that the words name.
std::string analyzedPath(const Arguments& arguments) {
  const auto flag = std::ranges::find(arguments.words, cliFlag(MediaAnalysisCLIFlag::pathToAnalyze));
  return flag == arguments.words.end() || flag + 1 == arguments.words.end() ? std::string() : std::string(flag[1]);
}

Status analyzedWithPlot(const Arguments& arguments, AnalysisRequest request, const std::string& path) {
  if (!equalsIgnoringCase(pathExtension(path), "png")) {
    throw CommandError(inQuotes(path) + " is not the name of a PNG image; expected one that ends in .png");
  }
  const bool isSingle = arguments.has("files")
                            ? arguments.given.at("files").size() == 1
                            : std::ranges::count(arguments.words, cliFlag(MediaAnalysisCLIFlag::pathToAnalyze)) == 1;
  if (!isSingle) throw UsageError("--plot draws one item; name one");
  const std::string source = arguments.has("files") ? arguments.given.at("files").front() : analyzedPath(arguments);
  const auto there = targetIdentity(path);
  const auto folder = targetIdentity(std::string(deletingLastPathComponent(path)));
  const auto analyzedItem = targetIdentity(source);
  if (analyzedItem && (there == analyzedItem || folder == analyzedItem)) {
    throw CommandError(inQuotes(path) + " is what is analysed, or in it; choose another name");
  }
  // Whatever keeps the image from being drawn is known before everything is decoded.
  const auto& plots = loadedModule<PlotModule>(MERIDIAN_PLOT_MODULE, plotModuleEntry, "draw", "cairo");
  WholeFile replacement = createReplacement(path);
  request.deep = plotOptions;
  request.use = [&](const MediaAnalysis& analysis) {
    if (!analysis.items.front().deep) return;
    plots.plotAnalysis(analysis.items.front(), replacement.unfinishedPath());
    publishReplacement(replacement, path);
  };
  return analyzed(arguments, request);
}

}  // namespace

Subcommand analyzeCommand() {
  using enum Option::Kind;
  return {
      .name = "analyze",
      .description = "Show what is in media files, or analyse them as the media-analysis tool",
      .details =
          "With FILES, each a media file or a directory of numbered images, prints what is in them: container, codec,\n"
          "size, rate, timecode, duration, sound, maker. FILES that cannot be read are errors on standard error; the\n"
          "others are still shown, and the status is 1.\n\n"
          "--deep decodes each once from beginning to end and adds what it finds: the number of frames, damage, "
          "black,\n"
          "frozen and silent stretches, scene changes, fields, luma, loudness by EBU R 128, and an MD5 of each "
          "stream.\n"
          "--plot draws that as a page. Damage is an error.\n\n"
          "With words after \"--\", carries out the argument vector of the media-analysis tool; without\n"
          "-resultsFilePath the results are printed:\n" +
          std::string(analysisFlagMeanings) +
          "\"meridian-media-analysis WORD...\" does the same with the argument vector alone, for applications.",
      .example =
          "meridian analyze /card/*.mov\n"
          "meridian analyze --json A001.mov\n"
          "meridian analyze --deep --plot A001.png A001.mov\n"
          "meridian analyze -- -pathToAnalyze A001.mov -workDirectory /tmp -snapshotLocation 0.5 -maxImageWidth 640",
      .takesWords = true,
      .wordsAlternative = "files",
      .wordFlags = analysisFlags(),
      .options = {{.kind = positional,
                   .name = "files",
                   .help = "Media files, or directories of numbered images",
                   .valueName = "FILES",
                   .optional = true,
                   .repeated = true,
                   .path = true},
                  {flag, "json", "Print JSON: schema, tool, analysisId, files, warnings"},
                  {flag, "deep", "Decode everything, and show what that finds"},
                  {.kind = value,
                   .name = "plot",
                   .help = "With --deep, draw what it finds in a single item as this PNG image",
                   .valueName = "OUT.png",
                   .path = true}},
      .action =
          [](const Arguments& arguments) {
            const AnalysisRequest request{
                .program = "meridian", .isJson = arguments.has("json"), .isDeep = arguments.has("deep")};
            const auto path = arguments.value("plot");
            if (!path) return analyzed(arguments, request);
            if (!request.isDeep) throw UsageError("--plot draws what --deep finds; give both");
            return analyzedWithPlot(arguments, request, *path);
          },
  };
}

}  // namespace meridian::command
