// Where a file's timecode is found, and how it counts.
#include <gmock/gmock.h>

#include <map>
#include <string>

#include "tests/engine/made_media.h"

namespace meridian::test {
namespace {

using testing::ElementsAre;

class TimecodeDescriptionTest : public MadeMedia {
 protected:
  /// Makes an otherwise equal clip of three frames.
  static Recipe clip(const std::string& name, const std::string& rate, const std::string& timecode) {
    return {name, "-map 0:v -frames:v 3 -r " + rate + " -c:v mpeg2video -q:v 9" +
                      (timecode.empty() ? "" : " -timecode " + timecode)};
  }

  /// Returns the timecode as "start end source"; empty if there is none.
  static std::string textOf(const MediaDescription& description) {
    if (!description.timecode) return {};
    const TimecodeDescription& timecode = *description.timecode;
    return timecode.start.timecodeString() + ' ' + (timecode.end ? timecode.end->timecodeString() : "-") + ' ' +
           std::string(rawValue(timecode.source));
  }

  static std::vector<MediaWarningCode> warningsOf(const MediaDescription& description) {
    std::vector<MediaWarningCode> codes;
    for (const MediaWarning& warning : description.warnings) codes.push_back(warning.code);
    return codes;
  }
};

TEST_F(TimecodeDescriptionTest, ComesFromTheTrackOrTheFormatOfEachContainer) {
  ASSERT_NO_FATAL_FAILURE(
      make({clip("ndf.mov", "24000/1001", "01:00:00:22"), clip("df.mov", "30000/1001", "00:00:59;28"),
            clip("df60.mp4", "60000/1001", "10:09:59;58"), clip("day.mov", "25", "23:59:59:24"),
            clip("material.mxf", "25", "10:00:00:00"), clip("none.mov", "25", "")}));
  EXPECT_EQ(textOf(described("ndf.mov")), "01:00:00:22 01:00:01:00 tmcd");
  EXPECT_EQ(textOf(described("df.mov")), "00:00:59;28 00:01:00;02 tmcd");
  EXPECT_EQ(textOf(described("df60.mp4")), "10:09:59;58 10:10:00;00 tmcd");
  EXPECT_EQ(textOf(described("day.mov")), "23:59:59:24 00:00:00:01 tmcd");
  EXPECT_EQ(textOf(described("material.mxf")), "10:00:00:00 10:00:00:02 format");
  EXPECT_EQ(textOf(described("none.mov")), "");
  EXPECT_EQ(described("df.mov").timecode->rate, VideoFrameRate::ntsc30p);
}

TEST_F(TimecodeDescriptionTest, CountsTheRawFrameNumberOfTheTrack) {
  ASSERT_NO_FATAL_FAILURE(make({clip("25.mov", "25", "01:00:00:00"), clip("30.mov", "30000/1001", "01:00:58;28"),
                                clip("60.mov", "60000/1001", "01:00:00;00")}));
  const std::map<std::string, std::uint32_t> written{{"25.mov", 90'000}, {"30.mov", 109'660}, {"60.mov", 215'784}};
  struct Row {
    const char* file;
    std::uint32_t flags;
    std::uint32_t frame;
    const char* expected;
    std::vector<MediaWarningCode> warnings = {};
    /// The frames that labels count per second, if they are not the rounded rate.
    char counted = 0;
  };
  const std::vector<Row> rows{
      {"30.mov", 1, 109660, "01:00:58;28 01:00:59;00 tmcd"},
      {"30.mov", 0, 109660, "01:00:55:10 01:00:55:12 tmcd"},
      {"30.mov", 1, 1799, "00:00:59;29 00:01:00;03 tmcd"},
      {"25.mov", 1, 100, "00:00:04:00 00:00:04:02 tmcd", {MediaWarningCode::dropFrameAtOtherRate}},
      {"25.mov", 0, 24 * 3600 * 25 + 1, "24:00:00:01 24:00:00:03 tmcd"},
      {"25.mov", 2, 24 * 3600 * 25 + 1, "00:00:00:01 00:00:00:03 tmcd"},
      {"25.mov", 4, 0xffffffff, "-", {MediaWarningCode::timecodeNotRead}},
      {"25.mov", 0, 0xffffffff, "47721:51:31:20 47721:51:31:22 tmcd"},
      {"25.mov", 8, 100, "-"},  // a counter is not a timecode
      {"30.mov", 9, 1800, "-"},
      {"30.mov", 1, 109660, "01:00:58;28 01:00:59;00 tmcd", {}, 29},  // rounded down
      {"60.mov", 1, 107892, "01:00:00;00 01:00:00;01 tmcd", {}, 30},  // each second frame
      {"60.mov", 1, 215784, "01:00:00;00 01:00:00;02 tmcd", {}, 59},
  };
  for (const Row& row : rows) {
    std::string bytes = content(row.file);
    // The flags lie after the size and type of the sample description, its 8 bytes of header, and 4 reserved bytes; the
    // track's sample is the last of the media data, in front of the index.
    const std::size_t format = bytes.rfind("tmcd\0\0\0\0", std::string::npos, 8);
    putBigEndian(bytes, format + 16, row.flags);
    if (row.counted != 0) bytes.at(format + 28) = row.counted;
    std::string frame(4, '\0');
    putBigEndian(frame, 0, written.at(row.file));
    const std::size_t sample = bytes.find(frame, bytes.find("mdat"));
    ASSERT_NE(sample, std::string::npos);
    putBigEndian(bytes, sample, row.frame);
    directory().write("patched.mov", bytes);
    const MediaDescription description = described("patched.mov");
    const std::string text = textOf(description);
    EXPECT_EQ(text.empty() ? "-" : text, row.expected) << row.file << ' ' << row.flags;
    EXPECT_EQ(warningsOf(description), row.warnings) << row.flags << ' ' << row.frame;
  }
}

TEST_F(TimecodeDescriptionTest, ComesFromATagWhereThereIsNoTrack) {
  const std::string video = "-map 0:v -frames:v 3 -r 30000/1001 -c:v ffv1 ";
  ASSERT_NO_FATAL_FAILURE(
      make({{"stream.mkv", video + "-metadata:s:v timecode=01:00:58;28"},
            {"format.mkv", video + "-metadata timecode=02:00:58:28"},
            {"both.mkv", video + "-metadata:s:v timecode=01:00:58;28 -metadata timecode=02:00:58:28"},
            {"dropped.mkv", video + "-metadata:s:v timecode=00:01:00;00"},
            {"text.mkv", video + "-metadata:s:v timecode=reel\n"},
            {"sound.mkv", "-map 1:a -c:a flac -metadata timecode=02:00:58:28"}}));
  EXPECT_EQ(textOf(described("stream.mkv")), "01:00:58;28 - stream");
  EXPECT_EQ(textOf(described("format.mkv")), "02:00:58:28 - format");
  EXPECT_EQ(textOf(described("both.mkv")), "01:00:58;28 - stream");
  for (const char* const name : {"dropped.mkv", "text.mkv"}) {
    EXPECT_EQ(textOf(described(name)), "");
    EXPECT_THAT(warningsOf(described(name)), ElementsAre(MediaWarningCode::timecodeNotRead)) << name;
  }
  EXPECT_EQ(textOf(described("sound.mkv")), "");  // no rate to count at

  // A label counts at the rate of its own stream: there is no frame 28 at 25.
  ASSERT_NO_FATAL_FAILURE(make({{"two.mkv",
                                 "-map 0:v -map 0:v -frames:v 3 -r:v:0 25 -r:v:1 30000/1001 -c:v ffv1 "
                                 "-metadata:s:v:1 timecode=01:00:58;28"}}));
  EXPECT_EQ(described("two.mkv").timecode.value().rate, VideoFrameRate::ntsc30p);
}

}  // namespace
}  // namespace meridian::test
