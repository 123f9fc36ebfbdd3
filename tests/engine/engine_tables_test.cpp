// The tables of the engine that need no media.
#include <gtest/gtest.h>

#include <bit>
#include <limits>

#include "meridian/engine/channel_layouts.h"
#include "meridian/engine/color_spaces.h"
#include "meridian/engine/recognized_rate.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian {
namespace {

TEST(RecognizedRateTest, FindsTheExactRateNearARoundedOne) {
  struct Row {
    MediaRational given;
    std::optional<MediaRational> expected;
  };
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  for (const auto& [given, expected] : {
           Row{{2398, 100}, MediaRational{24000, 1001}},
           {{23976, 1000}, MediaRational{24000, 1001}},
           {{2997, 100}, MediaRational{30000, 1001}},
           {{19001, 317}, MediaRational{60000, 1001}},  // 59.940063
           {{11988, 100}, MediaRational{120000, 1001}},
           {{25, 1}, MediaRational{25, 1}},
           {{50, 2}, MediaRational{25, 1}},
           {{-50, -2}, MediaRational{25, 1}},
           {{24004, 1000}, MediaRational{24, 1}},
           {{24006, 1000}, MediaRational{12003, 500}},
           {{25, 2}, MediaRational{25, 2}},
           {{15000, 1001}, MediaRational{15000, 1001}},
           {{1, 1}, MediaRational{1, 1}},
           {{largest, 1}, MediaRational{largest, 1}},
           {{0, 1}, {}},
           {{-25, 1}, {}},
           {{25, 0}, {}},
           {{least, 1}, {}},
           {{1, least}, {}},
       }) {
    EXPECT_EQ(recognizedRate(given), expected) << given.numerator << '/' << given.denominator;
  }
  for (const VideoFrameRate& rate : standardVideoFrameRates)
    EXPECT_EQ(recognizedRate(rate.rawValue()), rate.rawValue());
}

TEST(ColorSpaceTest, IsFoundByItsCodePointsAndByEqualOnes) {
  for (const ColorSpaceRow& row : colorSpaceRows) {
    EXPECT_EQ(colorSpaceCodes(row.value), row.codes);
    EXPECT_EQ(colorSpaceOf(row.codes), row.value);
  }
  EXPECT_EQ(colorSpaceRows.size(), SAVTranscodeArgumentColorSpaceValue::allCases().size());
  EXPECT_EQ(colorSpaceOf({1, 6, 1}), SAVRec709ColorSpace);
  EXPECT_EQ(colorSpaceOf({9, 15, 9}), SAVRec2020ColorSpace);
  EXPECT_EQ(colorSpaceOf({5, 6, 5}), SAVEbu3213ColorSpace);
  EXPECT_EQ(colorSpaceOf({1, 13, 0}), SAVSrgbColorSpace);
  for (const ColorSpaceCodes& codes : {ColorSpaceCodes{}, {1, 1, 2}, {9, 16, 9}, {1, 1, 0}, {0, 0, 0}}) {
    EXPECT_EQ(colorSpaceOf(codes), std::nullopt);
  }
  EXPECT_EQ(colorSpaceCodes(SAVTranscodeArgumentColorSpaceValue("srgb")), std::nullopt);
}

TEST(ChannelLayoutTest, CountsTheChannelsThatItsTagCounts) {
  for (const ChannelLayoutRow& row : channelLayoutRows) {
    EXPECT_EQ(channelLayoutWithBitmap(row.bitmap)->tag, row.tag);
    if (row.tag) {
      EXPECT_EQ(*row.tag & 0xffffU, static_cast<unsigned>(std::popcount(row.bitmap)));
    }
  }
  for (const auto& value : SAVTranscodeArgumentAudioChannelLayoutValue::allCases()) {
    EXPECT_TRUE(std::ranges::any_of(channelLayoutRows, [&](const auto& row) { return row.value == value; })) << value;
  }
  EXPECT_EQ(channelLayoutWithBitmap(0), std::nullopt);
  EXPECT_EQ(channelLabelOfBit(3), 4);
  EXPECT_EQ(channelLabelOfBit(18), std::nullopt);
  EXPECT_EQ(channelLabelOfBit(-1), std::nullopt);
}

}  // namespace
}  // namespace meridian
