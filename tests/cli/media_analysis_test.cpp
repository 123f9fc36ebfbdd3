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
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using Factory = MediaAnalysisCLIArgumentFactory;
using Words = std::vector<std::string>;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

MediaAnalysisCLIReading readingOf(const Words& words) { return readMediaAnalysisArguments(words); }

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

/// Random options, with the values that are easy to get wrong.
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

TEST(MediaAnalysisTest, OptionsReadBackExactlyWhenWritingThemGivesNoWarnings) {
  RandomOptions random;
  int carried = 0;
  for (int round = 0; round < 20000; ++round) {
    const auto basic = random.basic();
    const auto image = random.chance() ? std::optional(random.image()) : std::nullopt;
    const auto custodial = random.custodial();
    const std::vector<const MediaAnalysisCLIOptions*> parts{&basic, image ? &*image : nullptr, &custodial};
    std::size_t warnings = 0;
    Words written;
    for (const MediaAnalysisCLIOptions* const part : parts) {
      if (part == nullptr) continue;
      warnings += warningsOfWriting(*part).size();
      std::ranges::copy(part->commandLineArguments(), std::back_inserter(written));
    }
    const Words words = vectorOf(parts, random.below(3));
    SCOPED_TRACE(shown(words));

    const MediaAnalysisCLIReading read = readingOf(words);
    const Words again = vectorOf({&read.basic, read.image ? &*read.image : nullptr, &read.custodial});
    ASSERT_EQ(again == written && read.custodial == custodial, warnings == 0);
    if (warnings > 0) continue;
    ++carried;
    ASSERT_EQ(read.basic, basic);
    ASSERT_EQ(read.image, image);
    ASSERT_EQ(read.custodial, custodial);
    ASSERT_THAT(read.warnings, IsEmpty());
  }
  EXPECT_GT(carried, 1000);
}

TEST(MediaAnalysisTest, WarningsOfWritingNameTheOptionAndItsValue) {
  using enum MediaAnalysisCLIWritingWarningCode;
  const auto warnings =
      warningsOfWriting(Factory::buildBasicOptions({"/a", "-b\x1b"}, "/w", std::string("/r\0s", 4), "-1", true));
  EXPECT_THAT(warnings,
              ElementsAre(MediaAnalysisCLIWritingWarning{readAsFlag, "-pathToAnalyze", "-b\x1b"},
                          MediaAnalysisCLIWritingWarning{holdsNul, "-resultsFilePath", std::string("/r\0s", 4)},
                          MediaAnalysisCLIWritingWarning{readAsFlag, "-analysisId", "-1"}));
  EXPECT_EQ(
      warnings[0].message(),
      "\"-pathToAnalyze\": has a value that begins with \"-\", which is read as a flag: -b\\x1b; put \"./\" before "
      "a path that begins with \"-\"");
  EXPECT_THAT(warningsOfWriting(Factory::CustodialOptions(-1, INT32_MIN)),
              ElementsAre(MediaAnalysisCLIWritingWarning{belowZero, "-parentPid", "-1"},
                          MediaAnalysisCLIWritingWarning{belowZero, "-parentAppNumber", "-2147483648"}));
  EXPECT_THAT(warningsOfWriting(Factory::CustodialOptions(std::nullopt, 3)),
              ElementsAre(MediaAnalysisCLIWritingWarning{withoutParentPid, "-parentAppNumber", "3"}));
  EXPECT_THAT(warningsOfWriting(Factory::buildImageOptions({std::nanf(""), -0.0F}, 1, std::nullopt, false, "-l")),
              ElementsAre(MediaAnalysisCLIWritingWarning{notFinite, "-snapshotLocation", "nan"},
                          MediaAnalysisCLIWritingWarning{belowZero, "-snapshotLocation", "-0.0"},
                          MediaAnalysisCLIWritingWarning{readAsFlag, "-lutFile", "-l"}));
}

struct AnalysisReadingCase {
  Words words;
  /// The vector of what was read.
  Words read;
  /// Each warning: its code, its place, its value if there is one.
  Words warnings;
};

