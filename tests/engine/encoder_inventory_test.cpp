#include "meridian/engine/encoder_inventory.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>
#include <string>

#include "tests/engine/made_media.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// Returns the second words of the lines that ffmpeg prints after its legend.
std::set<std::string> namesPrintedBy(const char* option) {
  std::istringstream lines(run({"ffmpeg", "-v", "error", option}).output);
  std::set<std::string> names;
  bool isAfterLegend = false;
  for (std::string line; std::getline(lines, line);) {
    if (isAfterLegend) {
      std::istringstream words(line);
      std::string flags;
      std::string name;
      words >> flags >> name;
      std::istringstream list(name);
      for (std::string each; std::getline(list, each, ',');) names.insert(each);
    }
    isAfterLegend = isAfterLegend || line.find("--") != std::string::npos;
  }
  return names;
}

template <typename Rows>
std::set<std::string> namesOf(const Rows& rows) {
  std::set<std::string> names;
  for (const auto& row : rows) names.insert(row.name);
  return names;
}

TEST(EncoderInventoryTest, ListsTheCodecsAndMuxersThatTheCommandLists) {
  if (!isInstalled("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  const EncoderInventory& inventory = encoderInventory();
  EXPECT_EQ(namesOf(inventory.encoders), namesPrintedBy("-encoders"));
  EXPECT_EQ(namesOf(inventory.decoders), namesPrintedBy("-decoders"));
  EXPECT_EQ(std::set(inventory.muxers.begin(), inventory.muxers.end()), [] {
    std::set<std::string> names = namesPrintedBy("-muxers");
    // The command registers devices of its own library as well.
    for (const char* const device :
         {"alsa", "caca", "fbdev", "opengl", "oss", "pulse", "sdl,sdl2", "sdl", "sdl2", "video4linux2", "v4l2", "xv"}) {
      names.erase(device);
    }
    return names;
  }());
}

TEST(EncoderInventoryTest, SaysWhatAnEncoderAccepts) {
  const EncoderInventory& inventory = encoderInventory();
  const EncoderDescription* const prores = inventory.encoder("prores_ks");
  ASSERT_NE(prores, nullptr);
  EXPECT_EQ(prores->codecName, "prores");
  EXPECT_EQ(prores->kind, CodecKind::video);
  EXPECT_FALSE(prores->isHardware);
  EXPECT_THAT(prores->pixelFormats, ElementsAre("yuv422p10le", "yuv444p10le", "yuva444p10le"));
  const EncoderDescription* const alac = inventory.encoder("alac");
  ASSERT_NE(alac, nullptr);
  EXPECT_THAT(alac->sampleFormats, ElementsAre("s32p", "s16p"));
  EXPECT_THAT(alac->channelLayouts, Contains("5.1"));
  EXPECT_THAT(alac->channelLayouts, Not(Contains("quad")));
  EXPECT_THAT(inventory.encoder("aac")->sampleRates, Contains(44100));

  EXPECT_EQ(inventory.encoder("prores_k"), nullptr);
  EXPECT_NE(inventory.decoder("prores"), nullptr);
  EXPECT_TRUE(inventory.hasMuxer("mov") && inventory.hasDemuxer("mov") && inventory.hasFilter("scale"));
  EXPECT_FALSE(inventory.hasMuxer("mov,mp4") || inventory.hasFilter(""));
  EXPECT_THAT(inventory.license, Not(IsEmpty()));
  EXPECT_THAT(inventory.version, Not(IsEmpty()));
  EXPECT_EQ(inventory.libraries.size(), 6U);
}

TEST(EncoderInventoryTest, OpensNoDeviceOfAnUnknownKind) { EXPECT_FALSE(deviceOpens("abacus")); }

}  // namespace
}  // namespace meridian::test
