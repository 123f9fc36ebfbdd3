#include "meridian/cli/transcode_explanation.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <set>

#include "meridian/base/text.h"
#include "tests/cli/random_words.h"
#include "tests/cli/reference_reading.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;
using Words = std::vector<std::string>;

TranscodeExplanation explained(const Words& words, bool keepOrder = false) { return explain(words, keepOrder); }

template <typename Explained>
reference::Pairs pairsOf(const std::vector<Explained>& list) {
  reference::Pairs pairs;
  for (const Explained& each : list) pairs.emplace_back(each.flag, each.value);
  return pairs;
}

template <typename Explained>
Words allValuesOf(const Explained& explained) {
  Words values = explained.earlierValues;
  values.push_back(explained.value);
  return values;
}

TEST(TranscodeExplanationTest, AccountsForEveryWordOfRandomVectors) {
  RandomWords random(7);
  for (int round = 0; round < 6000; ++round) {
    const Words words = random.vector();
    const bool keepOrder = random.below(2) == 0;
    SCOPED_TRACE(shown(words));
    const TranscodeExplanation explanation = explained(words, keepOrder);
    const reference::Store store = reference::parsed(words, keepOrder);
    ASSERT_EQ(reference::storeOf(explanation.arguments), store);
    ASSERT_EQ(pairsOf(explanation.settings), store.valid);
    ASSERT_EQ(pairsOf(explanation.rejectedEntries), store.invalid);

    const reference::Words read = reference::readWords(words);
    std::vector<std::size_t> dropped;
    for (const DroppedWord& each : explanation.droppedWords) {
      dropped.push_back(each.index);
      ASSERT_EQ(each.word, words[each.index]);
    }
    ASSERT_EQ(dropped, read.strayPlaces);

    // Every written value is that of its flag or an earlier one, in the order of writing.
    std::map<std::string, Words> written;
    for (const auto& [flag, value] : read.flags) written[flag].push_back(value);
    std::set<std::string> presetNames;
    for (const auto& [flag, values] : written) {
      if (flag.starts_with("-preset")) presetNames.insert(values.begin(), values.end());
    }
    for (const ExplainedSetting& setting : explanation.settings) {
      const bool isWritten = written.contains(setting.flag);
      ASSERT_EQ(isWritten, setting.source != SettingSource::preset) << setting.flag;
      ASSERT_EQ(setting.presetValue.has_value(), isWritten && setting.preset.has_value()) << setting.flag;
      if (isWritten) {
        ASSERT_EQ(allValuesOf(setting), written[setting.flag]);
        ASSERT_EQ(setting.source == SettingSource::repeated, written[setting.flag].size() > 1);
      }
      if (setting.preset) {
        const std::string* const value = presetArguments(*setting.preset).find(setting.flag);
        ASSERT_NE(value, nullptr) << setting.flag;
        ASSERT_EQ(*value, isWritten ? setting.presetValue : setting.value);
      }
    }
    std::set<std::string> explainedNames;
    for (const ExplainedPreset& each : explanation.presets) {
      explainedNames.emplace(preset(each.preset));
      explainedNames.insert(each.earlierNames.begin(), each.earlierNames.end());
    }
    for (const RejectedEntry& entry : explanation.rejectedEntries) {
      const Words values = allValuesOf(entry);
      if (entry.flag == "-preset") {
        explainedNames.insert(values.begin(), values.end());
      } else {
        ASSERT_EQ(values, written[entry.flag]);
      }
    }
    ASSERT_EQ(explainedNames, presetNames);
  }
}

TEST(TranscodeExplanationTest, ListsTheValuesThatASettingOverrides) {
  const TranscodeExplanation explanation =
      explained({"-preset", "fast", "-vcodec", "H265", "-preset", "Solvane_Cloud", "-vcodec", "mjpeg"});
  const ExplainedSetting& codec = explanation.settings[0];
  EXPECT_EQ(codec.value, "mjpeg");
  EXPECT_EQ(codec.source, SettingSource::repeated);
  EXPECT_EQ(codec.preset, TranscodeCliPreset::cloud);
  EXPECT_THAT(codec.earlierValues, ElementsAre("h265"));
  EXPECT_THAT(codec.presetValue, Optional(std::string("h264")));
  ASSERT_EQ(explanation.presets.size(), 1U);
  EXPECT_THAT(explanation.presets[0].earlierNames, ElementsAre("fast"));
  EXPECT_THAT(explanation.rejectedEntries, IsEmpty());

  // Of two presets the first keeps its values.
  const TranscodeExplanation both = explained({"-presets", "solvane_4444xq", "-preset", "solvane_cloud"});
  EXPECT_EQ(both.settings.size(), 8U);
  EXPECT_EQ(both.settings[0].preset, TranscodeCliPreset::proRes4444XQ);
  EXPECT_EQ(both.settings[3].preset, TranscodeCliPreset::cloud);
}

