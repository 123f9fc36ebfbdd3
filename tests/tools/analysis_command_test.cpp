#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "meridian/cli/media_analysis_argument_factory.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using nlohmann::json;
using test::Outcome;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

Outcome analysisArgs(Words words) {
  words.insert(words.begin(), {MERIDIAN_COMMAND, "analysis-args"});
  return test::run(words);
}

Outcome checkOf(Words words, const Words& options = {}) {
  words.insert(words.begin(), {"--check", "--"});
  words.insert(words.begin(), options.begin(), options.end());
  return analysisArgs(words);
}

Words piecesOf(const std::string& text) {
  Words pieces;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\0', begin);
    pieces.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return pieces;
}

TEST(AnalysisArgsCommand, WritesTheVectorOfTheFactoryAndReadsItBack) {
  const test::TemporaryDirectory folder;
  const std::string media = folder.write("A \"1\"\n\xff.mov", "");
  const std::string results = (folder.path() / "r.json").string();
  const Outcome written = analysisArgs(
      {"--path", media, "/nowhere", "--path=-c", "--work-dir", folder.path(), "--results", results, "--null"});
  EXPECT_EQ(written.status, 1);
  EXPECT_THAT(written.output, IsEmpty());
  EXPECT_THAT(written.errors,
              HasSubstr("\"-pathToAnalyze\": has a value that begins with \"-\", which is read as a flag: -c;"));

  const Words options{"--path",     media,           media,          "--path",
                      media,        "--work-dir",    folder.path(),  "--results",
                      results,      "--id",          " 7",           "--deep",
                      "--snapshot", "0.5",           "1e3",          "--snapshot",
                      "0",          "--max-width",   "1920",         "--height",
                      "1080",       "--compression", "0.1",          "--finder-images",
                      "--lut",      "l.cube",        "--parent-pid", "42"};
  Words expected =
      MediaAnalysisCLIArgumentFactory::buildBasicOptions({media, media, media}, folder.path(), results, " 7", true)
          .commandLineArguments();
  const Words rest{"-snapshotLocation",
                   "0.5",
                   "-snapshotLocation",
                   "1000.0",
                   "-snapshotLocation",
                   "0.0",
                   "-maxImageWidth",
                   "1920.0",
                   "-imageHeight",
                   "1080.0",
                   "-compressionFactor",
                   "0.1",
                   "-allowFinderImages",
                   "-lutFile",
                   "l.cube",
                   "-parentPid",
                   "42"};
  expected.insert(expected.end(), rest.begin(), rest.end());
  Words withNull = options;
  withNull.emplace_back("--null");
  const Outcome outcome = analysisArgs(withNull);
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(piecesOf(outcome.output), expected);

  Words withJson = options;
  withJson.emplace_back("--json");
  const Outcome asJson = analysisArgs(withJson);
  EXPECT_EQ(json::parse(asJson.output).size(), expected.size());
  EXPECT_THAT(asJson.errors, HasSubstr("not valid UTF-8"));

  const Outcome checked = checkOf(expected, {"--json"});
  EXPECT_EQ(checked.status, 0) << checked.output;
  const json document = json::parse(checked.output);
  EXPECT_EQ(document["basic"]["pathsToAnalyze"].size(), 3U);
  EXPECT_EQ(document["image"]["snapshotLocations"].dump(), "[0.5,1000.0,0.0]");
  EXPECT_EQ(document["image"]["compressionFactor"].dump(), "0.1");
  EXPECT_EQ(document["custodial"], json({{"parentPid", 42}, {"parentAppNumber", nullptr}}));
  EXPECT_THAT(document["errors"], IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(results));
}

