#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <set>

#include "meridian/media/frame_number.h"
#include "meridian/media/timecode_components.h"

namespace meridian {
namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
using Timecode = TimecodeComponents;

TEST(TimecodeComponents, DecomposesAnyText) {
  struct Case {
    std::string_view text;
    DecomposedTimecode decomposed;
  };
  constexpr std::nullopt_t none = std::nullopt;
  const Case cases[]{
      {"01:02:03:04", {1, 2, 3, 4, false}},
      {"01:02:03;04", {1, 2, 3, 4, true}},
      {"12:34", {12, 34, none, none, false}},
      {"7", {7, none, none, none, false}},
      {"", {none, none, none, none, false}},
      // Any ";" makes it drop frame.
      {"01;02;03;04", {1, 2, 3, 4, true}},
      {"01;02:03:04", {1, 2, 3, 4, true}},
      {";", {none, none, none, none, true}},
      // The component of an empty field is absent.
      {"01::03:04", {1, none, 3, 4, false}},
      {":02:03:04", {none, 2, 3, 4, false}},
      {"01:02:03:", {1, 2, 3, none, false}},
      // With more than four fields, any could be the frames.
      {"01:02:03:04:05", {1, 2, 3, none, false}},
      {"01:02:03:04:", {1, 2, 3, none, false}},
      {"1:2:3:4:5;6", {1, 2, 3, none, true}},
      // Only digits make a number.
      {"+1:-2: 3:4 ", {none, none, none, none, false}},
      {"0-3:0x1:1.5:1e2", {none, none, none, none, false}},
      {"\u0661:\uff11:1\xff:1\n", {none, none, none, none, false}},
      {std::string_view("01:02:03:04\0", 12), {1, 2, 3, none, false}},
      {"9223372036854775807:9223372036854775808:00000000000000000000000001:99999999999999999999999",
       {largest, none, 1, none, false}},
  };
  for (const auto& [text, decomposed] : cases) {
    EXPECT_EQ(Timecode::decomposeTimecodeString(text), decomposed) << text;
    const Timecode sanitized = Timecode::sanitizedTimecode(text);
    EXPECT_EQ(sanitized,
              (Timecode{decomposed.hours.value_or(0), decomposed.minutes.value_or(0), decomposed.seconds.value_or(0),
                        decomposed.frames.value_or(0), decomposed.isDropFrame}))
        << text;
    if (const auto strict = Timecode::fromTimecode(text)) {
      EXPECT_EQ(sanitized, *strict) << text;
    }
  }
}

TEST(TimecodeComponents, ChecksFormLengthAndBounds) {
  struct Case {
    std::string_view text;
    bool form, length, bounds;
  };
  const Case cases[]{{"01:02:03;04", true, true, true},    {"01:00:60:00", true, true, true},
                     {"01:60:00:00", true, true, true},    {"01:00:61:00", true, true, false},
                     {"01:61:00:00", true, true, false},   {"1:00:00:00", true, false, true},
                     {"01:00:00:0", true, false, true},    {"999:00:00:999", true, true, true},
                     {"01:00:00", false, false, false},    {"01:02:03:04:05", false, false, false},
                     {"01:0x:00:00", false, false, false}, {"-1:00:00:00", false, false, false}};
  for (const auto& [text, form, length, bounds] : cases) {
    EXPECT_EQ(Timecode::timecodeHasProperForm(text, false, false), form) << text;
    EXPECT_EQ(Timecode::timecodeHasProperForm(text, true, false), form && length) << text;
    EXPECT_EQ(Timecode::timecodeHasProperForm(text, false, true), form && bounds) << text;
    int calls = 0;
    const bool proper = Timecode::timecodeHasProperForm(
        text, true, true,
        [&](std::int64_t hours, std::int64_t minutes, std::int64_t seconds, std::int64_t frames, bool isDropFrame) {
          ++calls;
          EXPECT_EQ(Timecode::fromTimecode(text), (Timecode{hours, minutes, seconds, frames, isDropFrame}));
        });
    EXPECT_EQ(proper, form && length && bounds) << text;
    EXPECT_EQ(calls, proper ? 1 : 0) << text;
    EXPECT_EQ(Timecode::fromTimecode(text).has_value(), proper) << text;
  }
}

TEST(TimecodeComponents, ReadsBackWhatItWrites) {
  std::mt19937_64 random(5);
  for (int round = 0; round < 20000; ++round) {
    const auto number = [&] { return static_cast<std::int64_t>(random() >> (1 + random() % 63)); };
    const Timecode timecode{number(), number(), number(), number(), random() % 2 == 0};
    ASSERT_EQ(Timecode::sanitizedTimecode(timecode.timecodeString()), timecode) << timecode.timecodeString();
    ASSERT_TRUE(Timecode::timecodeHasProperForm(timecode.timecodeString(), true, false));
  }
  EXPECT_EQ((Timecode{100, -3, 9, 10, true}.timecodeString()), "100:0-3:09;10");
  constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ((Timecode{smallest, smallest, smallest, smallest, false}.timecodeString()),
            "0-9223372036854775808:0-9223372036854775808:0-9223372036854775808:0-9223372036854775808");
  EXPECT_EQ(Timecode::defaultDropFrameTimecodeComponents.timecodeString(), Timecode::defaultDropFrameTimecode);
  EXPECT_EQ(Timecode::defaultNonDropTimecodeComponents.timecodeString(), Timecode::defaultNonDropTimecode);
}

/// Advances to the next label as the standard words it: minute by minute, without divisions.
void advance(Timecode& label, std::int64_t framesPerSecond, std::int64_t dropped) {
  if (++label.frames < framesPerSecond) return;
  label.frames = 0;
  if (++label.seconds < 60) return;
  label.seconds = 0;
  if (++label.minutes == 60) {
    label.minutes = 0;
    ++label.hours;
  }
  if (label.minutes % 10 != 0) label.frames = dropped;
}

TEST(FrameNumber, LabelsEveryFrameOfADay) {
  struct Case {
    VideoFrameRate rate;
    std::int64_t perSecond, dropped, framesOfDay;
  };
  const Case cases[]{{VideoFrameRate::ntsc30p, 30, 2, 2589408},
                     {VideoFrameRate::ntsc60p, 60, 4, 5178816},
                     {VideoFrameRate::ntsc24p, 24, 0, 2073600},
                     {VideoFrameRate::custom({12, 1}), 12, 0, 1036800}};
  for (const auto& [rate, perSecond, dropped, framesOfDay] : cases) {
    const bool isDropFrame = dropped > 0;
    // Labels only ever count up, so they are unique.
    Timecode label{0, 0, 0, 0, isDropFrame};
    for (std::int64_t frame = 0; frame < framesOfDay; ++frame) {
      const bool converts = timecodeOfFrame(frame, rate, isDropFrame) == label && frameNumber(label, rate) == frame;
      ASSERT_TRUE(converts) << frame << " is " << label.timecodeString();
      advance(label, perSecond, dropped);
    }
    EXPECT_EQ(label, (Timecode{24, 0, 0, 0, isDropFrame})) << rate.formattedString();
  }
}

TEST(FrameNumber, RejectsExactlyTheDroppedLabels) {
  struct Case {
    VideoFrameRate rate;
    std::int64_t perSecond, dropped;
  };
  const std::set<std::int64_t> fullMinutes{0, 10, 20, 30, 40, 50};
  for (const auto& [rate, perSecond, dropped] :
       {Case{VideoFrameRate::ntsc30p, 30, 2}, Case{VideoFrameRate::ntsc60p, 60, 4}}) {
    for (const std::int64_t hour : {0, 1, 23, 100}) {
      for (std::int64_t minute = 0; minute < 60; ++minute) {
        for (std::int64_t frame = 0; frame < 2 * perSecond; ++frame) {
          const Timecode label{hour, minute, frame / perSecond, frame % perSecond, true};
          const bool isDropped = frame < dropped && !fullMinutes.contains(minute);
          const auto number = frameNumber(label, rate);
          ASSERT_EQ(number.has_value(), !isDropped) << label.timecodeString();
          if (isDropped) {
            ASSERT_EQ(number.error(), TimecodeErrorCode::droppedLabel);
          }
          ASSERT_TRUE(frameNumber({hour, minute, frame / perSecond, frame % perSecond, false}, rate));
        }
      }
    }
  }
}

TEST(FrameNumber, SaysWhyALabelHasNoFrame) {
  const VideoFrameRate stored = VideoFrameRate::custom({29970029, 1000000});
  struct Case {
    std::string_view text;
    VideoFrameRate rate;
    std::optional<TimecodeErrorCode> error;
  };
  using enum TimecodeErrorCode;
  const Case cases[]{{"00:01:00;01", stored, droppedLabel},
                     {"00:01:00;02", stored, {}},
                     {"00:00:00;00", VideoFrameRate::p30, notADropFrameRate},
                     {"00:00:00;00", VideoFrameRate::ntsc120p, notADropFrameRate},
                     {"00:00:00;00", VideoFrameRate::custom({2996, 100}), notADropFrameRate},
                     {"00:00:60:00", VideoFrameRate::p24, minutesOrSecondsAbove59},
                     {"00:60:00:00", VideoFrameRate::p24, minutesOrSecondsAbove59},
                     {"00:00:00:24", VideoFrameRate::ntsc24p, framesBeyondSecond},
                     {"00:00:00:00", VideoFrameRate::custom({1, 0}), rateWithoutTimecode},
                     {"00:00:00:29", VideoFrameRate::custom({-30, -1}), {}},
                     {"00:00:00:00", VideoFrameRate::custom({-30, 1}), rateWithoutTimecode},
                     {"00:00:00:00", VideoFrameRate::custom({49, 100}), rateWithoutTimecode},
                     {"9223372036854775807:00:00:00", VideoFrameRate::p24, tooLarge},
                     {"00:00:01:00", VideoFrameRate::custom({largest, 1}), {}}};
  for (const auto& [text, rate, error] : cases) {
    const auto number = frameNumber(Timecode::sanitizedTimecode(text), rate);
    ASSERT_EQ(number.has_value(), !error) << text;
    if (error) {
      EXPECT_EQ(number.error(), *error) << text;
    }
  }
  EXPECT_EQ(frameNumber({0, 0, -1, 0, false}, VideoFrameRate::p24), Unexpected(negativeComponent));
  EXPECT_EQ(timecodeOfFrame(-1, VideoFrameRate::p24, false), Unexpected(negativeFrameNumber));
  EXPECT_EQ(timecodeOfFrame(0, VideoFrameRate::p24, true), Unexpected(notADropFrameRate));
  EXPECT_EQ(timecodeOfFrame(0, VideoFrameRate::custom({1, 3}), false), Unexpected(rateWithoutTimecode));
  EXPECT_EQ(
      (TimecodeError{droppedLabel, "00:01:00;00", "at 29.97 FPS"}.message()),
      "\"00:01:00;00\": is a label that drop-frame timecode skips: at 29.97 FPS; start such a minute at frame 02, or "
      "04 at 59.94");
}

TEST(FrameNumber, IsExactAtTheEndsOfTheRange) {
  for (const VideoFrameRate& rate :
       {VideoFrameRate::ntsc30p, VideoFrameRate::ntsc60p, VideoFrameRate::p600, VideoFrameRate::custom({1, 2}),
        VideoFrameRate::custom({largest, 1}), VideoFrameRate::custom({largest, 2})}) {
    for (const std::int64_t frame : {largest, largest - 1, largest / 2, std::int64_t{0}, std::int64_t{1}}) {
      for (const bool isDropFrame : {false, true}) {
        const auto label = timecodeOfFrame(frame, rate, isDropFrame);
        ASSERT_EQ(label.has_value(), !isDropFrame || droppedLabelsPerMinute(rate)) << rate.formattedString();
        if (!label) continue;
        EXPECT_EQ(frameNumber(*label, rate), frame) << rate.formattedString();
        if (frame != largest) continue;
        TimecodeComponents next = *label;
        ++next.hours;
        EXPECT_EQ(frameNumber(next, rate), Unexpected(TimecodeErrorCode::tooLarge)) << rate.formattedString();
      }
    }
  }
  static_assert(frameNumber({largest, 0, 0, 0, false}, VideoFrameRate::custom({1, 1})).error() ==
                TimecodeErrorCode::tooLarge);
  static_assert(!VideoFrameRate::matching({1, 0}) && MediaRational{-1, 0}.rawValue() < 0);
  static_assert(timecodeOfFrame(1800, VideoFrameRate::ntsc30p, true) == Timecode{0, 1, 0, 2, true});
}

}  // namespace
}  // namespace meridian
