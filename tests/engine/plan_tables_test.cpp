// The tables of the planner, held against each other and against the FFmpeg that is installed.
#include <gmock/gmock.h>

#include <bit>
#include <set>

#include "meridian/base/is_in.h"
#include "meridian/engine/audio_encoders.h"
#include "meridian/engine/channel_layouts.h"
#include "meridian/engine/dnxhd_rates.h"
#include "meridian/engine/encoder_inventory.h"
#include "meridian/engine/video_encoders.h"
#include "meridian/engine/video_profiles.h"
#include "tests/engine/planned_words.h"

namespace meridian {
namespace {

using ::testing::Contains;
using ::testing::SizeIs;

std::vector<std::string_view> profileNames(const SAVTranscodeArgumentVideoCodecValue& codec) {
  std::vector<std::string_view> names;
  for (const VideoProfileRow& row : videoProfileRows) {
    if (row.codec == codec) names.push_back(row.name);
  }
  return names;
}

/// Returns the messages of the errors; empty for words that can be planned.
std::string messageOf(const std::string& words) {
  std::string message;
  if (const Plan plan = planned(words); !plan) {
    for (const TranscodePlanError& error : plan.error()) message += error.message() + "\n";
  }
  return message;
}

TEST(PlanTables, NameFormatsAndMuxersOfTheInstalledFFmpeg) {
  const EncoderInventory& inventory = encoderInventory();
  for (const VideoEncoderRow& row : videoEncoderRows) {
    for (const VideoEncoder& candidate : row.encoders) {
      const std::string_view name = candidate.name;
      const EncoderDescription* const encoder = inventory.encoder(name);
      if (encoder == nullptr) continue;
      const auto hasOption = [&](std::string_view option, bool isUsed) {
        EXPECT_TRUE(!isUsed || encoderHasOption(encoder->name, std::string(option))) << name << ' ' << option;
      };
      hasOption(row.quality.name, !row.quality.name.empty());
      hasOption(row.parameters, !row.parameters.empty());
      hasOption("profile", !row.profile.empty() || !profileNames(row.codec).empty());
      hasOption("vendor", !row.vendor.empty());
      hasOption("b", row.rateControl != VideoRateControl::none);
      hasOption("maxrate", row.limitsRate);
      for (const PixelFormat format : row.formats) {
        EXPECT_THAT(encoder->pixelFormats, Contains(rawValue(format))) << name;
      }
    }
  }
  for (const GpuEncoderRow& row : gpuEncoderRows) {
    const std::string name(row.encoder);
    if (inventory.encoder(name) == nullptr) continue;
    EXPECT_TRUE(encoderHasOption(name, std::string(row.quality)) && encoderHasOption(name, "level")) << name;
    for (const std::string_view profile : row.profiles) {
      EXPECT_TRUE(encoderHasOption(name, "profile", std::string(profile))) << name << ' ' << profile;
    }
    EXPECT_FALSE(encoderHasOption(name, "profile", "high10")) << name;
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
  EXPECT_FALSE(encoderHasOption("mjpeg", "qscale") || encoderHasOption("none", "b"));
  for (const AudioEncoderRow& row : audioEncoderRows) {
    for (const SampleDepth& depth : row.depths) {
      EXPECT_THAT(inventory.encoder(row.encoder)->sampleFormats, Contains(depth.sampleFormat));
    }
  }
  for (const OutputContainer container : allCases<OutputContainer>()) {
    EXPECT_TRUE(inventory.hasMuxer(rawValue(container))) << rawValue(container);
  }
  std::set<std::string_view> codecs;
  for (const DecoderDescription& decoder : inventory.decoders) codecs.insert(decoder.codecName);
  for (const OutputContainer container : allCases<OutputContainer>()) {
    for (const std::string_view codec : tableRow(container).codecs) EXPECT_TRUE(codecs.contains(codec)) << codec;
  }
  for (const RepackedPcmRow& row : repackedPcmRows) {
    EXPECT_TRUE(codecs.contains(row.codec)) << row.codec;
    EXPECT_NE(inventory.encoder(row.encoder), nullptr) << row.encoder;
  }
}

TEST(PlanTables, AgreeOnContainersProfilesAndDepths) {
  // A container is the same by its extension and by "-file_format".
  for (const VideoEncoderRow& row : videoEncoderRows) {
    for (const FileExtension extension : row.codec.permittedExtensions()) {
      EXPECT_TRUE(containerOfExtension(extension)) << row.codec.rawValue();
    }
    for (const auto& format : SAVTranscodeArgumentFileFormatValue::allCases()) {
      const std::string words = "-an -vcodec " + row.codec.string() + " -out /out/a";
      const std::string extension(path(*format.preferredFileExtension()));
      const std::string formatWords =
          "-an -vcodec " + row.codec.string() + " -file_format " + format.string() + " -out /out/a";
      EXPECT_EQ(planned(formatWords).has_value(), planned(words + extension).has_value()) << words << extension;
      // An extension that a message names can be planned.
      for (const std::string_view written : {".mov", ".mp4", ".mxf", ".mjpeg"}) {
        const std::string message = messageOf(formatWords + std::string(written));
        const std::size_t use = message.find(" use .");
        // With Wave the codec is an error of its own.
        if (use == std::string::npos || format == SAVWaveFileFormat) continue;
        const std::string advised = message.substr(use + 5, message.find_first_of(",\n", use) - use - 5);
        EXPECT_EQ(messageOf(formatWords + advised), "") << formatWords << written;
      }
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
  for (const ChannelLayoutRow& row : channelLayoutRows) {
    SCOPED_TRACE(row.number.value_or(0));
    const auto bitmap = bitmapOfChannels(row.channels);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(static_cast<std::size_t>(std::popcount(*bitmap)), row.channels.count);
    EXPECT_EQ(bitmapOfChannels(*inBitmapOrder(row.channels)), bitmap);
    if (row.tag) {
      EXPECT_TRUE(tags.insert(*row.tag).second);
      EXPECT_TRUE(std::ranges::equal(*channelsOfLayoutTag(*row.tag), row.channels));
    }
    // What "-acl" writes is read back as the same value, in the same order.
    if (!row.value) continue;
    EXPECT_TRUE(values.insert(row.value->rawValue()).second);
    EXPECT_TRUE(std::ranges::equal(*inBitmapOrder(row.channels), row.channels));
    EXPECT_EQ(channelLayoutWithBitmap(*bitmap)->value, row.value);
  }
  EXPECT_THAT(values, SizeIs(SAVTranscodeArgumentAudioChannelLayoutValue::allCases().size()));
  struct Row {
    std::uint64_t bitmap;
    std::optional<std::uint32_t> number;
  };
  for (const auto& [bitmap, number] : {Row{0x33, 108},
                                       {0x603, 108},
                                       {0x37, 117},
                                       {0x607, 117},
                                       {0x137, {}},
                                       {0x3f, 121},
                                       {0x60f, 121},
                                       {0x13f, 125},
                                       {0x737, {}},
                                       {0xff, 126},
                                       {0x107, 115},
                                       {0xb, 133}}) {
    const auto row = channelLayoutWithBitmap(bitmap);
    ASSERT_TRUE(row) << std::hex << bitmap;
    EXPECT_EQ(row->number, number) << std::hex << bitmap;
  }
  // Core Audio's 7.1 has the sides before the rear.
  EXPECT_FALSE(channelLayoutWithBitmap(0x63f) || channelLayoutWithBitmap(0) || channelLayoutWithBitmap(1ULL << 63U));
  EXPECT_EQ(bitmapOfChannels(*channelsOfLayoutTag(128U << 16U | 8U)), 0x63f);
  for (std::int64_t count = 1; count <= 8; ++count) {
    EXPECT_EQ(usualChannels(count)->count, static_cast<std::size_t>(count));
  }
  EXPECT_FALSE(usualChannels(0) || usualChannels(9) || channelsOfBitmap(0) || channelsOfBitmap(1U << 18U));
  EXPECT_EQ(channelsOfBitmap((1U << 18U) - 1)->count, 18U);
  EXPECT_FALSE(channelsOfBitmap((1ULL << 33U) - 1));
  EXPECT_FALSE(bitmapOfChannels(std::array{ChannelLabel::center, ChannelLabel::mono}));
  for (const auto& [bit, label] : {std::pair<int, std::optional<int>>{3, 4}, {17, 18}, {31, 35}, {18, {}}, {-1, {}}}) {
    EXPECT_EQ(channelLabelOfBit(bit), label) << bit;
  }
}

}  // namespace
}  // namespace meridian