TEST(AnalysisArgsCommand, CheckReportsEveryErrorAndEveryWarning) {
  const test::TemporaryDirectory folder;
  const std::string results = folder.write("r.json", "{}");
  const Words words{"stray\x1b", "-pathToAnalyze", "/nowhere", "-resultsFilePath",
                    results,     "-maxImageWidth", "wide",     "-deepAnalisys"};
  const Outcome shown = checkOf(words);
  EXPECT_EQ(shown.status, 1);
  EXPECT_THAT(shown.output,
              AllOf(HasSubstr("\"/nowhere\": the path to analyze does not exist: No such file or directory; check"),
                    HasSubstr("no work directory is given"), HasSubstr("the results file already exists"),
                    HasSubstr("no position to take an image at"), HasSubstr("no image width above 0"),
                    HasSubstr("\"stray\\x1b\": comes before"), HasSubstr("\"-maxImageWidth\": needs a number"),
                    HasSubstr("did you mean -deepAnalysis?"), Not(HasSubstr("\x1b"))));
  const json document = json::parse(checkOf(words, {"--json"}).output);
  Words errors;
  for (const json& error : document["errors"]) errors.push_back(error["code"]);
  EXPECT_EQ(errors, (Words{"pathToAnalyzeDoesNotExist", "workDirectoryNotSupplied", "resultsFileAlreadyExists"}));
  EXPECT_EQ(document["imageErrors"].size(), 2U);
  EXPECT_EQ(document["errors"][0]["place"], "/nowhere");
  Words warnings;
  for (const json& warning : document["warnings"]) warnings.push_back(warning["code"]);
  EXPECT_EQ(warnings, (Words{"strayWord", "unreadableNumber", "unknownFlag"}));
  EXPECT_EQ(document["warnings"][1]["value"], "wide");
  EXPECT_EQ(document["warnings"][2]["value"], nullptr);
  EXPECT_EQ(document["warnings"][2]["suggestion"], "-deepAnalysis");
  EXPECT_EQ(checkOf({}).status, 1);
  // A warning alone makes the exit status 1.
  const Words sound{"-pathToAnalyze", "/", "-workDirectory", "/", "-resultsFilePath", folder.path() / "new"};
  EXPECT_EQ(checkOf(sound).status, 0);
  Words withUnknown = sound;
  withUnknown.emplace_back("-deep");
  EXPECT_EQ(checkOf(withUnknown).status, 1);
}

TEST(AnalysisArgsCommand, SaysWhatIsWrongWithItsOptions) {
  struct Case {
    Words more;
    int status;
    std::string says;
  };
  const Case cases[]{
      {{"--height", "3"}, 2, "image options need --snapshot and --max-width"},
      {{"--snapshot", "3"}, 2, "image options need --snapshot and --max-width"},
      {{"--snapshot", "3", "--max-width", "wide"},
       1,
       "\"wide\" is not a number for --max-width; expected one such as 0.5"},
      {{"--snapshot", "3", "--max-width", "0"}, 1, "no image width above 0 is given"},
      {{"--snapshot=-0.5", "--max-width", "9"},
       1,
       "has a value below 0, which is read as a flag because it begins with \"-\": -0.5"},
      {{"--snapshot", "1e39", "--max-width", "9"}, 1, "\"1e39\" is not a number for --snapshot"},
      {{"--parent-pid", "4294967296"}, 1, "\"4294967296\" is not a process identifier for --parent-pid"},
      {{"--id", ""}, 0, ""},
      {{"--work-dir", "/w"}, 2, "--work-dir is given more than once"},
      {{"--json", "--null"}, 2, "--json and --null cannot be used together"},
      {{"--", "-x"}, 2, "accepts no words after \"--\" without --check"},
      {{"--check", "--", "-x"}, 2, "--check reads a vector and cannot be used with --path"},
      {{"--check"}, 2, "meridian analysis-args --check -- -pathToAnalyze"},
  };
  for (const auto& [more, status, says] : cases) {
    Words words{"--path", "/a", "--work-dir", "/w", "--results", "/r"};
    words.insert(words.end(), more.begin(), more.end());
    const Outcome outcome = analysisArgs(words);
    EXPECT_EQ(outcome.status, status) << testing::PrintToString(more);
    EXPECT_THAT(outcome.errors, HasSubstr(says));
    EXPECT_EQ(outcome.output.empty(), status != 0) << testing::PrintToString(more);
  }
  EXPECT_THAT(analysisArgs({}).errors, StartsWith("meridian: --path is missing"));
  EXPECT_THAT(analysisArgs({"--path", "a", "--results", "r"}).errors, StartsWith("meridian: --work-dir is missing"));
  const Outcome empty = analysisArgs({"--path", "", "--work-dir", "", "--results", "/r"});
  EXPECT_EQ(empty.status, 1);
  EXPECT_THAT(empty.errors, AllOf(HasSubstr("no path to analyze is given"), HasSubstr("no work directory is given")));
  EXPECT_THAT(analysisArgs({"--help"}).output, AllOf(HasSubstr("[-- WORD...]"), HasSubstr("Example:\n  ")));
}

}  // namespace
}  // namespace meridian
