#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

#include "meridian/base/numbers.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_flags.h"
#include "meridian/cli/media_analysis_reading.h"
#include "tests/cli/random_words.h"
#include "tests/support/temporary_folder.h"

namespace meridian {
namespace {

using Factory = MediaAnalysisCLIArgumentFactory;
using Words = std::vector<std::string>;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

MediaAnalysisCLIReading readingOf(const Words& words) {
  return readMediaAnalysisArguments(std::vector<std::string_view>(words.begin(), words.end()));
}

/// The dictionary's entries in their order.
Words entriesOf(const CliArgumentStore& store) {
  Words entries;
  for (const auto& [flag, value] : store.flagValueLookup()) entries.push_back(flag + "=" + value);
  return entries;
}

TEST(MediaAnalysisTest, OptionsRenderInTheirOrder) {
  const auto plain = Factory::buildBasicOptions({"/b", "/a b"}, "/w", "/r", std::nullopt, false);
  EXPECT_THAT(plain.commandLineArguments(), ElementsAre("-pathToAnalyze", "/b", "-pathToAnalyze", "/a b",
                                                        "-workDirectory", "/w", "-resultsFilePath", "/r"));
  EXPECT_THAT(entriesOf(plain), ElementsAre("-pathToAnalyze=/a b", "-workDirectory=/w", "-resultsFilePath=/r"));
  const auto deep = Factory::buildBasicOptions({}, "", "/r", "", true);
  EXPECT_THAT(deep.commandLineArguments(),
              ElementsAre("-workDirectory", "", "-resultsFilePath", "/r", "-analysisId", "", "-deepAnalysis"));
  EXPECT_THAT(entriesOf(deep), ElementsAre("-workDirectory=", "-resultsFilePath=/r", "-analysisId=", "-deepAnalysis="));
  EXPECT_EQ(deep.cliString(), "-workDirectory-resultsFilePath/r-analysisId-deepAnalysis");

  const auto wide = Factory::buildImageOptions({0.5F, 16777216.0F}, 1920, 0.1F, true, "/l.cube");
  EXPECT_THAT(wide.commandLineArguments(),
              ElementsAre("-snapshotLocation", "0.5", "-snapshotLocation", "16777216.0", "-maxImageWidth", "1920.0",
                          "-compressionFactor", "0.1", "-allowFinderImages", "-lutFile", "/l.cube"));
  EXPECT_THAT(entriesOf(wide), ElementsAre("-snapshotLocation=16777216.0", "-maxImageWidth=1920.0",
                                           "-compressionFactor=0.1", "-allowFinderImages=", "-lutFile=/l.cube"));
  const auto fixed = Factory::buildImageOptions({}, 1920, 1080, std::nullopt, false, std::nullopt);
  EXPECT_THAT(fixed.commandLineArguments(), ElementsAre("-maxImageWidth", "1920.0", "-imageHeight", "1080.0"));

  EXPECT_THAT(Factory::custodialOptions(42).commandLineArguments(), ElementsAre("-parentPid", "42"));
  EXPECT_THAT(entriesOf(Factory::CustodialOptions(-1, 3)), ElementsAre("-parentPid=-1", "-parentAppNumber=3"));
  EXPECT_THAT(entriesOf(Factory::CustodialOptions(std::nullopt, 3)), IsEmpty());
}

TEST(MediaAnalysisTest, ImageFlagsGoToTheSanitizer) {
  const CLIArgumentSanitizer sanitizer = sanitizeAll(CLISanitizationOptions::lowercase);
  EXPECT_EQ(sanitizer.flagSanitizationOptions(), CLISanitizationOptions::lowercase);
  EXPECT_THAT(sanitizer.validCommandFlags(), ElementsAre("-compressionFactor", "-snapshotLocation", "-maxImageWidth",
                                                         "-imageHeight", "-allowFinderImages", "-lutFile"));
  EXPECT_EQ(snapShotLocationsCLIValue(), "-snapshotLocation");
}

/// Random options, with all that is easy to get wrong.
class RandomOptions {
 public:
  std::string text() {
    using namespace std::string_literals;
    static const std::array texts{""s,
                                  " "s,
                                  "/card/A 1.mov"s,
                                  "/a\"b'c\\$(d)"s,
                                  "line\nend\n"s,
                                  "-"s,
                                  "-x"s,
                                  " -x"s,
                                  "--"s,
                                  "-deepAnalysis"s,
                                  "/\xff\xc3.mov"s,
                                  "\u00A0/é "s,
                                  "a\0b"s,
                                  "[a b"s,
                                  "*"s,
                                  "-pathToAnalyze"s,
                                  "./-x"s,
                                  "1.0"s,
                                  "UPPER"s,
                                  "\u2028"s};
    return random_.oneOf(texts);
  }
  float number() {
    using Limits = std::numeric_limits<float>;
    static const std::array numbers{0.0F,
                                    -0.0F,
                                    0.5F,
                                    1920.0F,
                                    0.1F,
                                    -1.0F,
                                    1e21F,
                                    Limits::max(),
                                    Limits::min(),
                                    1.0F / 3.0F,
                                    16777216.0F,
                                    Limits::denorm_min(),
                                    2.5F,
                                    Limits::infinity(),
                                    Limits::quiet_NaN()};
    return random_.oneOf(numbers);
  }
  std::optional<std::int32_t> integer() {
    static const std::array<std::int32_t, 5> numbers{0, 1, -1, INT32_MAX, INT32_MIN};
    return chance() ? std::optional(random_.oneOf(numbers)) : std::nullopt;
  }
  bool chance() { return random_.below(2) == 0; }