TEST(TranscodeExplanationTest, WarnsOfDoubtfulSettings) {
  using enum TranscodeWarningCode;
  struct Case {
    Words words;
    std::vector<TranscodeWarningCode> codes;
    std::string message = "";
  };
  const std::vector<Case> cases{
      {{"-out", "a"}, {}},
      {{"-overwrite"}, {}},
      {{"-overwrite", "yes"}, {holdsValueButTakesNone}},
      {{"-codecs", "x"}, {holdsValueButTakesNone}},
      {{"-out"}, {lacksValue}},
      {{"-out", " "}, {lacksValue}},
      {{"-acl_descs"}, {lacksValue}},
      {{"-acl_descs", "1"}, {}},
      {{"-tc_burn_anchor", "tl"}, {}},
      {{"-ac_omit_3"}, {}},
      {{"-ac_omit_3", "1"}, {holdsValueButTakesNone}},
      {{"-ac_omit", "3"}, {omissionWithoutNumber}},
      {{"-ac_omit_x"}, {omissionWithoutNumber}},
      {{"-in_0_1", "a"}, {}},
      {{"-in_0_1"}, {lacksValue}},
      {{"-in", "a"}, {inputWithoutNumbers}},
      {{"-in_0", "a"}, {inputWithoutNumbers}},
      {{"-input_file", "a"}, {inputWithoutNumbers}},
      {{"-hello", "1"}, {acceptedByContainment}, "because it contains one: -h; check the spelling"},
      {{"-my-vcodec", "1"}, {acceptedByContainment}, "-vcodec"},
      {{"-x-acl_tag", "1"}, {acceptedByContainment}, "-acl"},
      {{"-dims", "1280 x 720"},
       {invalidValue},
       R"("-dims": cannot be parsed: "1280 x 720" is not a size; did you mean 1280x720?)"},
      {{"-vbd", "ten"}, {invalidValue}, R"("ten" is not a whole number; expected a whole number, such as 10)"},
      {{"-acl", "loud"}, {invalidValue}, "mono, stereo, quad, pent, hex, oct, or a whole number, such as 2"},
      {{"-c_space", "srgb"}, {needsCapitals}, "sRGB is lower-cased in reading"},
      {{"-vcodec", "H264"}, {lowerCased}, R"("-vcodec": was written differently: "H264")"},
      {{"-vcodec", "h264", "-vcodec", "h265"}, {repeated}, R"(the last value wins: previously "h264")"},
      {{"-dims", "1x", "-dims", "1X"}, {invalidValue, repeated, lowerCased}},
  };
  for (const auto& [words, codes, message] : cases) {
    SCOPED_TRACE(shown(words));
    const TranscodeExplanation explanation = explained(words);
    ASSERT_EQ(explanation.settings.size(), 1U);
    std::vector<TranscodeWarningCode> found;
    for (const TranscodeWarning& warning : explanation.settings[0].warnings) {
      found.push_back(warning.code);
      EXPECT_EQ(warning.place, explanation.settings[0].flag);
    }
    EXPECT_EQ(found, codes);
    if (!message.empty()) {
      EXPECT_THAT(explanation.settings[0].warnings[0].message(), HasSubstr(message));
    }
  }
  const TranscodeExplanation preset = explained({"-preset", "solvane_cloud", "-dims", "1x2"});
  EXPECT_EQ(preset.settings[0].warnings.at(0).message(),
            R"("-dims": overrides a preset: "960x540" from solvane_cloud)");
  EXPECT_THAT(preset.settings[1].warnings, IsEmpty());
  EXPECT_EQ(explained({"x"}).droppedWords.at(0).warning.message(), R"("x": belongs to no flag)");
}

TEST(TranscodeExplanationTest, OffersAValidTextNearAnInvalidOne) {
  struct Case {
    std::string flag, text;
    std::optional<std::string> offered;
  };
  const Case cases[]{
      // A decimal comma, but not one that may separate thousands.
      {"-vr", "23,976", {}},
      {"-vr", "29,97", "29.97"},
      {"-vbr", "1,5", "1.5"},
      {"-vbr", "1,2345", "1.2345"},
      {"-vbr", "1,234", {}},
      {"-vbr", "1,5,5", {}},
      {"-vbr", ",", {}},
      {"-vbd", "1,5", {}},
      {"-vbr", "1 5", {}},
      {"-dims", "1280*720", "1280x720"},
      {"-dims", "1280 \u00D7 720", "1280x720"},
      {"-tc_custom", "1:2:3;4", "01:02:03;04"},
      {"-tc_custom", "1:2:3", {}},
      {"-vcodec", "pro res422", "prores422"},
      {"-vcodec", "prores", {}},
      {"-c_space", "srgb", {}},
      {"-tc_burn_font_rgb", "255,128", {}},
  };
  for (const auto& [flag, text, offered] : cases) {
    EXPECT_EQ(explained({flag, text}).settings.at(0).readableText, offered) << flag << ' ' << text;
  }
}

