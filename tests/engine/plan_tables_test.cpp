// The tables of the planner, held against each other and against the FFmpeg that is installed.
#include <gmock/gmock.h>

#include <set>

#include "meridian/engine/audio_encoders.h"
#include "meridian/engine/channel_layout_tags.h"
#include "meridian/engine/channel_layouts.h"
#include "meridian/engine/dnxhd_rates.h"
#include "meridian/engine/encoder_inventory.h"
#include "meridian/engine/video_encoders.h"
#include "meridian/engine/video_profiles.h"

namespace meridian {
namespace {

using ::testing::Contains;
using ::testing::IsSupersetOf;
using ::testing::SizeIs;
using Labels = std::multiset<ChannelLabel>;

TEST(PlanTables, NameFormatsAndMuxersOfTheInstalledFFmpeg) {
  const EncoderInventory& inventory = encoderInventory();
  for (const VideoEncoderRow& row : videoEncoderRows) {
    for (const std::string_view name : row.encoders) {
      const EncoderDescription* const encoder = inventory.encoder(name);
      if (encoder == nullptr) continue;
      for (const PixelFormat format : row.formats) {
        EXPECT_THAT(encoder->pixelFormats, Contains(rawValue(format))) << name;
      }
    }
  }
  for (const LpcmEncoderRow& row : lpcmEncoderRows) {
    const EncoderDescription* const encoder = inventory.encoder(row.encoder);
    ASSERT_NE(encoder, nullptr) << row.encoder;
    EXPECT_THAT(encoder->sampleFormats, Contains(row.sampleFormat)) << row.encoder;
  }
  const EncoderDescription* const aac = inventory.encoder("aac");
  ASSERT_NE(aac, nullptr);
  const auto& rates = audioEncoderOf(SAVAacAudioFormatValue)->sampleRates;
  EXPECT_EQ(std::set<int>(aac->sampleRates.begin(), aac->sampleRates.end()), std::set<int>(rates.begin(), rates.end()));
  EXPECT_THAT(inventory.encoder("alac")->sampleFormats, IsSupersetOf({"s16p", "s32p"}));
  for (const OutputContainer container : allCases<OutputContainer>()) {
    EXPECT_TRUE(inventory.hasMuxer(rawValue(container))) << rawValue(container);
  }
  std::set<std::string_view> codecs;
  for (const DecoderDescription& decoder : inventory.decoders) codecs.insert(decoder.codecName);
  for (const ContainerCodecs& row : containerCodecs) {
    for (const std::string_view codec : row.codecs) {
      EXPECT_TRUE(codec.empty() || codecs.contains(codec)) << codec;
    }
  }
  for (const RepackedPcmRow& row : repackedPcmRows) {
    EXPECT_TRUE(codecs.contains(row.codec)) << row.codec;
    EXPECT_NE(inventory.encoder(row.encoder), nullptr) << row.encoder;
  }
}

TEST(PlanTables, AgreeOnContainersProfilesAndDepths) {
  for (const VideoEncoderRow& row : videoEncoderRows) {
    for (const FileExtension extension : row.codec.permittedExtensions()) {
      EXPECT_TRUE(isIn(row.containers, *containerOfExtension(extension))) << row.codec.rawValue();
    }
  }
  for (const SAVTranscodeArgumentFileFormatValue& format : SAVTranscodeArgumentFileFormatValue::allCases()) {
    EXPECT_EQ(tableRow(*containerOfFormat(format)).extension, format.preferredFileExtension());
  }
  std::set<std::pair<std::string_view, std::string_view>> names;
  for (const VideoProfileRow& profile : videoProfileRows) {
    EXPECT_TRUE(names.emplace(profile.codec.rawValue(), profile.name).second) << profile.name;
    std::set<ChromaSubsampling> chroma;
    for (const PixelFormat format : profile.formats) {
      EXPECT_TRUE(isIn(videoEncoderOf(profile.codec)->formats, format)) << profile.name;
      chroma.insert(tableRow(format).chroma);
    }
    EXPECT_THAT(chroma, SizeIs(1)) << profile.name;
  }
  for (const DnxhdRateRow& row : dnxhdRateRows) {
    EXPECT_TRUE(std::ranges::is_sorted(row.rates()));
    for (const int usual : row.usual) EXPECT_TRUE(isIn(row.rates(), usual)) << row.width << ' ' << usual;
  }
  for (const auto& format : SAVTranscodeArgumentAudioFormatValue::allCases()) {
    EXPECT_EQ(audioEncoderOf(format) == nullptr, format == SAVLpcmAudioFormatValue);
  }
}

TEST(PlanTables, PlaceChannelsAsBitmapsDo) {
  std::set<std::uint32_t> tags;
  std::set<std::string_view> values;
  for (const ChannelLayoutTagRow& row : channelLayoutTagRows) {
    EXPECT_TRUE(tags.insert(row.tag()).second) << row.number;
    EXPECT_EQ(std::set<ChannelLabel>(row.channels.begin(), row.channels.end()).size(), row.channels.count);
    if (row.value) {
      EXPECT_TRUE(values.insert(row.value->rawValue()).second) << row.number;
    }
  }
  EXPECT_THAT(values, SizeIs(SAVTranscodeArgumentAudioChannelLayoutValue::allCases().size()));
  for (const ChannelLayoutRow& row : channelLayoutRows) {
    if (!row.tag) continue;
    const ChannelList ofBits = *channelsOfBitmap(row.bitmap);
    const ChannelList ofTag = *channelsOfLayoutTag(*row.tag);
    Labels bits(ofBits.begin(), ofBits.end());
    Labels labels(ofTag.begin(), ofTag.end());
    // Where there are surround channels at the sides alone, or at the rear too, Core Audio's Ls is the side.
    using enum ChannelLabel;
    const auto replace = [](Labels& set, ChannelLabel from, ChannelLabel to) {
      if (set.erase(from) > 0) set.insert(to);
    };
    if (labels.contains(rearSurroundLeft) || (bits.contains(leftSurroundDirect) && !bits.contains(leftSurround))) {
      replace(labels, leftSurround, leftSurroundDirect);
      replace(labels, rightSurround, rightSurroundDirect);
      replace(labels, rearSurroundLeft, leftSurround);
      replace(labels, rearSurroundRight, rightSurround);
    }
    EXPECT_EQ(bits, labels) << std::hex << row.bitmap;
    if (row.value) {
      EXPECT_EQ(channelsOfLayout(*row.value)->count, ofTag.count);
    }
  }
  for (std::int64_t count = 1; count <= 8; ++count) {
    EXPECT_EQ(usualChannels(count)->count, static_cast<std::size_t>(count));
  }
  EXPECT_FALSE(usualChannels(0) || usualChannels(9) || channelsOfBitmap(0) || channelsOfBitmap(1U << 18U));
  EXPECT_EQ(channelsOfBitmap((1U << 18U) - 1)->count, 18U);
}

}  // namespace
}  // namespace meridian
