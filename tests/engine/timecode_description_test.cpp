// Where a file's timecode is found, and how it counts.
#include <gmock/gmock.h>

#include <string>

#include "tests/engine/made_media.h"

namespace meridian::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
  ASSERT_NO_FATAL_FAILURE(make({clip("25.mov", "25", "01:00:00:00"), clip("30.mov", "30000/1001", "01:00:58;28")}));
  struct Row {
    const char* file;
    std::uint32_t flags;
    std::uint32_t frame;
    const char* expected;
    std::vector<MediaWarningCode> warnings = {};
  };
  const std::vector<Row> rows{
      {"30.mov", 1, 109660, "01:00:58;28 01:00:59;00 tmcd"},
      {"30.mov", 0, 109660, "01:00:55:10 01:00:55:12 tmcd"},
      {"30.mov", 1, 1799, "00:00:59;29 00:01:00;03 tmcd"},
      {"25.mov", 1, 100, "00:00:04:00 00:00:04:02 tmcd", {MediaWarningCode::dropFrameAtOtherRate}},
      {"25.mov", 0, 24 * 3600 * 25 + 1, "24:00:00:01 24:00:00:03 tmcd"},
      {"25.mov", 2, 24 * 3600 * 25 + 1, "00:00:00:01 00:00:00:03 tmcd"},
      {"25.mov", 4, 0xffffffff, "", {MediaWarningCode::timecodeNotRead}},
      {"25.mov", 0, 0xffffffff, "47721:51:31:20 47721:51:31:22 tmcd"},
      {"25.mov", 8, 100, ""},  // a counter is not a timecode
  };
  for (const Row& row : rows) {
    std::string bytes = content(row.file);
    // The flags lie after the size and type of the sample description, its 8 bytes of header, and 4 reserved bytes; the
    // track's sample is the last of the media data, in front of the index.
    putBigEndian(bytes, bytes.rfind("tmcd\0\0\0\0", std::string::npos, 8) + 16, row.flags);
    std::string frame(4, '\0');
    putBigEndian(frame, 0, std::string_view(row.file) == "25.mov" ? 90000 : 109660);
    const std::size_t sample = bytes.find(frame, bytes.find("mdat"));
    ASSERT_NE(sample, std::string::npos);
    putBigEndian(bytes, sample, row.frame);
    directory().write("patched.mov", bytes);
    const MediaDescription description = described("patched.mov");
    // Without a label in the track, the tag that FFmpeg derives from it is next.
    if (*row.expected != '\0') {
      EXPECT_EQ(textOf(description), row.expected) << row.file << ' ' << row.flags;
    }
    if (*row.expected == '\0' && description.timecode) {
      EXPECT_NE(description.timecode->source, MediaTimecodeSource::tmcd);
    }
    for (const MediaWarningCode code : row.warnings) EXPECT_THAT(warningsOf(description), testing::Contains(code));
    if (row.warnings.empty()) {
      EXPECT_THAT(warningsOf(description), IsEmpty()) << row.flags << ' ' << row.frame;
    }
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
}

}  // namespace
}  // namespace meridian::test
