// The media-analysis tool as applications start it: with an argument vector and nothing else.
#include <iostream>
#include <string>

#include "meridian/version.h"
#include "tools/meridian/analysis_flags.h"
#include "tools/meridian/analyzing.h"
#include "tools/meridian/program.h"

namespace meridian::command {
namespace {

constexpr std::string_view programName = "meridian-media-analysis";

void printUsage() {
  std::cout << "Usage: " << programName
            << " -pathToAnalyze PATH... -workDirectory DIR -resultsFilePath FILE [FLAG [VALUE]]...\n"
               "Describes media files and takes still images of them.\n\n"
            << analysisFlagMeanings;
}

Status runMediaAnalysis(std::span<const std::string_view> words) {
  if (words.empty()) throw UsageError("no arguments are given; --help prints the usage");
  if (words.size() == 1 && (words.front() == "--help" || words.front() == "-h")) {
    printUsage();
    return done;
  }
  if (words.size() == 1 && words.front() == "--version") {
    std::cout << programName << ' ' << versionText() << '\n';
    return done;
  }
  return analyzeWords(words, {.program = programName, .needsResultsFile = true});
}

}  // namespace
}  // namespace meridian::command

int main(int argc, char** argv) {
  using namespace meridian::command;
  return runProgram(programName, argc, argv, runMediaAnalysis);
}
