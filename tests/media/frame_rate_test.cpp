#include "meridian/media/frame_rate.h"

#include <gmock/gmock.h>
#include <syslog.h>

#include <cmath>
#include <limits>
#include <unordered_set>

#include "meridian/media/video_frame_rate.h"

namespace meridian {
namespace {

using ::testing::EndsWith;

TEST(VideoFrameRate, MatchesBySinglePrecision) {
  for (const VideoFrameRate& rate : standardVideoFrameRates) {
    const MediaRational rational = rate.rawValue();
    EXPECT_EQ(VideoFrameRate(rational), rate) << rate.formattedString();
    EXPECT_EQ(VideoFrameRate({rational.numerator * 7, rational.denominator * 7}), rate) << rate.formattedString();
    EXPECT_NE(VideoFrameRate::custom(rational), rate);
    // The number of a standard rate reads back as that rate.
    EXPECT_EQ(VideoFrameRate(*MediaRational::fromRawValue(rational.rawValue())), rate) << rate.formattedString();
  }
  static_assert(VideoFrameRate({2997, 125}) == VideoFrameRate::ntsc24p);
  static_assert(VideoFrameRate({2997, 100}) == VideoFrameRate::ntsc30p);
  for (const MediaRational& rational : {MediaRational{2398, 100}, {48000, 1001}, {0, 1}, {-25, 1}, {25001, 1000}}) {
    EXPECT_EQ(VideoFrameRate(rational), VideoFrameRate::custom(rational)) << rational.rawValue();
  }
  EXPECT_EQ((std::unordered_set<VideoFrameRate>{VideoFrameRate::p24, VideoFrameRate({48, 2}), VideoFrameRate(),
                                                VideoFrameRate::custom({24, 1})})
                .size(),
            3U);
}

TEST(VideoFrameRateDeathTest, NamesARatioThatIsNotARate) {
  constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH((void)VideoFrameRate({25, 0}), "VideoFrameRate of 25/0: ten thousand times the rate");
  EXPECT_DEATH((void)VideoFrameRate({0, 0}), "VideoFrameRate of 0/0");
  EXPECT_DEATH((void)VideoFrameRate({greatest, 1}), "VideoFrameRate of 9223372036854775807/1");
  EXPECT_EQ(VideoFrameRate::matching({25, 0}), std::nullopt);
  EXPECT_EQ(VideoFrameRate::matching({greatest, 10001})->rawValue(), (MediaRational{greatest, 10001}));
}

TEST(VideoFrameRate, IsFormattedWithTwoDecimalsUnlessWhole) {
  EXPECT_EQ(VideoFrameRate::ntsc120p.formattedString(), "119.88 FPS");
  EXPECT_EQ(VideoFrameRate::p600.formattedString(), "600 FPS");
  EXPECT_EQ(VideoFrameRate::custom({25, 2}).formattedString(), "12.50 FPS");
  EXPECT_EQ(VideoFrameRate::custom({50, 2}).formattedString(), "25 FPS");
  EXPECT_EQ(VideoFrameRate::custom({1, 0}).formattedString(), "inf FPS");
}

TEST(FrameRate, ReadsBackWhatItStores) {
  for (const FrameRate& rate : FrameRate::wellDefinedCases()) {
    EXPECT_EQ(FrameRate::fromRawValue(rate.frameRateForProto()), rate) << rate.tag();
  }
  static_assert(FrameRate::fromRawValue(23.967) == FrameRate::fps23_98);
  for (const double rate : {23.976, 47.952, 1e300, 5e-324, std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(FrameRate::fromRawValue(rate), FrameRate::custom(rate)) << rate;
  }
  EXPECT_EQ(FrameRate::fromRawValue(-0.0), FrameRate::match);
  for (const double relation : {0.0, 0.5, -1.0, std::nan("")}) {
    EXPECT_FALSE(FrameRate::isFramesPerSecond(relation)) << relation;
  }
  EXPECT_TRUE(FrameRate::isFramesPerSecond(23.976) && FrameRate::isFramesPerSecond(0.25));
}

TEST(FrameRate, WritesNumbersThatAreNotRatesToTheSystemLog) {
  openlog("meridian-test", LOG_PERROR, LOG_USER);
  testing::internal::CaptureStderr();
  EXPECT_EQ(FrameRate::fromRawValue(-1), std::nullopt);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              EndsWith("meridian-test: Could not convert raw value to frame rate: -1.0\n"));
  testing::internal::CaptureStderr();
  EXPECT_EQ(FrameRate::fromRawValue(std::nan("")), std::nullopt);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), EndsWith("frame rate: nan\n"));
  closelog();
}

