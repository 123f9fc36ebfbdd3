#include "meridian/cli/transcode_cli_arguments.h"

#include <gmock/gmock.h>

#include <array>
#include <span>

#include "meridian/cli/media_analysis_reading.h"
#include "meridian/cli/transcode_explanation.h"
#include "tests/cli/random_words.h"
#include "tests/cli/reference_reading.h"

namespace meridian {
namespace {

using reference::Pairs;
using ::testing::ElementsAre;
using ::testing::Optional;
using ::testing::Pair;
using Words = std::vector<std::string>;
using Groups = TranscodeCliArguments::InputFileGroups;

void expectSame(const TranscodeCliArguments& arguments, const reference::Store& expected) {
  const reference::Store actual = reference::storeOf(arguments);
  EXPECT_EQ(actual.valid, expected.valid);
  EXPECT_EQ(actual.invalid, expected.invalid);
  EXPECT_EQ(actual.order, expected.order);
  // The companions are absent, never empty.
  EXPECT_EQ(arguments.stored().invalidKeyValueLookup.has_value(), !expected.invalid.empty());
  EXPECT_EQ(arguments.stored().orderedFlags.has_value(), !expected.order.empty());
}

struct ReadingCase {
  Words words;
  Pairs valid;
  Pairs rejected = {};
};

TEST(ArgumentWords, AreWhateverACallerHas) {
  const std::array<const char*, 6> argv{"/bin/transcoder", "-out", "/a b.mov", "-vn", "stray", nullptr};
  const TranscodeCliArguments expected({"-out", "/a b.mov", "-vn", "stray"}, true);
  const std::vector<std::string> texts(argv.begin() + 1, argv.begin() + 5);
  const std::vector<std::string_view> views(texts.begin(), texts.end());
  EXPECT_EQ(TranscodeCliArguments(5, argv.data(), true).stored(), expected.stored());
  EXPECT_EQ(TranscodeCliArguments(texts, true).stored(), expected.stored());
  EXPECT_EQ(TranscodeCliArguments(views, true).stored(), expected.stored());
  EXPECT_EQ(TranscodeCliArguments(std::span(argv).subspan(1, 4), true).stored(), expected.stored());
  EXPECT_TRUE(explain({}).settings.empty() && readMediaAnalysisArguments({}).warnings.empty());
  for (const int argc : {1, 0, -1}) {
    EXPECT_TRUE(TranscodeCliArguments(argc, argv.data()).flagValueLookup().empty()) << argc;
  }
  EXPECT_EQ(explain(ArgumentWords(5, argv.data()), true).arguments.stored(), expected.stored());
  EXPECT_EQ(readMediaAnalysisArguments(ArgumentWords(5, argv.data())).warnings,
            readMediaAnalysisArguments({"-out", "/a b.mov", "-vn", "stray"}).warnings);
}

TEST(TranscodeCliArgumentsTest, ReadsVectors) {
  const std::string cloud = "solvane_cloud";
  const std::vector<ReadingCase> cases{
      {{}, {}},
      {{"stray", "", "－out", "x"}, {}},
      {{"-OUT", " /Card/A B.MOV\n", "-VCODEC", " ProRes422 "}, {{"-out", "/Card/A B.MOV"}, {"-vcodec", "prores422"}}},
      {{"-clut", "A", "-progress_file", "B", "-work_dir", "C", "-in", "D", "-in_0_0", "E", "-INX", "F"},
       {{"-clut", "A"}, {"-progress_file", "B"}, {"-work_dir", "C"}, {"-in", "D"}, {"-in_0_0", "E"}, {"-inx", "F"}}},
      {{"-progress_prefix", "A", "-wmf_path", "B", "-wmt_text", "C", "-ac_omit_1", "D", "-output", "E"},
       {{"-progress_prefix", "a"}, {"-wmf_path", "b"}, {"-wmt_text", "c"}, {"-ac_omit_1", "d"}, {"-output", "e"}}},
      {{"-overwrite", "-out", "a.mov"}, {{"-overwrite", ""}, {"-out", "a.mov"}}},
      {{"-overwrite", "YES", "no", "-out"}, {{"-overwrite", "yes"}, {"-out", ""}}},
      {{"-vbr", "-5"}, {{"-vbr", ""}}, {{"-5", ""}}},
      {{"-vbr", " -5"}, {{"-vbr", ""}}, {{"-5", ""}}},
      {{"-out", "a.mov", "-vn", "-Out", "b.mov"}, {{"-out", "b.mov"}, {"-vn", ""}}},
      {{"-out", "a.mov", "-out"}, {{"-out", ""}}},
      {{"-foo", "A", "-hello", "1", "-isTranscoder"}, {{"-hello", "1"}}, {{"-foo", "a"}, {"-istranscoder", ""}}},
      {{"-acl_descs", "1", "-acl_bitmap", "2", "-tc_burn_anchor", "TL", "-wmf_burn_anchors", "1", "-", "--"},
       {{"-acl_descs", "1"}, {"-acl_bitmap", "2"}, {"-tc_burn_anchor", "tl"}},
       {{"-wmf_burn_anchors", "1"}, {"-", ""}, {"--", ""}}},
      {{"-preset", "Solvane_4444XQ"}, {{"-file_format", "qt"}, {"-vcodec", "prores4444xq"}, {"-acodec", "lpcm"}}},
      {{"-preset", cloud, "-dims", "1920x1080", "-web", "x"},
       {{"-dims", "1920x1080"},
        {"-web", "x"},
        {"-file_format", "qt"},
        {"-vcodec", "h264"},
        {"-aspect_scaling", "stretch"},
        {"-vbr", "3"},
        {"-acodec", "aac"},
        {"-asr", "48000"}}},
      {{"-foo", "-preset", "Fast", "-vn"}, {{"-vn", ""}}, {{"-foo", ""}, {"-preset", "fast"}}},
      {{"-preset", cloud, "-preset", "fast"}, {}, {{"-preset", "fast"}}},
      {{"-presets"}, {}, {{"-preset", ""}}},
  };
  for (const auto& [words, valid, rejected] : cases) {
    SCOPED_TRACE(shown(words));
    expectSame(TranscodeCliArguments(words), {valid, rejected, {}});
  }
}

TEST(TranscodeCliArgumentsTest, ReadsRandomVectorsAsThePlainReaderDoes) {
  RandomWords random(3);
  for (int round = 0; round < 6000; ++round) {
    const Words words = random.vector();
    const bool keepOrder = random.below(2) == 0;
    SCOPED_TRACE(shown(words));
    expectSame(TranscodeCliArguments(words, keepOrder), reference::parsed(words, keepOrder));
    if (HasFailure()) return;
  }
}

TEST(TranscodeCliArgumentsTest, ReadsRandomDictionariesAsThePlainReaderDoes) {
  RandomWords random(4);
  for (int round = 0; round < 6000; ++round) {
    Pairs given;
    for (const std::string& key : random.vector()) reference::put(given, key, random.word());
    const TranscodeCliArguments arguments = TranscodeCliArguments::fromArgumentLookup(TextDictionary::fromPairs(given));
    SCOPED_TRACE(::testing::PrintToString(given));
    expectSame(arguments, reference::validated(given));
    if (HasFailure()) return;
  }
}

TEST(TranscodeCliArgumentsTest, RenderedVectorsReadBackAsTheSameStore) {
  RandomWords random(5);
  for (int round = 0; round < 3000; ++round) {
    const Words words = random.vector();
    SCOPED_TRACE(shown(words));
    for (const bool keepOrder : {false, true}) {
      TranscodeCliArguments::Stored expected = TranscodeCliArguments(words, keepOrder).stored();
      const TranscodeCliArguments again(TranscodeCliArguments::fromStored(expected).commandLine(), keepOrder);
      expected.invalidKeyValueLookup.reset();
      ASSERT_EQ(again.stored(), expected);
    }
  }
}

TEST(TranscodeCliArgumentsTest, QueriesTrimTheFlagButKeepItsCase) {
  const TranscodeCliArguments arguments({"-out", "a", "-vn", "-foo", "1"});
  EXPECT_TRUE(arguments.hasArgumentFlag(" -out\n"));
  EXPECT_FALSE(arguments.hasArgumentFlag("-OUT"));
  EXPECT_THAT(arguments.argumentFlagValue("\u00A0-out "), Optional(std::string_view("a")));
  EXPECT_THAT(arguments.argumentFlagValue("-vn"), Optional(std::string_view("")));
  EXPECT_EQ(arguments.argumentFlagValue("-foo"), std::nullopt);
  EXPECT_THAT(arguments.unknownFlags(), Optional(ElementsAre("-foo")));
  EXPECT_FALSE(arguments.allFlagsAreValid());
  Pairs rejected;
  arguments.enumerateUnknownFlags(
      [&rejected](std::string_view flag, std::string_view value) { rejected.emplace_back(flag, value); });
  EXPECT_THAT(rejected, ElementsAre(Pair("-foo", "1")));

  const TranscodeCliArguments none;
  EXPECT_EQ(none.unknownFlags(), std::nullopt);
  EXPECT_TRUE(none.allFlagsAreValid());
}

TEST(TranscodeCliArgumentsTest, SettersStoreValuesAsGivenAndChangeNothingElse) {
  TranscodeCliArguments arguments({"-out", "a", "-file_format", "mov", "-overwrite", "yes", "-foo", "1"}, true);
  EXPECT_EQ(arguments.outputFileFormat(), std::nullopt);
  EXPECT_TRUE(arguments.shouldOverwrite());
  const TranscodeCliArguments::Stored before = arguments.stored();

  arguments.setOutputFile(" -B ");
  arguments.setOutputFileFormat(SAVTranscodeArgumentFileFormatValue("AVI"));
  arguments.setShouldOverwrite(false);
  arguments.setProgressFile("P");
  arguments.setProgressOutputPrefix("");
  arguments.setWorkDirectory("W");
  arguments.setArgumentFlagValue(" Not A Flag ", "x");
  EXPECT_THAT(arguments.flagValueLookup(), (TextDictionary{{"-out", " -B "},
                                                           {"-file_format", "AVI"},
                                                           {"-progress_file", "P"},
                                                           {"-progress_prefix", ""},
                                                           {"-work_dir", "W"},
                                                           {"Not A Flag", "x"}}));
  EXPECT_EQ(arguments.progressOutputPrefix(), "");
  arguments.setProgressOutputPrefix(std::nullopt);
  EXPECT_EQ(arguments.progressOutputPrefix(), std::nullopt);
  arguments.setOutputFileFormat(SAVWaveFileFormat);
  EXPECT_EQ(arguments.outputFileFormat(), SAVWaveFileFormat);
  EXPECT_EQ(arguments.stored().orderedFlags, before.orderedFlags);
  EXPECT_EQ(arguments.stored().invalidKeyValueLookup, before.invalidKeyValueLookup);
}

TEST(TranscodeCliArgumentsTest, RendersKeptOrderThenWhatWasSetLater) {
  TranscodeCliArguments arguments({"-vbr", "5", "-out", "a", "-overwrite", "-vn"}, true);
  EXPECT_EQ(arguments.cliString(), "-vbr5-outa-overwrite-vn");
  arguments.setWorkDirectory("w");
  arguments.setShouldOverwrite(false);
  arguments.setArgumentFlagValue("-vbr", "6");
  EXPECT_THAT(arguments.commandLine(), ElementsAre("-vbr", "6", "-out", "a", "-vn", "", "-work_dir", "w"));
  // A flag that was removed and set again returns to its kept place; the others follow in the order of setting.
  arguments.setOutputFile(std::nullopt);
  arguments.setProgressFile("p");
  arguments.setOutputFile("b");
  EXPECT_THAT(arguments.commandLine(),
              ElementsAre("-vbr", "6", "-out", "b", "-vn", "", "-work_dir", "w", "-progress_file", "p"));

  TranscodeCliArguments unordered({"-out", "a", "-vn"});
  unordered.setOutputFile(std::nullopt);
  unordered.setOutputFile("b");
  EXPECT_THAT(unordered.commandLine(), ElementsAre("-vn", "", "-out", "b"));
  unordered.setFlagValueLookup({{"-web", ""}});
  EXPECT_EQ(unordered.cliString(), "-web");
  const auto repeated = TranscodeCliArguments::fromStored({{{"-a", "1"}}, {}, Words{"-b", "-a", "-a"}});
  EXPECT_THAT(repeated.commandLine(), ElementsAre("-a", "1"));
}

TEST(TranscodeCliArgumentsTest, GathersInputsByTheirNumbers) {
  const TranscodeCliArguments arguments(
      {"-in_2_10", "k", "-in_2_9", "j", "-in_10_0", "z", "-in_-1_7", "a", "-in_2_009", "J", "-in_02_1", "b",
       "-in_9223372036854775807_0", "last",
       // Not inputs, although nearly so:
       "-in", "x", "-in_0", "x", "-inx", "x", "-in_0_", "x", "-in__0", "x", "-in_0_-1", "x", "-in_+0_0", "x",
       "-in_0_+0", "x", "-in_0_0_0", "x", "-in_0x0_0", "x", "-in_0_9223372036854775808", "x", "-in_ 0_0", "x"},
      true);
  EXPECT_THAT(arguments.inputFileGroups(),
              Optional(ElementsAre(Pair(-1, ElementsAre("a")), Pair(2, ElementsAre("b", "j", "J", "k")),
                                   Pair(10, ElementsAre("z")), Pair(INT64_MAX, ElementsAre("last")))));
  EXPECT_THAT(arguments.inputFiles(), Optional(ElementsAre("a", "b", "j", "J", "k", "z", "last")));
  EXPECT_EQ(arguments.firstInputFile(), "a");
  EXPECT_EQ(arguments.commandLine().size(), 38U);
  EXPECT_TRUE(arguments.allFlagsAreValid());

  const TranscodeCliArguments none({"-in", "x", "-inx", "y", "-foo_in_0_0", "z"});
  EXPECT_EQ(none.inputFileGroups(), std::nullopt);
  EXPECT_EQ(none.inputFiles(), std::nullopt);
  EXPECT_EQ(none.firstInputFile(), std::nullopt);
}

TEST(TranscodeCliArgumentsTest, SettingInputsReplacesEveryInputFlag) {
  const TranscodeCliArguments before({"-in", "x", "-inx", "y", "-in_7_0", "z", "-out", "a"}, true);
  TranscodeCliArguments arguments = before;
  arguments.setInputFiles(Words{"b", " C -"});
  EXPECT_THAT(arguments.commandLine(), ElementsAre("-out", "a", "-in_0_0", "b", "-in_0_1", " C -"));
  EXPECT_THAT(arguments.inputFileGroups(), Optional(ElementsAre(Pair(0, ElementsAre("b", " C -")))));
  for (const std::optional<Groups>& empty : {std::optional<Groups>(), {Groups()}, {Groups{{1, {}}}}}) {
    arguments = before;
    arguments.setInputFileGroups(empty);
    EXPECT_EQ(arguments.cliString(), "-outa");
  }
  arguments = before;
  arguments.setInputFiles(std::nullopt);
  EXPECT_EQ(arguments.cliString(), "-outa");
}

TEST(TranscodeCliArgumentsTest, InputsReadBackAsTheyWereSet) {
  RandomWords random(6);
  for (int round = 0; round < 500; ++round) {
    Groups groups;
    for (std::size_t count = random.below(5); count > 0; --count) {
      const auto number = static_cast<std::int64_t>(random.below(UINT64_MAX));
      groups[random.below(2) == 0 ? number : number % 100] = random.vector(30);
    }
    TranscodeCliArguments arguments(random.vector());
    arguments.setInputFileGroups(groups);
    std::erase_if(groups, [](const auto& group) { return group.second.empty(); });
    ASSERT_EQ(arguments.inputFileGroups().value_or(Groups()), groups);
    ASSERT_EQ(arguments.firstInputFile(),
              groups.empty() ? std::nullopt : std::optional<std::string_view>(groups.begin()->second.front()));
  }
}

TEST(TranscodeCliArgumentsTest, HoldsAHundredThousandInputs) {
  Groups groups;
  for (int i = 0; i < 100000; ++i) groups[i % 7].push_back("/Card/Clip" + std::to_string(i) + ".MOV");
  TranscodeCliArguments arguments({"-overwrite"}, true);
  arguments.setInputFileGroups(groups);
  const TranscodeCliArguments again(arguments.commandLine());
  EXPECT_EQ(again.flagValueLookup().size(), 100001U);
  EXPECT_EQ(again.inputFileGroups(), groups);
}

}  // namespace
}  // namespace meridian