  Factory::BasicOptions basic() {
    Words paths(random_.below(4));
    for (std::string& path : paths) path = text();
    return {paths, chance() ? std::optional(text()) : std::nullopt, text(), text(), chance()};
  }
  Factory::ImageOptions image() {
    std::vector<float> locations(random_.below(3));
    for (float& location : locations) location = number();
    const auto maybe = [this] { return chance() ? std::optional(number()) : std::nullopt; };
    return {locations, number(), maybe(), maybe(), chance(), chance() ? std::optional(text()) : std::nullopt};
  }
  Factory::CustodialOptions custodial() { return Factory::CustodialOptions(integer(), integer()); }
  std::size_t below(std::size_t bound) { return random_.below(bound); }

 private:
  RandomWords random_{7};
};

/// The options' vectors one after the other, as a program that is started with them gets them.
Words vectorOf(std::vector<const MediaAnalysisCLIOptions*> parts, std::size_t firstPart = 0) {
  std::ranges::rotate(parts, parts.begin() + static_cast<std::ptrdiff_t>(firstPart));
  Words words;
  for (const MediaAnalysisCLIOptions* const part : parts) {
    if (part == nullptr) continue;
    for (const std::string& word : part->commandLineArguments()) words.emplace_back(word.c_str());
  }
  return words;
}

TEST(MediaAnalysisTest, WhatReadsBackAsItWasIsExactlyWhatHasNoLosses) {
  RandomOptions random;
  int carried = 0;
  for (int round = 0; round < 20000; ++round) {
    const auto basic = random.basic();
    const auto image = random.chance() ? std::optional(random.image()) : std::nullopt;
    const auto custodial = random.custodial();
    const std::vector<const MediaAnalysisCLIOptions*> parts{&basic, image ? &*image : nullptr, &custodial};
    std::size_t losses = 0;
    Words written;
    for (const MediaAnalysisCLIOptions* const part : parts) {
      if (part == nullptr) continue;
      losses += lossesInReading(*part).size();
      std::ranges::copy(part->commandLineArguments(), std::back_inserter(written));
    }
    const Words words = vectorOf(parts, random.below(3));
    SCOPED_TRACE(shown(words));

    const MediaAnalysisCLIReading read = readingOf(words);
    const Words again = vectorOf({&read.basic, read.image ? &*read.image : nullptr, &read.custodial});
    ASSERT_EQ(again == written && read.custodial == custodial, losses == 0);
    if (losses > 0) continue;
    ++carried;
    ASSERT_EQ(read.basic, basic);
    ASSERT_EQ(read.image, image);
    ASSERT_EQ(read.custodial, custodial);
    ASSERT_THAT(read.remarks, IsEmpty());
  }
  EXPECT_GT(carried, 1000);
}

TEST(MediaAnalysisTest, LossesSayWhatAndWhy) {
  const auto losses =
      lossesInReading(Factory::buildBasicOptions({"/a", "-b\x1b"}, "/w", std::string("/r\0s", 4), "-1", true));
  ASSERT_EQ(losses.size(), 3U);
  EXPECT_THAT(losses[0].message(), HasSubstr("-pathToAnalyze cannot be \"-b\\x1b\": what begins with \"-\""));
  EXPECT_THAT(losses[1].message(), HasSubstr("NUL"));
  EXPECT_EQ(losses[2].flag, "-analysisId");
}

struct ReadingCase {
  Words words;
  /// The vector of what was read.
  Words read;
  /// Each remark: its kind, its flag, its value where there is one.
  Words remarks;
};

TEST(MediaAnalysisTest, ReadsVectorsAndRemarksOnTheRest) {
  const Words none{"-workDirectory", "", "-resultsFilePath", ""};
  const auto with = [&none](const Words& before, const Words& after = {}) {
    Words words = before;
    words.insert(words.end(), none.begin(), none.end());
    words.insert(words.end(), after.begin(), after.end());
    return words;
  };
  const std::vector<ReadingCase> cases{
      {{}, none, {}},
      {{"stray", "", " -parentPid", "3"},
       none,
       {"strayWord  stray", "strayWord  ", "strayWord   -parentPid", "strayWord  3"}},
      {{"-pathToAnalyze", "/a ", "/b", "-deepAnalysis", "-PATHTOANALYZE", " -c\n"},
       with({"-pathToAnalyze", "/a ", "-pathToAnalyze", "/b", "-pathToAnalyze", " -c\n"}, {"-deepAnalysis"}),
       {}},
      {{"-workDirectory", "/My", "Disk", "-workdirectory", "/w", "-resultsFilePath"},
       {"-workDirectory", "/w", "-resultsFilePath", ""},
       {"replacedValue -workDirectory /My", "replacedValue -workDirectory Disk", "missingValue -resultsFilePath"}},
      {{"-analysisId", "7", "-analysisId", "-deepAnalysis", "yes"},
       with({}, {"-analysisId", "7", "-deepAnalysis"}),
       {"missingValue -analysisId", "unexpectedValue -deepAnalysis yes"}},
      {{"-maxImageWidth", "nan", "-maxImageWidth", "1e999", "-maxImageWidth", "inf", "-imageHeight", " -5",
        "-compressionFactor", "1,5", "-snapshotLocation", "", "0x10", " 2\n", "-3", "-0.0"},
       with({}, {"-snapshotLocation", "16.0", "-snapshotLocation", "2.0", "-maxImageWidth", "0.0"}),
       {"unreadableNumber -maxImageWidth nan", "unreadableNumber -maxImageWidth 1e999",
        "unreadableNumber -maxImageWidth inf", "unreadableNumber -imageHeight -5",
        "unreadableNumber -compressionFactor 1,5", "unreadableNumber -snapshotLocation ", "unknownFlag -3",
        "unknownFlag -0.0"}},
      {{"-parentPid", " 12 ", "-parentAppNumber", "2147483648", "-parentPid", "x", "-parentPid\n", "+2147483647"},
       with({}, {"-parentPid", "2147483647"}),
       {"unreadableInteger -parentAppNumber 2147483648", "unreadableInteger -parentPid x",
        "replacedValue -parentPid 12"}},
      {{"-parentappnumber", "3", "-deepAnalysis"},
       with({}, {"-deepAnalysis"}),
       {"withoutParentPid -parentappnumber 3"}},
      {{"-pathToAnalyzed", "/a", "b", "--", "-Foo"},
       none,
       {"unknownFlag -pathToAnalyzed /a", "unknownFlag -pathToAnalyzed b", "unknownFlag --", "unknownFlag -Foo"}},
  };
  for (const auto& [words, expected, expectedRemarks] : cases) {
    SCOPED_TRACE(shown(words));
    const MediaAnalysisCLIReading read = readingOf(words);
    EXPECT_EQ(vectorOf({&read.basic, read.image ? &*read.image : nullptr, &read.custodial}), expected);
    Words remarks;
    for (const MediaAnalysisCLIRemark& remark : read.remarks) {
      remarks.push_back(std::string(rawValue(remark.kind)) + " " + remark.flag +
                        (remark.value ? " " + *remark.value : ""));
    }
    EXPECT_EQ(remarks, expectedRemarks);
  }
}

TEST(MediaAnalysisTest, UnknownFlagsAreReportedWithAllTheirValues) {
  const MediaAnalysisCLIReading read = readingOf({"-workDirectry", "/w", "x", "-b", "-workDirectry", "y"});
  EXPECT_FALSE(read.allFlagsAreValid());
  EXPECT_THAT(read.unknownFlags(), Optional(ElementsAre("-workDirectry", "-b")));
  Words found;
  read.enumerateUnknownFlags([&found](std::string_view flag, std::string_view value) {
    found.push_back(std::string(flag) + "=" + std::string(value));
  });
  EXPECT_THAT(found, ElementsAre("-workDirectry=/w", "-workDirectry=x", "-b=", "-workDirectry=y"));
  EXPECT_EQ(read.remarks[0].message(),
            "-workDirectry \"/w\": no flag of the analysis tool; did you mean -workDirectory?");
  EXPECT_TRUE(readingOf({"stray", "-parentPid"}).allFlagsAreValid());
  EXPECT_EQ(readingOf({"stray", "-parentPid"}).unknownFlags(), std::nullopt);
}

TEST(MediaAnalysisTest, ImageErrorsAreThoseOfTheOptions) {
  using enum MediaAnalysisCLIImageError;
  EXPECT_THAT(errorsOf(Factory::buildImageOptions({0}, 1, std::nullopt, false, std::nullopt)), IsEmpty());
  for (const float width : {0.0F, -1.0F, std::numeric_limits<float>::infinity(), std::nanf("")}) {
    EXPECT_THAT(errorsOf(Factory::buildImageOptions({}, width, std::nullopt, false, std::nullopt)),
                ElementsAre(missingSnapshotLocations, missingMaxImageWidth));
  }
  EXPECT_FALSE(readingOf({"-parentPid", "1"}).image);
  EXPECT_THAT(errorsOf(*readingOf({"-allowFinderImages"}).image),
              ElementsAre(missingSnapshotLocations, missingMaxImageWidth));
  EXPECT_THAT(message(missingMaxImageWidth), HasSubstr("-maxImageWidth"));
}

/// Each fault: its error, and its path below the folder.
Words faultsIn(const std::string& folder, const Words& paths, const std::string& workDirectory,
               const std::string& results) {
  Words faults;
  for (const auto& fault : faultsOf(Factory::buildBasicOptions(paths, workDirectory, results, std::nullopt, false))) {
    const std::string path = fault.path.starts_with(folder) ? fault.path.substr(folder.size()) : fault.path;
    faults.push_back(std::string(rawValue(fault.error)) + " " + path);
    EXPECT_THAT(fault.message(), HasSubstr(std::string(description(fault.error))));
  }
  return faults;
}

TEST(MediaAnalysisTest, BasicErrorsAreFoundInTheirOrderAndLeaveNothingBehind) {
  const test::TemporaryFolder temporary;
  const std::string folder = temporary.path().string();
  const std::string media = temporary.write("media \n.mov", "x");
  std::filesystem::create_symlink(folder + "/nowhere", folder + "/dangling");
  const auto faults = [&folder](const Words& paths, const std::string& workDirectory, const std::string& results) {
    return faultsIn(folder, paths, workDirectory, results);
  };

  EXPECT_THAT(faults({media, folder}, folder, folder + "/results.json"), IsEmpty());
  EXPECT_THAT(faults({}, "", ""),
              ElementsAre("pathToAnalyzeNotSupplied ", "workDirectoryNotSupplied ", "resultsFilePathNotSupplied "));
  EXPECT_THAT(faults({""}, folder, folder + "/r"), ElementsAre("pathToAnalyzeNotSupplied "));
  EXPECT_THAT(
      faults({folder + "/b", media, "", folder + "/dangling", media + std::string(1, '\0')}, media, media),
      ElementsAre("pathToAnalyzeDoesNotExist /b", "pathToAnalyzeDoesNotExist ", "pathToAnalyzeDoesNotExist /dangling",
                  std::string("pathToAnalyzeDoesNotExist /media \n.mov") + '\0',
                  "workDirectoryDoesNotExist /media \n.mov", "resultsFileAlreadyExists /media \n.mov"));
  EXPECT_THAT(faults({media}, "", folder), ElementsAre("workDirectoryNotSupplied ", "resultsFileAlreadyExists "));
  EXPECT_THAT(faults({media}, folder, folder + "/dangling"), ElementsAre("resultsFileAlreadyExists /dangling"));
  const std::string longName(300, 'n');
  for (const std::string results : {"/missing/r", "/media \n.mov/r", "/new/", longName.c_str()}) {
    EXPECT_THAT(faults({media}, folder, folder + "/" + results), ElementsAre("resultsFilePathNotCreated /" + results));
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2);

  const auto fault = faultsOf(Factory::buildBasicOptions({"/\x1b/x"}, folder, folder + "/r", std::nullopt, false));
  ASSERT_EQ(fault.size(), 1U);
  EXPECT_THAT(fault[0].message(), HasSubstr("a path to analyze does not exist: \"/\\x1b/x\" (No such file"));
}

TEST(MediaAnalysisTest, AFolderThatMayNotBeWrittenToTakesNoResults) {
  const test::TemporaryFolder temporary;
  const std::string media = temporary.write("a.mov", "");
  std::filesystem::permissions(temporary.path(), std::filesystem::perms(0555));
  const uid_t user = geteuid();
  if (user == 0) static_cast<void>(seteuid(65534));  // root is refused nothing
  const Words faults =
      faultsIn(temporary.path().string(), {media}, temporary.path().string(), (temporary.path() / "r").string());
  if (user == 0) static_cast<void>(seteuid(user));
  std::filesystem::permissions(temporary.path(), std::filesystem::perms::owner_all);
  EXPECT_THAT(faults, ElementsAre("resultsFilePathNotCreated /r"));
}

}  // namespace
}  // namespace meridian