TEST(MediaAnalysisTest, ReadsVectorsAndWarnsOfTheRest) {
  const Words none{"-workDirectory", "", "-resultsFilePath", ""};
  const auto with = [&none](const Words& before, const Words& after = {}) {
    Words words = before;
    words.insert(words.end(), none.begin(), none.end());
    words.insert(words.end(), after.begin(), after.end());
    return words;
  };
  const std::vector<AnalysisReadingCase> cases{
      {{}, none, {}},
      {{"stray", "", " -parentPid", "3"},
       none,
       {"strayWord stray", "strayWord ", "strayWord  -parentPid", "strayWord 3"}},
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
      {{"-compressionFactor", " -0.0", "-parentPid", " -1", "-parentAppNumber", "0"},
       with({}, {"-maxImageWidth", "0.0"}),
       {"unreadableNumber -compressionFactor -0.0", "unreadableInteger -parentPid -1",
        "withoutParentPid -parentAppNumber 0"}},
      {{"-parentappnumber", "3", "-deepAnalysis"},
       with({}, {"-deepAnalysis"}),
       {"withoutParentPid -parentappnumber 3"}},
      {{"-pathToAnalyzed", "/a", "b", "--", "-Foo"},
       none,
       {"unknownFlag -pathToAnalyzed /a", "unknownFlag -pathToAnalyzed b", "unknownFlag --", "unknownFlag -Foo"}},
  };
  for (const auto& [words, expected, expectedWarnings] : cases) {
    SCOPED_TRACE(shown(words));
    const MediaAnalysisCLIReading read = readingOf(words);
    EXPECT_EQ(vectorOf({&read.basic, read.image ? &*read.image : nullptr, &read.custodial}), expected);
    Words warnings;
    for (const MediaAnalysisCLIWarning& warning : read.warnings) {
      warnings.push_back(std::string(rawValue(warning.code)) + " " + warning.place +
                         (warning.value ? " " + *warning.value : ""));
    }
    EXPECT_EQ(warnings, expectedWarnings);
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
  EXPECT_EQ(read.warnings[0].message(),
            "\"-workDirectry\": is not a flag of the analysis tool: \"/w\"; did you mean -workDirectory?");
  EXPECT_EQ(readingOf({"-workDirectry" + std::string(20, ' ')}).warnings[0].suggestion(), "-workDirectory");
  EXPECT_EQ(readingOf({"stray\x1b"}).warnings[0].message(),
            "\"stray\\x1b\": comes before the first flag and is ignored");
  EXPECT_TRUE(readingOf({"stray", "-parentPid"}).allFlagsAreValid());
  EXPECT_EQ(readingOf({"stray", "-parentPid"}).unknownFlags(), std::nullopt);
}

std::vector<MediaAnalysisCLIImageError> imageErrorCodesOf(const Factory::ImageOptions& options) {
  std::vector<MediaAnalysisCLIImageError> codes;
  for (const MediaAnalysisImageOptionsError& error : errorsOf(options)) codes.push_back(error.code);
  return codes;
}

TEST(MediaAnalysisTest, ImageOptionsNeedAPositionAndAWidth) {
  using enum MediaAnalysisCLIImageError;
  EXPECT_THAT(imageErrorCodesOf(Factory::buildImageOptions({0}, 1, std::nullopt, false, std::nullopt)), IsEmpty());
  for (const float width : {0.0F, -1.0F, std::numeric_limits<float>::infinity(), std::nanf("")}) {
    EXPECT_THAT(imageErrorCodesOf(Factory::buildImageOptions({}, width, std::nullopt, false, std::nullopt)),
                ElementsAre(missingSnapshotLocations, missingMaxImageWidth));
  }
  EXPECT_FALSE(readingOf({"-parentPid", "1"}).image);
  EXPECT_THAT(imageErrorCodesOf(*readingOf({"-allowFinderImages"}).image),
              ElementsAre(missingSnapshotLocations, missingMaxImageWidth));
  EXPECT_EQ(errorsOf(*readingOf({"-allowFinderImages"}).image)[1].message(),
            "no image width above 0 is given; give one with -maxImageWidth");
}

/// Each error: its code, and its path below the directory.
Words errorsIn(const std::string& folder, const Words& paths, const std::string& workDirectory,
               const std::string& results) {
  Words errors;
  for (const auto& error : errorsOf(Factory::buildBasicOptions(paths, workDirectory, results, std::nullopt, false))) {
    const std::string path = error.place.starts_with(folder) ? error.place.substr(folder.size()) : error.place;
    errors.push_back(std::string(rawValue(error.code)) + " " + path);
  }
  return errors;
}

TEST(MediaAnalysisTest, BasicErrorsAreFoundInTheirOrderAndLeaveNothingBehind) {
  const test::TemporaryDirectory temporary;
  const std::string folder = temporary.path().string();
  const std::string media = temporary.write("media \n.mov", "x");
  std::filesystem::create_symlink(folder + "/nowhere", folder + "/dangling");
  const auto errors = [&folder](const Words& paths, const std::string& workDirectory, const std::string& results) {
    return errorsIn(folder, paths, workDirectory, results);
  };

  EXPECT_THAT(errors({media, folder}, folder, folder + "/results.json"), IsEmpty());
  EXPECT_THAT(errors({}, "", ""),
              ElementsAre("pathToAnalyzeNotSupplied ", "workDirectoryNotSupplied ", "resultsFilePathNotSupplied "));
  EXPECT_THAT(errors({""}, folder, folder + "/r"), ElementsAre("pathToAnalyzeNotSupplied "));
  EXPECT_THAT(
      errors({folder + "/b", media, "", folder + "/dangling", media + std::string(1, '\0')}, media, media),
      ElementsAre("pathToAnalyzeDoesNotExist /b", "pathToAnalyzeDoesNotExist ", "pathToAnalyzeDoesNotExist /dangling",
                  std::string("pathToAnalyzeDoesNotExist /media \n.mov") + '\0',
                  "workDirectoryDoesNotExist /media \n.mov", "resultsFileAlreadyExists /media \n.mov"));
  EXPECT_THAT(errors({media}, "", folder), ElementsAre("workDirectoryNotSupplied ", "resultsFileAlreadyExists "));
  EXPECT_THAT(errors({media}, folder, folder + "/dangling"), ElementsAre("resultsFileAlreadyExists /dangling"));
  const std::string longName(300, 'n');
  for (const std::string results : {"/missing/r", "/media \n.mov/r", "/new/", longName.c_str()}) {
    EXPECT_THAT(errors({media}, folder, folder + "/" + results), ElementsAre("resultsFilePathNotCreated /" + results));
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2);

  const auto missing = errorsOf(Factory::buildBasicOptions({"/\x1b/x"}, folder, folder + "/r", std::nullopt, false));
  ASSERT_EQ(missing.size(), 1U);
  EXPECT_EQ(
      missing[0].message(),
      "\"/\\x1b/x\": the path to analyze does not exist: No such file or directory; check the spelling and that the "
      "volume is mounted");
}

TEST(MediaAnalysisTest, MissingOptionsAreFoundWithoutTheFileSystem) {
  using enum MediaAnalysisCLIError;
  EXPECT_THAT(errorsOfMissingOptions(Factory::buildBasicOptions({"", "/none"}, "/none", "/", std::nullopt, false)),
              IsEmpty());
  EXPECT_THAT(errorsOfMissingOptions(Factory::buildBasicOptions({"", ""}, "", "", std::nullopt, false)),
              ElementsAre(MediaAnalysisBasicOptionsError{pathToAnalyzeNotSupplied},
                          MediaAnalysisBasicOptionsError{workDirectoryNotSupplied},
                          MediaAnalysisBasicOptionsError{resultsFilePathNotSupplied}));
}

TEST(MediaAnalysisTest, ResultsCannotBeCreatedInADirectoryWithoutWritePermission) {
  const test::TemporaryDirectory temporary;
  const std::string media = temporary.write("a.mov", "");
  std::filesystem::permissions(temporary.path(), std::filesystem::perms(0555));
  const uid_t user = geteuid();
  if (user == 0) static_cast<void>(seteuid(65534));  // root may write anywhere
  const Words errors =
      errorsIn(temporary.path().string(), {media}, temporary.path().string(), (temporary.path() / "r").string());
  if (user == 0) static_cast<void>(seteuid(user));
  std::filesystem::permissions(temporary.path(), std::filesystem::perms::owner_all);
  EXPECT_THAT(errors, ElementsAre("resultsFilePathNotCreated /r"));
}

}  // namespace
}  // namespace meridian
