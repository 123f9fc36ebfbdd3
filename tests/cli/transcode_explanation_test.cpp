#include "meridian/cli/transcode_explanation.h"

#include <gmock/gmock.h>

#include <map>
#include <set>

#include "tests/cli/random_words.h"
#include "tests/cli/reference_reading.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using Words = std::vector<std::string>;

TranscodeExplanation explained(const Words& words, bool keepOrder = false) {
  return explain(std::vector<std::string_view>(words.begin(), words.end()), keepOrder);
}

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
    ASSERT_EQ(pairsOf(explanation.rejections), store.invalid);

    const reference::Words read = reference::readWords(words);
    std::vector<std::size_t> dropped;
    for (const DroppedWord& each : explanation.droppedWords) {
      dropped.push_back(each.index);
      ASSERT_EQ(each.word, words[each.index]);
    }
    ASSERT_EQ(dropped, read.strayPlaces);

    // Every value that was written is the one of its flag, or an earlier one, in the order of writing.
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
    for (const ExplainedRejection& rejection : explanation.rejections) {
      const Words values = allValuesOf(rejection);
      if (rejection.flag == "-preset") {
        explainedNames.insert(values.begin(), values.end());
      } else {
        ASSERT_EQ(values, written[rejection.flag]);
      }
    }
    ASSERT_EQ(explainedNames, presetNames);
  }
}

TEST(TranscodeExplanationTest, SaysWhatLostToASetting) {
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
  EXPECT_THAT(explanation.rejections, IsEmpty());

  // Of two presets the first keeps its values.
  const TranscodeExplanation both = explained({"-presets", "solvane_4444xq", "-preset", "solvane_cloud"});
  EXPECT_EQ(both.settings.size(), 8U);
  EXPECT_EQ(both.settings[0].preset, TranscodeCliPreset::proRes4444XQ);
  EXPECT_EQ(both.settings[3].preset, TranscodeCliPreset::cloud);
}

TEST(TranscodeExplanationTest, RemarksOnDoubtfulSettings) {
  using enum SettingRemark;
  struct Case {
    Words words;
    std::optional<SettingRemark> remark;
    std::optional<std::string_view> containedFlag = {};
  };
  const std::vector<Case> cases{
      {{"-out", "a"}, {}},
      {{"-overwrite"}, {}},
      {{"-overwrite", "yes"}, holdsValueButTakesNone},
      {{"-codecs", "x"}, holdsValueButTakesNone},
      {{"-out"}, lacksValue},
      {{"-out", " "}, lacksValue},
      {{"-acl_descs"}, lacksValue},
      {{"-acl_descs", "1"}, {}},
      {{"-tc_burn_anchor", "tl"}, {}},
      {{"-ac_omit_3"}, {}},
      {{"-ac_omit_3", "1"}, holdsValueButTakesNone},
      {{"-ac_omit", "3"}, omissionWithoutNumber},
      {{"-ac_omit_x"}, omissionWithoutNumber},
      {{"-in_0_1", "a"}, {}},
      {{"-in_0_1"}, lacksValue},
      {{"-in", "a"}, inputWithoutNumbers},
      {{"-in_0", "a"}, inputWithoutNumbers},
      {{"-input_file", "a"}, inputWithoutNumbers},
      {{"-hello", "1"}, acceptedByContainment, "-h"},
      {{"-my-vcodec", "1"}, acceptedByContainment, "-vcodec"},
      {{"-x-acl_tag", "1"}, acceptedByContainment, "-acl"},
  };
  for (const auto& [words, remark, containedFlag] : cases) {
    SCOPED_TRACE(shown(words));
    const TranscodeExplanation explanation = explained(words);
    ASSERT_EQ(explanation.settings.size(), 1U);
    EXPECT_EQ(explanation.settings[0].remark, remark);
    EXPECT_EQ(explanation.settings[0].containedFlag, containedFlag);
  }
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
      {{"-isTranscoder"}, {}},
      {{"-vbr", "-5"}, {}, "-vbr"},
      {{"-vbr", "x", "-5"}, {}},        // has a value of its own
      {{"-overwrite", "-5"}, {}},       // takes none
      {{"-5", "-vbr", "1", "-5"}, {}},  // the last occurrence stays
      {{"-5", "1", "-out", "-5"}, {}, "-out"},
      {{"-" + std::string(1 << 20, 'z')}, {}},
  };
  for (const auto& [words, suggestion, valueless] : cases) {
    SCOPED_TRACE(shown(words).substr(0, 80));
    const TranscodeExplanation explanation = explained(words);
    ASSERT_EQ(explanation.rejections.size(), 1U);
    EXPECT_EQ(explanation.rejections[0].suggestion, suggestion);
    EXPECT_EQ(explanation.rejections[0].valueless, valueless);
  }
}

}  // namespace
}  // namespace meridian