TEST(TranscodeExplanationTest, FindsThePropertyAndTheMeaningOfEachFlag) {
  struct Case {
    Words words;
    std::string_view property;
    std::optional<PropertyValue> typed;
    std::string meaning = "";
  };
  const Case cases[]{{{"-vr", "23.976"}, "videoFrameRate", 23.976F, "23.976 fps = 24000/1001"},
                     {{"-vr", "23.967"}, "videoFrameRate", 23.967F, "23.967 fps, the stored form of 24000/1001"},
                     {{"-vr", "23.98"}, "videoFrameRate", 23.98F, "23.98 fps, meaning 24000/1001"},
                     {{"-vr", "12.5"}, "videoFrameRate", 12.5F, "12.5 fps, not a standard rate"},
                     {{"-tc_rate", "12.5"}, "timecodeFrameRate", 12.5F, "12.5 fps, not a standard rate"},
                     {{"-tc_rate", "0"}, "timecodeFrameRate", 0.0F, "not a frame rate: it has to be above 0"},
                     {{"-vr", "0"}, "videoFrameRate", 0.0F, "as the source"},
                     {{"-vr", "0.5"}, "videoFrameRate", 0.5F, "half the source's rate"},
                     {{"-dims", "0x0"}, "videoDimensions", Size{0, 0}, "as the source"},
                     {{"-dims", "0.5x0.5"}, "videoDimensions", Size{0.5, 0.5}, "0.5 times the source's size"},
                     {{"-vbr", "25"}, "videoBitRate", 25.0F},
                     {{"-dims", "1280x720.5"}, "videoDimensions", Size{1280, 720.5}, "1280 x 720.5"},
                     {{"-crop_anchor", "tl"}, "videoCropAnchor", "tl", "top left"},
                     {{"-wmf_anchor", "br"}, "watermarkFileAnchor", "br", "bottom right"},
                     {{"-acl", "stereo"}, "channelLayout", "stereo"},
                     {{"-acl", "2"}, "outputChannels", std::int64_t{2}},
                     {{"-acl", "x"}, "channelLayout", {}},
                     {{"-vn"}, "omitVideo", true},
                     {{"-acopy"}, "copyAudio", true},
                     {{"-tc_match"}, "timecodeSource", "match"},
                     {{"-tc_creation"}, "timecodeSource", "creationDate"},
                     {{"-ac_omit_07"}, "ignoredAudioFileTracks", std::int64_t{7}},
                     {{"-in_0_1", "/A"}, "inputFiles", "/A"},
                     {{"-in", "/A"}, "", {}},
                     {{"-ac_omit"}, "", {}},
                     {{"-codecs"}, "", {}}};
  for (const auto& [words, property, typed, meaning] : cases) {
    SCOPED_TRACE(shown(words));
    const ExplainedSetting setting = explained(words).settings.at(0);
    EXPECT_EQ(setting.property == nullptr ? "" : setting.property->name, property);
    EXPECT_EQ(setting.typed, typed);
    EXPECT_EQ(setting.meaning, meaning);
  }
}

TEST(TranscodeExplanationTest, WarnsOfValuesThatReadBackDifferently) {
  RandomWords random(8);
  for (int round = 0; round < 3000; ++round) {
    TranscodeCliArguments arguments(random.vector());
    arguments.setWatermarkText(random.word());
    arguments.setOutputFile(random.word());
    // The plain way: read the rendered vector. A value that is read as a flag may change another setting.
    const TranscodeCliArguments again(arguments.commandLine());
    const bool addsFlags = std::ranges::any_of(arguments.flagValueLookup(),
                                               [](const auto& entry) { return trimmed(entry.value).starts_with('-'); });
    Words expected;
    for (const auto& [flag, value] : arguments.flagValueLookup()) {
      if (again.argumentFlagValue(flag) != value) expected.push_back(flag);
    }
    Words warned;
    for (const TranscodeWarning& warning : readingBackWarnings(arguments)) warned.push_back(warning.place);
    SCOPED_TRACE(shown(arguments.commandLine()));
    if (addsFlags) {
      ASSERT_THAT(expected, ::testing::IsSupersetOf(warned));
    } else {
      ASSERT_EQ(warned, expected);
    }
  }
  TranscodeCliArguments arguments;
  arguments.setWatermarkText("Hello");
  EXPECT_EQ(readingBackWarnings(arguments).at(0).message(),
            R"("-wmt_text": will be read differently: "Hello" as "hello")");
}

