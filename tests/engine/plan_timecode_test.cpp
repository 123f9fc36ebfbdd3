#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <tuple>

#include "tests/engine/planned_words.h"

namespace meridian {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

MediaDescription labelled(std::string_view start, const VideoFrameRate& rate, std::int64_t frames = 250) {
  MediaDescription clip = atRate(hdClip(), rate);
  clip.timecode->start = *TimecodeComponents::fromTimecode(start);
  clip.video.front().frameCount = frames;
  return clip;
}

MediaDescription created(std::string date) {
  MediaDescription clip = hdClip();
  clip.creationDate = std::move(date);
  clip.modificationTime = std::chrono::sys_seconds(std::chrono::seconds(3661));
  return clip;
}

struct StartCase {
  std::string words;
  std::string start;
  MediaDescription clip = hdClip();
};

TEST(PlanTimecode, StartsAtTheLabelOfItsSource) {
  const VideoFrameRate ntsc = VideoFrameRate::ntsc30p;
  const VideoFrameRate film = VideoFrameRate::p24;
  const std::vector<StartCase> cases{
      {"-tc_track", "01:00:00:00"},
      {"-tc_track -tc_match", "01:00:58;28", labelled("01:00:58;28", ntsc)},
      {"-tc_track -tc_custom 10:20:30:24", "10:20:30:24"},
      {"-tc_track -tc_custom 10:20:30;29", "10:20:30;29", labelled("00:00:00:00", ntsc)},
      {"-tc_track -tc_drop -tc_custom 10:20:30:29", "10:20:30;29", labelled("00:00:00:00", ntsc)},
      {"-tc_track -tc_drop", "00:01:00;02", labelled("00:01:00:01", ntsc)},
      // Another rate keeps the time, and drops frames only where the rate has it.
      {"-vcodec h264 -vr 24 -tc_track", "01:00:58:22", labelled("01:00:58;28", ntsc)},
      {"-vcodec h264 -vr 59.94 -tc_track", "01:00:58;56", labelled("01:00:58;28", ntsc)},
      {"-vcodec h264 -vr 59.94 -tc_track", "00:01:00;04", labelled("00:01:00;02", ntsc)},
      {"-vcodec h264 -vr 29.97 -tc_track", "01:00:00:28", labelled("01:00:00:23", film)},
      {"-vcodec h264 -tc_burn -tc_rate 50", "01:00:00:40", labelled("01:00:00:20", VideoFrameRate::pal25p)},
      // The time of creation, as written or in the zone of the machine, an hour ahead here.
      {"-tc_track -tc_creation", "10:20:30:00", created("2026-11-22T10:20:30+0900")},
      {"-tc_track -tc_creation", "10:20:30:12", created("2026-11-22 10:20:30.5")},
      {"-tc_track -tc_creation", "10:20:30:24", created("2026-11-22 10:20:30.99999999999999999999")},
      {"-tc_track -tc_creation", "00:20:30:00", created("2026-11-22T23:20:30Z")},
      {"-tc_track -tc_creation", "02:01:01:00", created("")},
      {"-tc_track -tc_creation", "02:01:01:00", created("2026-11-22T25:00:00")},
      {"-tc_track -tc_creation", "02:01:01:00", created("2026-02-30T10:20:30")},
      {"-tc_track -tc_creation", "02:01:01:00", created("2026-11-22T-1:20:30")},
  };
  TranscodeSurroundings found;
  found.utcOffset = std::chrono::hours(1);
  for (const auto& [words, start, clip] : cases) {
    SCOPED_TRACE(words + " " + start);
    const TranscodePlan plan = successful(planned(words, {clip}, found));
    ASSERT_TRUE(plan.timecode);
    EXPECT_EQ(plan.timecode->start.timecodeString(), start);
  }
}

TEST(PlanTimecode, IsStoredWhereItIsAskedForOrAlways) {
  const auto optionOf = [](const TranscodePlan& plan, std::string_view name) {
    for (const PlannedOption& option : plan.output.options) {
      if (option.name == name) return option.value;
    }
    return std::string();
  };
  const TranscodePlan none = successful(planned(""));
  EXPECT_FALSE(none.timecode);
  EXPECT_EQ(optionOf(none, "write_tmcd"), "0");
  const TranscodePlan track = successful(planned("-tc_track"));
  EXPECT_TRUE(track.timecode->isInTrack);
  EXPECT_EQ(optionOf(track, "write_tmcd"), "1");
  const TranscodePlan burnt = successful(planned("-vcodec h264 -tc_burn"));
  EXPECT_FALSE(burnt.timecode->isInTrack);
  EXPECT_EQ(optionOf(burnt, "write_tmcd"), "0");
  const TranscodePlan mxf = successful(planned("-out /o.mxf -vcodec dnxhd -acodec lpcm"));
  EXPECT_TRUE(mxf.timecode->isInTrack);
  EXPECT_THAT(mxf.warnings, IsEmpty());
}

TEST(PlanTimecode, GoesOnOverPartsUnlessTheirLabelsBreak) {
  const auto partStarts = [](std::vector<MediaDescription> parts) {
    std::vector<std::string> starts;
    const std::string third = parts.size() > 2 ? " -in_0_2 c.mov" : "";
    const TranscodePlan plan = successful(planned("-in_0_1 b.mov" + third + " -tc_track -tc_match", parts));
    for (const auto& each : plan.timecode->partStarts) starts.push_back(each ? each->timecodeString() : "");
    return starts;
  };
  const VideoFrameRate rate = VideoFrameRate::pal25p;
  EXPECT_THAT(partStarts({labelled("01:00:00:00", rate), labelled("01:00:10:00", rate)}), IsEmpty());
  EXPECT_THAT(partStarts({labelled("01:00:00:00", rate), labelled("01:00:10:01", rate)}),
              ElementsAre("01:00:00:00", "01:00:10:01"));
  EXPECT_THAT(partStarts({labelled("01:00:00:00", rate, std::numeric_limits<std::int64_t>::max()), hdClip()}),
              ElementsAre("01:00:00:00", "01:00:00:00"));
  // A part without a timecode goes on, and does not hide that another one breaks.
  const auto unlabelled = [&](std::int64_t frames) {
    MediaDescription clip = labelled("00:00:00:00", rate, frames);
    clip.timecode.reset();
    return clip;
  };
  EXPECT_THAT(partStarts({labelled("01:00:00:00", rate, 25), unlabelled(25), labelled("01:00:02:00", rate)}),
              IsEmpty());
  EXPECT_THAT(partStarts({labelled("01:00:00:00", rate, 25), unlabelled(25), labelled("05:00:00:00", rate)}),
              ElementsAre("01:00:00:00", "", "05:00:00:00"));
  EXPECT_THAT(partStarts({labelled("01:00:00:00", rate, 25), labelled("05:00:00:00", rate), unlabelled(25)}),
              ElementsAre("01:00:00:00", "05:00:00:00", ""));
  EXPECT_THAT(partStarts({unlabelled(25), labelled("05:00:00:00", rate)}), ElementsAre("00:00:00:00", "05:00:00:00"));
  // At midnight labels begin anew.
  EXPECT_THAT(partStarts({labelled("23:59:59:24", rate, 1), labelled("00:00:00:00", rate)}), IsEmpty());
  // Labels with and without drop frame have equal numbers in the first minute alone.
  EXPECT_THAT(partStarts({labelled("23:59:59;28", VideoFrameRate::ntsc30p, 2),
                          labelled("00:00:00:00", VideoFrameRate::ntsc30p)}),
              ElementsAre("23:59:59;28", "00:00:00:00"));
  EXPECT_THAT(partStarts({labelled("23:59:59;28", VideoFrameRate::ntsc30p, 2),
                          labelled("00:00:00;00", VideoFrameRate::ntsc30p)}),
              IsEmpty());
  // Of every two images at 59.94 one has a label of its own, where these count 30 a second.
  const auto halfLabelled = [](std::string_view start, std::int64_t frames) {
    MediaDescription clip = labelled(start, VideoFrameRate::ntsc60p, frames);
    clip.timecode->rate = VideoFrameRate::ntsc30p;
    return clip;
  };
  const std::vector<std::tuple<int, const char*, bool>> halves{{600, "01:00:10:00", true},
                                                               {600, "01:00:10:01", false},
                                                               {601, "01:00:10:00", true},
                                                               {601, "01:00:10:01", true},
                                                               {601, "01:00:10:02", false}};
  for (const auto& [frames, next, isContinued] : halves) {
    EXPECT_EQ(partStarts({halfLabelled("01:00:00:00", frames), halfLabelled(next, 1)}).empty(), isContinued) << next;
  }
  // What is moved is moved, and said, once.
  const VideoFrameRate film = VideoFrameRate::p24;
  const TranscodePlan plan = successful(planned("-vcodec h264 -vr 29.97 -tc_track -tc_drop -in_0_1 b.mov",
                                                {labelled("01:01:00:00", film), labelled("02:00:00:00", film)}));
  EXPECT_EQ(std::ranges::count(plan.warnings, TranscodePlanWarningCode::timecodeMoved, &TranscodePlanWarning::code), 1);
}

}  // namespace
}  // namespace meridian
