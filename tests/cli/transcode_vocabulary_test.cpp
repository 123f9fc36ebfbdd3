#include <gmock/gmock.h>

#include <set>

#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_preset.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

template <typename... Flags>
std::vector<std::string_view> casesOf() {
  std::vector<std::string_view> texts;
  const auto append = [&texts](const auto& flags) {
    for (const auto& flag : flags) texts.push_back(flag.rawValue());
  };
  (append(Flags::allCases()), ...);
  return texts;
}

TEST(TranscodeVocabularyTest, KnownFlagsAreTheCasesGroupByGroup) {
  EXPECT_THAT(TranscodeCliArguments::allKnownCommandFlags(),
              ElementsAreArray(casesOf<SAVTranscodeCliCommand, SAVTranscodeArgumentFlag, SAVTranscodeVideoArgumentFlag,
                                       SAVTranscodeAudioArgumentFlag, SAVTranscodeTimecodeArgumentFlag,
                                       SAVTranscodeWatermarkFileArgumentFlag, SAVTranscodeWatermarkTextArgumentFlag,
                                       SAVTranscodeArriLookArgumentFlag>()));
  EXPECT_EQ(TranscodeCliArguments::allKnownCommandFlags().size(), 69U);
  EXPECT_THAT(casesOf<SAVTranscodeTimecodeArgumentFlag>(),
              ElementsAre("-tc_track", "-tc_burn", "-tc_burn_size", "-tc_burn_font_rgb", "-tc_burn_box_rgb",
                          "-tc_match", "-tc_creation", "-tc_custom", "-tc_rate", "-tc_drop"));
}

TEST(TranscodeVocabularyTest, FlagsThatAreNotCasesAreStillFlags) {
  std::set<std::string_view> left;
  for (const FlagDescription& flag : flagDescriptions) left.insert(flag.text);
  for (const std::string_view flag : allKnownCommandFlags) EXPECT_EQ(left.erase(flag), 1U) << flag;
  EXPECT_THAT(left, ElementsAre("-acl_bitmap", "-acl_descs", "-tc_burn_anchor", "-wmf_burn_anchors"));
  for (const FlagDescription& flag : flagDescriptions) EXPECT_EQ(findFlag(flag.text), &flag) << flag.text;
  EXPECT_EQ(findFlag("-OUT"), nullptr);
  EXPECT_EQ(findFlag("-out "), nullptr);
}

/// Asks the type of a group about every flag of every group.
template <typename Flag>
void checkValuelessFlags(const std::set<std::string_view>& valueless) {
  for (const FlagDescription& flag : flagDescriptions) {
    const bool expected = flag.group != FlagTable<Flag>::group || !valueless.contains(flag.text);
    EXPECT_EQ(Flag(flag.text).acceptsArguments(), expected) << flag.text;
  }
  EXPECT_TRUE(Flag("-unknown").acceptsArguments());
  EXPECT_TRUE(Flag("").acceptsArguments());
}

TEST(TranscodeVocabularyTest, OnlyTheSwitchesOfAGroupAcceptNoValue) {
  const std::set<std::string_view> valueless{"-overwrite", "-web",      "-vn",        "-gpu_decoding", "-gpu_encoding",
                                             "-an",        "-acopy",    "-adiscrete", "-tc_match",     "-tc_creation",
                                             "-tc_drop",   "-tc_track", "-tc_burn",   "-wmt_burn"};
  checkValuelessFlags<SAVTranscodeArgumentFlag>(valueless);
  checkValuelessFlags<SAVTranscodeVideoArgumentFlag>(valueless);
  checkValuelessFlags<SAVTranscodeAudioArgumentFlag>(valueless);
  checkValuelessFlags<SAVTranscodeTimecodeArgumentFlag>(valueless);
  checkValuelessFlags<SAVTranscodeWatermarkTextArgumentFlag>(valueless);
}

TEST(TranscodeVocabularyTest, OnlyCasesHaveExtensionsAndAreParsed) {
  using Format = SAVTranscodeArgumentFileFormatValue;
  using Codec = SAVTranscodeArgumentVideoCodecValue;
  EXPECT_EQ(Format("qt").preferredFileExtension(), FileExtension::mov);
  EXPECT_EQ(Format("mp4").preferredFileExtension(), FileExtension::mp4);
  EXPECT_EQ(Format("mov").preferredFileExtension(), std::nullopt);
  EXPECT_THAT(Format("QT").validExtensions(), IsEmpty());
  EXPECT_THAT(Codec("mp4").permittedExtensions(), ElementsAre(FileExtension::mov));
  EXPECT_THAT(Codec("prores").permittedExtensions(), IsEmpty());
  EXPECT_EQ(SAVTranscodeArgumentColorSpaceValue::fromRawValue("sRGB"), SAVSrgbColorSpace);
  EXPECT_EQ(SAVTranscodeArgumentColorSpaceValue::fromRawValue("srgb"), std::nullopt);
  EXPECT_EQ(SAVTranscodeArgumentAudioFormatValue::fromRawValue("aac"), SAVAacAudioFormatValue);
  EXPECT_EQ(SAVTranscodeArgumentAudioFormatValue::fromRawValue("aac_he"), std::nullopt);
  EXPECT_EQ(SAVTranscodeArgumentAudioFormatValue::allCases().size(), 3U);
}

TEST(TranscodeVocabularyTest, EveryCodecButMpeg4BelongsToOneFamily) {
  using Codec = SAVTranscodeArgumentVideoCodecValue;
  std::multiset<Codec> members{SAVMpeg4Codec};
  for (const auto family : {Codec::allAvidDNxFormats(), Codec::allWebFormats(), Codec::allProResFormats()}) {
    members.insert(family.begin(), family.end());
  }
  EXPECT_THAT(members, ::testing::UnorderedElementsAreArray(Codec::allCases()));
  EXPECT_THAT(Codec::allWebFormats(), ElementsAre(SAVAvcH264Codec, SAVHevcCodec, SAVMotionJpegCodec));
}

TEST(TranscodeVocabularyTest, APresetGivesTheSameStoreAsItsSettings) {
  for (const TranscodeCliPreset each : allCases<TranscodeCliPreset>()) {
    const TranscodeCliArguments named({"-preset", preset(each)}, true);
    EXPECT_EQ(named.stored(), TranscodeCliArguments(orderedArgumentsAsList(each), true).stored());
    EXPECT_EQ(named.flagValueLookup(), presetArguments(each));
  }
  EXPECT_EQ(orderedArgumentsAsList(TranscodeCliPreset::cloud).size(), 16U);
  EXPECT_EQ(TranscodeCliArguments::solvaneCloudPresetArguments().size(), 8U);
  EXPECT_EQ(TranscodeCliArguments::solvaneProRes4444XQPresetArguments().size(), 3U);
  EXPECT_EQ(description(TranscodeCliPreset::proRes4444XQ), "ProRes 4444 XQ");
}

}  // namespace
}  // namespace meridian