TEST(TranscodeExplanationTest, SuggestsWhatARejectedWordWasMeantToBe) {
  struct Case {
    Words words;
    std::optional<std::string_view> suggestion;
    std::optional<std::string> valueless = {};
  };
  const std::vector<Case> cases{
      {{"-vcoedc", "h264"}, "-vcodec"},
      {{"-otu", "a"}, "-out"},  // an exchange is one step
      {{"-ut", "a"}, "-out"},
      {{"-preset", "solvane_clod"}, "solvane_cloud"},
      {{"-preset", "fast"}, {}},
      {{"-videoFormat", "h264"}, "-vcodec"},  // a property
      {{"-VIDEOBITRATE", "3"}, "-vbr"},
      {{"-vco", "h264"}, "-vcodec"},  // a beginning
      {{"-isTranscoder"}, {}},
      {{"-vbr", "-5"}, {}, "-vbr"},
      {{"-vbr", "x", "-5"}, {}},        // has a value of its own
      {{"-overwrite", "-5"}, {}},       // takes none
      {{"-5", "-vbr", "1", "-5"}, {}},  // the last occurrence wins
      {{"-5", "1", "-out", "-5"}, {}, "-out"},
      {{"-in_0_0", "-a.mov"}, {}, "-in_0_0"},
      {{"-" + std::string(1 << 20, 'z')}, {}},
  };
  for (const auto& [words, suggestion, valueless] : cases) {
    SCOPED_TRACE(shown(words).substr(0, 80));
    const TranscodeExplanation explanation = explained(words);
    ASSERT_EQ(explanation.rejectedEntries.size(), 1U);
    EXPECT_EQ(explanation.rejectedEntries[0].suggestion, suggestion);
    EXPECT_EQ(explanation.rejectedEntries[0].valueless, valueless);
    const std::string message = explanation.rejectedEntries[0].error.message();
    EXPECT_THAT(message, HasSubstr(suggestion  ? "did you mean " + std::string(*suggestion) + "?"
                                   : valueless ? "cannot be the value of " + *valueless
                                               : "check the spelling"));
  }
  EXPECT_EQ(explained({"-presetx", "fast"}).rejectedEntries.at(0).error.message(),
            R"("-preset": does not name a preset: "fast" after -presetx; check the spelling)");
}

TEST(TranscodeExplanationTest, TakesPresetsForTheListingThatItIs) {
  const RejectedEntry listing = explained({"-presets"}).rejectedEntries.at(0);
  EXPECT_TRUE(listing.isListing());
  EXPECT_EQ(listing.flag, "-preset");
  EXPECT_EQ(listing.error.message(), R"("-presets": prints the presets, and is not kept as a setting)");
  EXPECT_THAT(explained({"-presets", "fast"}).rejectedEntries.at(0).error.message(), HasSubstr("\"fast\" is not used"));
  EXPECT_FALSE(explained({"-preset"}).rejectedEntries.at(0).isListing());
  EXPECT_FALSE(explained({"-presets", "-preset", "fast"}).rejectedEntries.at(0).isListing());
}

TEST(TranscodeExplanationTest, ReadsCopyAsTheSourceWhereThereIsOneToCopy) {
  for (const char* const flag :
       {"-vcodec", "-vr", "-dims", "-vbr", "-vbd", "-c_space", "-acodec", "-asr", "-abpc", "-acl", "-abr"}) {
    const ExplainedSetting setting = explained({flag, "Copy"}).settings.at(0);
    EXPECT_EQ(setting.meaning, "as the source") << flag;
    EXPECT_EQ(setting.typed, std::nullopt) << flag;
    EXPECT_TRUE(std::ranges::none_of(setting.warnings, [](const TranscodeWarning& warning) {
      return warning.code == TranscodeWarningCode::invalidValue;
    })) << flag;
  }
  for (const char* const flag : {"-key_frames", "-aqual", "-tc_rate", "-crop_anchor"}) {
    EXPECT_EQ(explained({flag, "copy"}).settings.at(0).warnings.at(0).code, TranscodeWarningCode::invalidValue) << flag;
  }
  EXPECT_THAT(explained({"-acodec", "copy"}).notes, ElementsAre("audio is copied because -acodec asks for it"));
}

}  // namespace
}  // namespace meridian