TEST(FrameRate, HasTextsForListsAndTags) {
  struct Case {
    FrameRate rate;
    std::string description, pickerDescription, tag;
  };
  const Case cases[]{{FrameRate::match, "Match", "Match", "Match"},
                     {FrameRate::halfstep, "Half Step", "Half Step", "Half Step"},
                     {FrameRate::fps23_98, "23.97 fps", "23.97 fps", "23.97 fps"},
                     {FrameRate::fps50, "50 fps", "50 fps", "50 fps"},
                     {FrameRate::fps59_94, "59.94 fps", "59.94 fps", "59.94 fps"},
                     {FrameRate::custom(47.952), "Custom: 47.952 fps", "Custom", "custom"},
                     {FrameRate::custom(48), "Custom: 48.0 fps", "Custom", "custom"},
                     {FrameRate::defaultCustom(), "Custom", "Custom", "custom"},
                     {FrameRate::custom(-1), "Custom", "Custom", "custom"}};
  for (const auto& [rate, description, pickerDescription, tag] : cases) {
    EXPECT_EQ(rate.description(), description);
    EXPECT_EQ(rate.pickerDescription(), pickerDescription);
    EXPECT_EQ(rate.tag(), tag);
  }
}

TEST(FrameRate, ListsAndFilters) {
  EXPECT_EQ(FrameRate::allowed(ConversionCodecType::dnxhd).size(), 11U);
  EXPECT_EQ(FrameRate::allCases().back(), FrameRate::custom(0));
  const FrameRate list[]{FrameRate::custom(0), FrameRate::fps60,       FrameRate::halfstep, FrameRate::custom(12),
                         FrameRate::fps24,     FrameRate::custom(0.0), FrameRate::match};
  EXPECT_EQ(FrameRate::filterScaleOptions(list), (std::vector{FrameRate::halfstep, FrameRate::match}));
  EXPECT_EQ(FrameRate::filterExactFrameRateOptions(list),
            (std::vector{FrameRate::custom(0), FrameRate::fps60, FrameRate::fps24, FrameRate::custom(0)}));
  EXPECT_EQ((std::unordered_set<FrameRate>{FrameRate::custom(0), FrameRate::custom(-0.0), FrameRate::match}).size(),
            2U);
}

TEST(VideoFrameRate, FindsTheExactRateThatIsMeantByANumber) {
  struct Case {
    double number;
    std::optional<VideoFrameRate> rate;
    std::string description;
  };
  const auto custom = [](std::int64_t numerator, std::int64_t denominator) {
    return VideoFrameRate::custom({numerator, denominator});
  };
  const double inf = std::numeric_limits<double>::infinity();
  const Case cases[]{{23.976, VideoFrameRate::ntsc24p, "23.976 fps = 24000/1001"},
                     {23.98, VideoFrameRate::ntsc24p, "23.98 fps, meaning 24000/1001"},
                     {23.967, VideoFrameRate::ntsc24p, "23.967 fps, the stored form of 24000/1001"},
                     {23.966, custom(11983, 500), "23.966 fps, not a standard rate"},
                     {24.004, VideoFrameRate::p24, "24.004 fps, meaning 24"},
                     {29.97, VideoFrameRate::ntsc30p, "29.97 fps = 30000/1001"},
                     {119.88, VideoFrameRate::ntsc120p, "119.88 fps, meaning 120000/1001"},
                     {47.952, custom(48000, 1001), "47.952 fps, meaning 48000/1001"},
                     {15, custom(15, 1), "15 fps, not a standard rate"},
                     {12.5, custom(25, 2), "12.5 fps, not a standard rate"},
                     {1500.5, custom(3001, 2), "1500.5 fps, not a standard rate"},
                     {0, std::nullopt, "not a frame rate: it has to be above 0"},
                     {1e-9, std::nullopt, "too small for a frame rate"},
                     {-25, std::nullopt, "not a frame rate: it has to be above 0"},
                     {inf, std::nullopt, "too large for a frame rate"},
                     {std::nan(""), std::nullopt, "not a frame rate: it has to be above 0"}};
  for (const auto& [number, rate, text] : cases) {
    EXPECT_EQ(frameRateMeantBy(number), rate) << number;
    EXPECT_EQ(describeFrameRate(number), text) << number;
  }
  // Whatever standard rate is rounded to two or three decimals, it is found again.
  for (const VideoFrameRate& rate : standardVideoFrameRates) {
    for (const double scale : {100.0, 1000.0}) {
      EXPECT_EQ(frameRateMeantBy(std::round(rate.rawValue().rawValue() * scale) / scale), rate);
    }
  }
}

TEST(VideoFrameRate, RecognizesTheExactRateNearARoundedOne) {
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
           {{5000, 1001}, MediaRational{5000, 1001}},  // although 5 is near
           {{24005, 1000}, MediaRational{24, 1}},
           {{3001, 2}, MediaRational{3001, 2}},  // although 1502000/1001 is near
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

}  // namespace
}  // namespace meridian
