// meridian analyze: shows what is in media, or carries out the media-analysis tool's arguments.
#include "tools/meridian/analysis_flags.h"
#include "tools/meridian/analyzing.h"

namespace meridian::command {

Subcommand analyzeCommand() {
  using enum Option::Kind;
  return {
      .name = "analyze",
      .description = "Show what is in media files, or analyse them as the media-analysis tool",
      .details =
          "With FILES, each a media file or a directory of numbered images, prints what is in them: container, codec,\n"
          "size, rate, timecode, duration, sound, maker. FILES that cannot be read are errors on standard error; the\n"
          "others are still shown, and the status is 1.\n\n"
          "With words after \"--\", carries out the argument vector of the media-analysis tool; without\n"
          "-resultsFilePath the results are printed:\n" +
          std::string(analysisFlagMeanings) +
          "\"meridian-media-analysis WORD...\" does the same with the argument vector alone, for applications.",
      .example =
          "meridian analyze /card/*.mov\n"
          "meridian analyze --json A001.mov\n"
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
                  {flag, "json", "Print JSON: schema, tool, analysisId, files, warnings"}},
      .action =
          [](const Arguments& arguments) {
            const AnalysisRequest request{.program = "meridian", .isJson = arguments.has("json")};
            if (!arguments.has("files")) return analyzeWords(arguments.words, request);
            return analyzeFiles(arguments.given.at("files"), request);
          },
  };
}

}  // namespace meridian::command
