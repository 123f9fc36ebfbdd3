// What a description says of made media, against ffprobe and mediainfo, and against what the media were made of.
#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "meridian/media/media_names.h"
#include "tests/engine/made_media.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

using nlohmann::json;
using testing::IsEmpty;

class DescriptionTest : public MadeMedia {};

/// Returns the text of a member; empty if it is not there.
std::string member(const json& object, const char* key) { return object.value(key, std::string()); }

MediaRational ratio(const std::string& written, char separator) {
  const std::size_t middle = written.find(separator);
  return inLowestTerms({std::stoll(written), std::stoll(written.substr(middle + 1))}).value_or(MediaRational{0, 0});
}

void expectSeconds(const std::optional<MediaRational>& seconds, const std::string& expected, double tolerance) {
  ASSERT_EQ(seconds.has_value(), !expected.empty()) << expected;
  if (seconds) {
    EXPECT_NEAR(seconds->rawValue(), std::stod(expected), tolerance);
  }
}

void expectSharedAsFfprobe(const StreamDescription& stream, const json& peer) {
  EXPECT_EQ(stream.codecName, member(peer, "codec_name"));
  EXPECT_EQ(stream.profile, member(peer, "profile") == "unknown" ? "" : member(peer, "profile"));
  EXPECT_EQ(stream.codecTag.empty() ? "[0][0][0][0]" : stream.codecTag, member(peer, "codec_tag_string"));
  EXPECT_EQ(stream.bitRate ? std::to_string(*stream.bitRate) : "", member(peer, "bit_rate"));
  expectSeconds(stream.startTime, member(peer, "start_time"), 1e-6);
  expectSeconds(stream.duration, member(peer, "duration"), 1e-6);
  const json tags = peer.value("tags", json::object());
  EXPECT_EQ(stream.tags.size(), tags.size());
  for (const MediaTag& tag : stream.tags) EXPECT_EQ(tag.value, member(tags, tag.key.c_str())) << tag.key;
  EXPECT_EQ(stream.language, member(tags, "language") == "und" ? "" : member(tags, "language"));
}

void expectAsFfprobe(const VideoStreamDescription& video, const json& peer) {
  expectSharedAsFfprobe(video, peer);
  EXPECT_TRUE(video.isDecodable);
  EXPECT_EQ(video.width, peer["width"]);
  EXPECT_EQ(video.height, peer["height"]);
  const std::string aspect = member(peer, "sample_aspect_ratio");
  EXPECT_EQ(video.pixelAspectRatio, aspect.empty() ? (MediaRational{1, 1}) : ratio(aspect, ':'));
  EXPECT_EQ(video.level.value_or(-99), peer.value("level", -99));
  EXPECT_EQ(video.averageFrameRate.value_or(MediaRational{0, 0}), ratio(member(peer, "avg_frame_rate"), '/'));
  if (!video.isVariable) {
    EXPECT_NEAR(video.exactFrameRate->rawValue(), ratio(member(peer, "r_frame_rate"), '/').rawValue(), 0.005);
  }
  if (video.frameCount || peer.contains("nb_frames")) {
    EXPECT_EQ(std::to_string(video.frameCount.value_or(-1)), member(peer, "nb_read_frames"));
  }
  EXPECT_EQ(rawValue(video.fieldOrder), peer.value("field_order", "unknown"));
  EXPECT_EQ(video.pixelFormat, member(peer, "pix_fmt"));
  const std::string range = member(peer, "color_range");
  EXPECT_EQ(rawValue(video.range), range == "tv" ? "limited" : range == "pc" ? "full" : "unknown");
  EXPECT_EQ(video.primaries.name, peer.value("color_primaries", "unknown"));
  EXPECT_EQ(video.transfer.name, peer.value("color_transfer", "unknown"));
  EXPECT_EQ(video.matrix.name, peer.value("color_space", "unknown"));
}

void expectAsFfprobe(const AudioStreamDescription& audio, const json& peer) {
  expectSharedAsFfprobe(audio, peer);
  EXPECT_EQ(std::to_string(audio.sampleRate), member(peer, "sample_rate"));
  EXPECT_EQ(audio.channelCount, peer["channels"]);
  EXPECT_EQ(audio.layoutName, member(peer, "channel_layout"));
  EXPECT_EQ(audio.sampleFormat, member(peer, "sample_fmt"));
  const int bits = peer.value("bits_per_sample", 0);
  if (audio.format == SAVLpcmAudioFormatValue) {
    EXPECT_EQ(audio.bitsPerChannel, bits);
  }
}

void expectAsFfprobe(const MediaDescription& description, const json& peer) {
  const json& format = peer["format"];
  EXPECT_EQ(description.formatName, member(format, "format_name"));
  EXPECT_EQ(std::to_string(description.size), member(format, "size"));
  EXPECT_EQ(description.bitRate ? std::to_string(*description.bitRate) : "", member(format, "bit_rate"));
  // The header of a QuickTime movie, which ffprobe goes by, is rounded to milliseconds.
  expectSeconds(description.duration, member(format, "duration"), 0.001);
  expectSeconds(description.startTime, member(format, "start_time"), 1e-6);
  std::size_t video = 0;
  std::size_t audio = 0;
  for (const json& stream : peer["streams"]) {
    SCOPED_TRACE("stream " + stream["index"].dump());
    if (stream["codec_type"] == "video") {
      ASSERT_LT(video, description.video.size());
      EXPECT_EQ(description.video[video].index, stream["index"]);
      expectAsFfprobe(description.video[video++], stream);
    } else if (stream["codec_type"] == "audio") {
      ASSERT_LT(audio, description.audio.size());
      EXPECT_EQ(description.audio[audio].track, static_cast<int>(audio));
      expectAsFfprobe(description.audio[audio++], stream);
    }
  }
  EXPECT_EQ(video, description.video.size());
  EXPECT_EQ(audio, description.audio.size());
  EXPECT_EQ(video + audio + description.others.size(), peer["streams"].size());
}

/// Compares a number if the peer states it.
void expectNumber(double number, const json& peer, const char* key, double tolerance = 0) {
  if (peer.contains(key)) {
    EXPECT_NEAR(number, std::stod(member(peer, key)), tolerance) << key;
  }
}

void expectAsMediainfo(const VideoStreamDescription& video, const json& peer) {
  expectNumber(video.width, peer, "Width");
  expectNumber(video.height, peer, "Height");
  expectNumber(video.pixelAspectRatio.rawValue(), peer, "PixelAspectRatio", 0.001);
  expectNumber(video.rotation, peer, "Rotation");
  if (video.frameCount && !video.isVariable) expectNumber(static_cast<double>(*video.frameCount), peer, "FrameCount");
  expectNumber(video.bitDepth.value_or(0), peer, "BitDepth");
  if (peer.contains("ChromaSubsampling")) {
    EXPECT_EQ(rawValue(video.chroma.value()), member(peer, "ChromaSubsampling"));
  }
  if (peer.contains("ScanType") && video.fieldOrder != FieldOrder::unknown) {
    EXPECT_EQ(isInterlaced(video.fieldOrder), member(peer, "ScanType") != "Progressive");
  }
  if (peer.contains("FrameRate_Mode") && peer.contains("FrameRate")) {
    EXPECT_EQ(video.isVariable, member(peer, "FrameRate_Mode") == "VFR");
  }
  if (!video.isVariable && video.exactFrameRate) {
    expectNumber(video.exactFrameRate->rawValue(), peer, "FrameRate", 0.001);
  }
}

void expectAsMediainfo(const MediaDescription& description, const json& peer) {
  std::size_t video = 0;
  std::size_t audio = 0;
  for (const json& track : peer["media"]["track"]) {
    const std::string type = member(track, "@type");
    SCOPED_TRACE("mediainfo's " + type);
    if (type == "Video" && video < description.video.size()) {
      expectAsMediainfo(description.video[video++], track);
    } else if (type == "Audio" && audio < description.audio.size()) {
      const AudioStreamDescription& sound = description.audio[audio++];
      expectNumber(sound.channelCount, track, "Channels");
      expectNumber(sound.sampleRate, track, "SamplingRate");
      if (sound.bitsPerChannel) expectNumber(*sound.bitsPerChannel, track, "BitDepth");
    } else if (type == "Other" && track.contains("TimeCode_FirstFrame")) {
      ASSERT_TRUE(description.timecode);
      EXPECT_EQ(description.timecode->start.timecodeString(), member(track, "TimeCode_FirstFrame"));
      // Where mediainfo counts by the rounded duration of the movie, it may count one frame more.
      const bool countsFrames =
          member(track, "FrameCount") == std::to_string(description.video.at(0).frameCount.value());
      if (track.contains("TimeCode_LastFrame") && countsFrames) {
        EXPECT_EQ(description.timecode->end.value().timecodeString(), member(track, "TimeCode_LastFrame"));
      }
    }
  }
}

/// A file, and what a colourist would say of it.
struct PeerRow {
  Recipe recipe;
  std::optional<std::string_view> container;
  std::optional<std::string_view> codec;
  std::optional<SAVTranscodeArgumentVideoCodecValue> videoFormat;
  std::optional<SAVTranscodeArgumentAudioFormatValue> audioFormat;
  std::optional<SAVTranscodeArgumentColorSpaceValue> colorSpace = std::nullopt;
};

const std::string mapBoth = "-map 0:v -map 1:a ";
const std::string mapVideo = "-map 0:v ";
const std::string mapSound = "-map 1:a ";
const std::string mapImage = "-map 0:v -frames:v 1 -update 1 ";

std::string tagged(const char* primaries, const char* transfer, const char* matrix, const char* format) {
  return std::string("-vf setparams=color_primaries=") + primaries + ":color_trc=" + transfer +
         ":colorspace=" + matrix + ",format=" + format + " ";
}

const std::vector<PeerRow>& peerRows() {
  constexpr auto qt = SLVMediaFileContainerQuickTimeMovie;
  constexpr auto mp4 = SLVMediaFileContainerMP4;
  constexpr auto mxf = SLVMediaFileContainerMXF;
  static const std::vector<PeerRow> list{
      {{"hq.mov", mapBoth + tagged("bt709", "bt709", "bt709", "yuv422p10le") +
                      "-r 30000/1001 -c:v prores_ks -profile:v 3 -timecode 01:00:58;28 -c:a pcm_s24le"},
       qt,
       SLVVideoCodecProRes422,
       SAVProRes422HQ,
       SAVLpcmAudioFormatValue,
       SAVRec709ColorSpace},
      {{"proxy.mov", mapVideo + "-r 25 -c:v prores_aw -profile:v 0 -pix_fmt yuv422p10le -timecode 23:59:58:22"},
       qt,
       SLVVideoCodecProRes422,
       SAVProRes422Proxy,
       {}},
      {{"alpha.mov", mapVideo + tagged("bt2020", "bt2020-10", "bt2020nc", "yuva444p10le") +
                         "-r 60000/1001 -c:v prores_ks -profile:v 4 -timecode 00:09:59;58"},
       qt,
       SLVVideoCodecProRes4444,
       SAVProRes4444,
       {},
       SAVRec2020ColorSpace},
      {{"xq.mov", mapVideo + tagged("smpte170m", "bt709", "smpte170m", "yuv444p10le") +
                      "-r 50 -c:v prores_ks -profile:v 5 -timecode 10:00:00:00"},
       qt,
       SLVVideoCodecProRes4444,
       SAVProRes4444XQ,
       {},
       SAVSmptecColorSpace},
      {{"wide.mp4", mapBoth + "-vf setsar=64/45 -r 24000/1001 -c:v libx264 -pix_fmt yuv420p -c:a aac -metadata:s:a "
                              "language=deu"},
       mp4,
       SLVVideoCodecH264,
       SAVAvcH264Codec,
       SAVAacAudioFormatValue},
      {{"deep.mov", mapVideo + tagged("bt470bg", "bt709", "bt470bg", "yuv420p10le") +
                        "-r 24 -c:v libx265 -x265-params log-level=none -tag:v hvc1"},
       qt,
       SLVVideoCodecH265,
       SAVHevcCodec,
       {},
       SAVEbu3213ColorSpace},
      {{"vfr.mp4", mapVideo + "-vf select='lt(n,6)+not(mod(n,3))' -vsync vfr -bf 0 -c:v libx264 -pix_fmt yuv420p"},
       mp4,
       SLVVideoCodecH264,
       SAVAvcH264Codec,
       {}},
      {{"fields.mxf", mapBoth +
                          "-r 25 -c:v mpeg2video -pix_fmt yuv422p -flags +ildct+ilme -top 1 -timecode 10:00:00:00 "
                          "-c:a pcm_s16le"},
       mxf,
       SLVVideoCodecMpeg2,
       {},
       SAVLpcmAudioFormatValue},
      {{"hd.mxf", mapVideo + "-vf scale=1280x720,format=yuv422p -r 50 -frames:v 2 -c:v dnxhd -b:v 120M"},
       mxf,
       SLVVideoCodecAvidDNxHD,
       SAVDnxhdCodec,
       {}},
      {{"hr.mov", mapVideo + "-vf scale=256x120,format=yuv422p10 -r 24 -frames:v 2 -c:v dnxhd -profile:v dnxhr_hqx"},
       qt,
       SLVVideoCodecAvidDNxHR,
       SAVDnxhdCodec,
       {}},
      {{"card.avi", mapBoth + "-r 12.5 -c:v mjpeg -pix_fmt yuvj422p -c:a pcm_s16le"},
       SLVMediaFileContainerAVI,
       SLVVideoCodecJPEG,
       SAVMotionJpegCodec,
       SAVLpcmAudioFormatValue},
      {{"old.mov", mapVideo + "-r 15 -c:v mpeg4"}, qt, SLVVideoCodecMpeg4, SAVMpeg4Codec, {}},
      {{"form.mov", mapVideo + "-frames:v 2 -c:v cfhd -pix_fmt yuv422p10"}, qt, SLVVideoCodecCineform, {}, {}},
      {{"web.mkv", mapBoth + "-r 30 -c:v ffv1 -pix_fmt gray10 -c:a flac"}, {}, {}, {}, {}},
      {{"air.ts", mapBoth + "-r 25 -c:v libx264 -pix_fmt yuv420p -flags +ildct+ilme -c:a ac3"},
       {},
       SLVVideoCodecH264,
       SAVAvcH264Codec,
       {}},
      {{"sound.m4a", mapSound + "-c:a alac -sample_fmt s32p"}, mp4, {}, {}, SAVAppleLosslessAudioFormatValue},
      {{"float.wav", mapSound + "-c:a pcm_f32le -ac 2"}, {}, {}, {}, SAVLpcmAudioFormatValue},
      {{"ima.mov", mapSound + "-c:a adpcm_ima_qt"}, qt, {}, {}, SAVAppleIMA41ADPCMAudioFormatValue},
      {{"big.aif", mapSound + "-c:a pcm_s24be -ar 96000"}, {}, {}, {}, SAVLpcmAudioFormatValue},
  };
  return list;
}

class PeerTest : public DescriptionTest {
 protected:
  void makeRows() {
    std::vector<Recipe> recipes;
    for (const PeerRow& row : peerRows()) recipes.push_back(row.recipe);
    ASSERT_NO_FATAL_FAILURE(make(recipes));
  }
};

TEST_F(PeerTest, AgreesWithFfprobe) {
  ASSERT_NO_FATAL_FAILURE(makeRows());
  for (const PeerRow& row : peerRows()) {
    SCOPED_TRACE(row.recipe.name);
    const std::string file = path(row.recipe.name);
    const MediaDescription description = described(row.recipe.name);
    EXPECT_EQ(description.container, row.container);
    EXPECT_THAT(description.warnings, IsEmpty());
    if (const VideoStreamDescription* const video = description.mainVideo()) {
      EXPECT_EQ(video->codec, row.codec);
      EXPECT_EQ(video->format, row.videoFormat);
      EXPECT_EQ(video->colorSpace, row.colorSpace);
      EXPECT_EQ(video->hasAlpha, row.recipe.name == "alpha.mov");
      EXPECT_EQ(video->isVariable, row.recipe.name == "vfr.mp4");
    } else {
      EXPECT_EQ(row.codec, std::nullopt);
    }
    if (!description.audio.empty()) {
      EXPECT_EQ(description.audio.front().format, row.audioFormat);
    }

    const Outcome ffprobe = run(
        {"ffprobe", "-v", "error", "-show_streams", "-show_format", "-count_frames", "-of", "json", "file:" + file});
    expectAsFfprobe(description, json::parse(ffprobe.output));
  }
}

TEST_F(PeerTest, AgreesWithMediainfo) {
  if (!isInstalled("mediainfo")) GTEST_SKIP() << "mediainfo is not installed";
  ASSERT_NO_FATAL_FAILURE(makeRows());
  for (const PeerRow& row : peerRows()) {
    SCOPED_TRACE(row.recipe.name);
    const Outcome mediainfo = run({"mediainfo", "--Output=JSON", path(row.recipe.name)});
    expectAsMediainfo(described(row.recipe.name), json::parse(mediainfo.output));
  }
}

TEST_F(DescriptionTest, CountsTheFramesThatAnEditListShows) {
  ASSERT_NO_FATAL_FAILURE(make({{"whole.mov", mapVideo + "-r 24 -g 24 -bf 0 -c:v mpeg4 -timecode 01:00:00:00"}}));
  const std::string trimmed = path("trimmed.mov");
  ASSERT_EQ(run({"ffmpeg", "-v", "error", "-ss", "0.125", "-i", path("whole.mov"), "-c", "copy", trimmed}).status, 0);
  const MediaDescription description = described("trimmed.mov");
  const Outcome ffprobe = run(
      {"ffprobe", "-v", "error", "-show_streams", "-show_format", "-count_frames", "-of", "json", "file:" + trimmed});
  expectAsFfprobe(description, json::parse(ffprobe.output));
  const std::int64_t shown = description.video.at(0).frameCount.value();
  EXPECT_LT(shown, described("whole.mov").video.at(0).frameCount);
  EXPECT_EQ(description.timecode->end->frames, description.timecode->start.frames + shown - 1);
}

TEST_F(DescriptionTest, GuessesNoDurationFromTheSize) {
  ASSERT_NO_FATAL_FAILURE(make({{"a.aac", mapSound + "-c:a aac"},
                                {"a.mp3", mapSound + "-c:a libmp3lame -write_xing 0"},
                                {"counted.mp3", mapSound + "-c:a libmp3lame"}}));
  for (const char* const name : {"a.aac", "a.mp3"}) {
    const MediaDescription description = described(name);
    EXPECT_EQ(description.duration, std::nullopt) << name;
    EXPECT_EQ(description.bitRate, std::nullopt) << name;
    EXPECT_EQ(description.audio.at(0).duration, std::nullopt) << name;
  }
  EXPECT_NEAR(described("counted.mp3").duration.value().rawValue(), 0.25, 0.05);
}

TEST_F(DescriptionTest, GivesExactRatesAndDurations) {
  struct Rate {
    std::string option;
    std::optional<VideoFrameRate> rate;
    MediaRational exact;
    bool isExact = true;
  };
  const std::vector<Rate> rates{
      {"24000/1001", VideoFrameRate::ntsc24p, {24000, 1001}},
      {"23.976", VideoFrameRate::ntsc24p, {24000, 1001}, false},
      {"24", VideoFrameRate::p24, {24, 1}},
      {"25", VideoFrameRate::pal25p, {25, 1}},
      {"29.97", VideoFrameRate::ntsc30p, {30000, 1001}, false},
      {"30", VideoFrameRate::p30, {30, 1}},
      {"48", VideoFrameRate::p48, {48, 1}},
      {"50", VideoFrameRate::p50, {50, 1}},
      {"60000/1001", VideoFrameRate::ntsc60p, {60000, 1001}},
      {"60", VideoFrameRate::p60, {60, 1}},
      {"120000/1001", VideoFrameRate::ntsc120p, {120000, 1001}},
      {"12.5", VideoFrameRate::custom({25, 2}), {25, 2}},
  };
  std::vector<Recipe> recipes;
  for (std::size_t place = 0; place < rates.size(); ++place) {
    for (const char* const extension : {".mov", ".avi"}) {
      recipes.push_back({std::to_string(place) + extension, mapVideo + "-r " + rates[place].option + " -c:v mjpeg"});
    }
    recipes.push_back({std::to_string(place) + ".mkv", mapVideo + "-r " + rates[place].option + " -c:v mjpeg"});
  }
  ASSERT_NO_FATAL_FAILURE(make(recipes));
  for (const Recipe& recipe : recipes) {
    SCOPED_TRACE(recipe.name);
    const Rate& expected = rates[std::stoul(recipe.name)];
    const MediaDescription description = described(recipe.name);
    ASSERT_EQ(description.video.size(), 1U);
    const VideoStreamDescription& video = description.video.front();
    EXPECT_EQ(video.frameRate, expected.rate);
    EXPECT_EQ(video.exactFrameRate, expected.exact);
    EXPECT_FALSE(video.isVariable);
    // Frames of the whole duration, without rounding, where the file was made of an exact rate.
    if (recipe.name.ends_with(".mov") && expected.isExact) {
      EXPECT_EQ(description.duration,
                inLowestTerms({video.frameCount.value() * expected.exact.denominator, expected.exact.numerator}));
    }
  }
}

TEST_F(DescriptionTest, GivesConstantRatesThatTheTicksRoundOrThatAreFast) {
  const std::string fast = mapVideo + "-vf setpts=N/1000/TB -r 1000 -c:v mjpeg ";
  ASSERT_NO_FATAL_FAILURE(make({{"120.mov", mapVideo + "-r 120 -video_track_timescale 1000 -c:v mjpeg"},
                                {"119.mov", mapVideo + "-r 120000/1001 -video_track_timescale 600 -c:v mjpeg"},
                                {"1000.mkv", fast},
                                {"1000.nut", fast},
                                {"bare.mkv", mapVideo + "-vf fps=1000 -c:v mjpeg"},
                                {"900.mkv", mapVideo + "-vf setpts=N/900/TB -r 900 -c:v libx264 -pix_fmt yuv420p"}}));
  for (const auto& [name, rate] : std::map<std::string, MediaRational>{{"120.mov", {120, 1}},
                                                                       {"119.mov", {120, 1}},
                                                                       {"1000.mkv", {1000, 1}},
                                                                       {"1000.nut", {1000, 1}},
                                                                       {"bare.mkv", {1000, 1}},
                                                                       {"900.mkv", {900, 1}}}) {
    const VideoStreamDescription video = described(name).video.at(0);
    EXPECT_FALSE(video.isVariable) << name;
    EXPECT_EQ(video.exactFrameRate, rate) << name;
  }
}

TEST_F(DescriptionTest, BelievesTheTimesOfATransportStreamRatherThanItsImages) {
  // Longer than what is read for the rate.
  const std::string clip = mapVideo + "-vf loop=19:15,fps=25 ";
  const std::string h264 = clip + "-c:v libx264 -bf 3 -pix_fmt yuv420p -bsf:v h264_metadata=tick_rate=";
  ASSERT_NO_FATAL_FAILURE(make({{"half.ts", h264 + "25"},
                                {"double.ts", h264 + "100"},
                                {"least.ts", h264 + "1/1000"},
                                {"short.ts", h264 + "25 -frames:v 10"},
                                {"group.ts", clip + "-c:v mpeg2video -bf 2 -g 6 -gop_timecode 01:00:00:00 "
                                                    "-bsf:v mpeg2_metadata=frame_rate=50"}}));
  for (const std::string name : {"half.ts", "double.ts", "least.ts", "short.ts", "group.ts"}) {
    const VideoStreamDescription video = described(name).video.at(0);
    EXPECT_FALSE(video.isVariable) << name;
    EXPECT_EQ(video.exactFrameRate, (MediaRational{25, 1})) << name;
  }
  const auto timecode = described("group.ts").timecode;
  ASSERT_TRUE(timecode);
  EXPECT_EQ(timecode->start.timecodeString(), "01:00:00:00");
}

TEST_F(DescriptionTest, GivesTheDepthOfTheDeepestColour) {
  ASSERT_NO_FATAL_FAILURE(make({{"565.nut", mapVideo + "-frames:v 1 -c:v rawvideo -pix_fmt rgb565le"},
                                {"alpha.nut", mapVideo + "-frames:v 1 -c:v rawvideo -pix_fmt yuva422p10le"}}));
  directory().write("sensor", std::string(std::size_t{64} * 36 * 2, 'x'));
  ASSERT_EQ(run({"ffmpeg", "-v", "error", "-f", "rawvideo", "-pixel_format", "bayer_rggb16le", "-video_size", "64x36",
                 "-i", path("sensor"), "-c", "copy", path("bayer.nut")})
                .status,
            0);
  EXPECT_EQ(described("bayer.nut").video.at(0).bitDepth, 16);
  EXPECT_EQ(described("565.nut").video.at(0).bitDepth, 6);
  EXPECT_EQ(described("alpha.nut").video.at(0).bitDepth, 10);
}

TEST_F(DescriptionTest, SaysWhereTheColourTagsAre) {
  const std::string tags = mapVideo + "-frames:v 2 " + tagged("bt709", "bt709", "bt709", "yuv420p");
  ASSERT_NO_FATAL_FAILURE(make({{"a.mov", tags + "-c:v mpeg4"},
                                {"a.ts", tags + "-c:v libx264 -x264-params log=-1"},
                                {"none.mov", mapVideo + "-frames:v 2 -c:v prores_aw -pix_fmt yuv422p10le"}}));
  EXPECT_EQ(described("a.mov").video.at(0).colorSource, ColorTagSource::container);
  EXPECT_EQ(described("a.ts").video.at(0).colorSource, ColorTagSource::codec);
  EXPECT_EQ(described("none.mov").video.at(0).colorSource, std::nullopt);
}

TEST_F(DescriptionTest, GivesAnExactStart) {
  ASSERT_NO_FATAL_FAILURE(make({{"a.ts", mapVideo + "-c:v mpeg2video -bf 0"}}));
  const MediaDescription description = described("a.ts");
  EXPECT_EQ(description.startTime, description.video.at(0).startTime);
  EXPECT_NE(1'000'000 % description.startTime->denominator, 0);
}

TEST_F(DescriptionTest, DoesNotTakeRedcodeForJpeg2000) {
  // The header of a clip without its frames: a rate of audio, a size, a rate and a name.
  std::string clip(4608, '\0');
  clip.replace(2, 10, std::string_view("\2\0RED1\1\2\0\0", 10));
  putBigEndian(clip, 12, 48'000);
  putBigEndian(clip, 52, 4096);
  putBigEndian(clip, 56, 2048);
  clip.replace(60, 6, std::string_view("\0\0\0\x18\0\1", 6));
  clip.replace(67, 13, "A001_C001.R3D");
  directory().write("A001_C001.R3D", clip);
  const MediaDescription description = described("A001_C001.R3D");
  const VideoStreamDescription& video = description.video.at(0);
  EXPECT_EQ(video.codec, SLVVideoCodecRedcodeRaw);
  EXPECT_EQ(video.codecName, "");
  EXPECT_FALSE(video.isDecodable);
  EXPECT_EQ(description.corporation, MediaCorporation::red);
}

TEST_F(DescriptionTest, KnowsTheRecordingFormatByTheCardsDirectories) {
  ASSERT_NO_FATAL_FAILURE(make({{"a.mov", mapVideo + "-frames:v 1 -c:v mjpeg"}}));
  for (const auto& [place, format] : std::map<std::string, std::optional<std::string_view>>{
           {"CONTENTS/VIDEO/0001.MXF", SLVMediaRecordingFormatP2},
           {"contents/audio/0001.mxf", SLVMediaRecordingFormatP2},
           {"PRIVATE/AVCHD/BDMV/STREAM/00000.MTS", SLVMediaRecordingFormatAVCHD},
           {"XDROOT/Clip/C0001.MXF", SLVMediaRecordingFormatXDCAM},
           {"BPAV/CLPR/A01/A01.MP4", SLVMediaRecordingFormatXDCAM},
           {"A001.DNG", SLVMediaRecordingFormatCinemaDNG},
           {"CONTENTS/VIDEO/A/0001.MXF", {}},
           {"Clip/C0001.MXF", {}},
           {"XDROOT/Clip/C0001.MOV", {}}}) {
    std::filesystem::create_directories(std::filesystem::path(path(place)).parent_path());
    std::filesystem::copy_file(path("a.mov"), path(place));
    EXPECT_EQ(described(place).recordingFormat, format) << place;
  }
}

TEST_F(DescriptionTest, GivesNoRateWhereTheFramesHaveNone) {
  ASSERT_NO_FATAL_FAILURE(make({{"loose.mp4", mapVideo + "-vf settb=1/1000,setpts=PTS+random(0)*9 -vsync vfr "
                                                         "-enc_time_base 1/1000 -c:v mpeg4"}}));
  ASSERT_EQ(run({"ffmpeg", "-v", "quiet", "-i", path("loose.mp4"), "-c", "copy", path("loose.nut")}).status, 0);
  EXPECT_TRUE(described("loose.mp4").video.at(0).isVariable);
  const VideoStreamDescription loose = described("loose.nut").video.at(0);
  EXPECT_TRUE(loose.isVariable);
  EXPECT_EQ(loose.frameRate, std::nullopt);
}

TEST_F(DescriptionTest, DoesNotTakeACoverForVideo) {
  ASSERT_NO_FATAL_FAILURE(
      make({{"album.flac", mapSound + "-map 0:v -frames:v 1 -c:v mjpeg -disposition:v attached_pic -c:a flac"}}));
  const MediaDescription album = described("album.flac");
  ASSERT_EQ(album.video.size(), 1U);
  EXPECT_TRUE(album.video.front().isAttachedImage);
  EXPECT_EQ(album.video.front().frameRate, std::nullopt);
  EXPECT_EQ(album.mainVideo(), nullptr);
  EXPECT_EQ(album.duration, (MediaRational{1, 4}));
}

TEST_F(DescriptionTest, TurnsTheDisplaySizeAsTheMatrixOfTheTrackSays) {
  ASSERT_NO_FATAL_FAILURE(make({{"plain.mov", mapVideo + "-frames:v 1 -c:v mjpeg -vf setsar=2/1"}}));
  const std::string plain = content("plain.mov");
  // The matrix lies 40 bytes into the content of the track header (QuickTime File Format).
  const std::size_t matrix = plain.find("tkhd") + 4 + 40;
  struct Orientation {
    std::array<int, 4> matrix;
    int rotation;
    bool isMirrored;
    int displayWidth;
    int displayHeight;
  };
  const std::vector<Orientation> orientations{
      {{1, 0, 0, 1}, 0, false, 128, 36},    {{0, 1, -1, 0}, 90, false, 36, 128}, {{-1, 0, 0, -1}, 180, false, 128, 36},
      {{0, -1, 1, 0}, 270, false, 36, 128}, {{-1, 0, 0, 1}, 0, true, 128, 36},   {{1, 0, 0, -1}, 180, true, 128, 36},
  };
  for (const Orientation& each : orientations) {
    std::string turned = plain;
    for (const auto& [place, value] :
         {std::pair{0, each.matrix[0]}, {1, each.matrix[1]}, {3, each.matrix[2]}, {4, each.matrix[3]}}) {
      putBigEndian(turned, matrix + 4 * static_cast<std::size_t>(place), static_cast<std::uint32_t>(value * 0x10000));
    }
    directory().write("turned.mov", turned);
    const VideoStreamDescription video = described("turned.mov").video.at(0);
    EXPECT_EQ(video.rotation, each.rotation);
    EXPECT_EQ(video.isMirrored, each.isMirrored) << each.rotation;
    EXPECT_EQ(video.displayWidth, each.displayWidth);
    EXPECT_EQ(video.displayHeight, each.displayHeight);
    EXPECT_EQ(video.width, 64);
    if (each.isMirrored || !isInstalled("mediainfo")) continue;
    const json peer = json::parse(run({"mediainfo", "--Output=JSON", path("turned.mov")}).output);
    expectAsMediainfo(described("turned.mov"), peer);
  }
}

TEST_F(DescriptionTest, ListsEveryTrackWithItsLayout) {
  struct Layout {
    std::string name;
    std::optional<SAVTranscodeArgumentAudioChannelLayoutValue> value;
    std::optional<std::uint32_t> tag;
    std::vector<int> labels;
  };
  const std::vector<Layout> layouts{
      {"mono", SAVMonoAudioLayout, 100U << 16U | 1U, {3}},
      {"stereo", SAVStereoAudioLayout, 101U << 16U | 2U, {1, 2}},
      {"quad", SAVQuadraphonicAudioLayout, 108U << 16U | 4U, {1, 2, 5, 6}},
      {"5.0", SAVPentagonalAudioLayout, 117U << 16U | 5U, {1, 2, 3, 5, 6}},
      {"5.1", {}, 121U << 16U | 6U, {1, 2, 3, 4, 5, 6}},
      {"hexagonal", SAVHexagonalAudioLayout, {}, {1, 2, 3, 5, 6, 9}},
      {"octagonal", SAVOctagonalAudioLayout, {}, {1, 2, 3, 5, 6, 9, 10, 11}},
      {"7.1", {}, {}, {1, 2, 3, 4, 5, 6, 10, 11}},
  };
  std::string options = mapVideo + "-frames:v 3 -c:v mjpeg -c:a pcm_s16le";
  for (std::size_t track = 0; track < layouts.size(); ++track) {
    options += " -map 1:a -filter:a:" + std::to_string(track) + " aformat=channel_layouts=" + layouts[track].name;
  }
  ASSERT_NO_FATAL_FAILURE(make({{"tracks.mov", options}}));
  const MediaDescription description = described("tracks.mov");
  ASSERT_EQ(description.audio.size(), layouts.size());
  for (std::size_t track = 0; track < layouts.size(); ++track) {
    SCOPED_TRACE(layouts[track].name);
    const AudioStreamDescription& audio = description.audio[track];
    EXPECT_EQ(audio.track, static_cast<int>(track));
    EXPECT_EQ(audio.layoutName, layouts[track].name);
    EXPECT_EQ(audio.channelLayout, layouts[track].value);
    EXPECT_EQ(audio.channelLayoutTag, layouts[track].tag);
    std::vector<int> labels;
    for (const AudioChannelDescription& channel : audio.channels) labels.push_back(channel.label.value());
    EXPECT_EQ(labels, layouts[track].labels);
  }
}

TEST_F(DescriptionTest, KeepsWhatTheCameraWrote) {
  ASSERT_NO_FATAL_FAILURE(
      make({{"camera.mov", mapVideo + "-frames:v 2 -c:v mjpeg -movflags use_metadata_tags "
                                      "-metadata com.apple.quicktime.make=Blackmagic_Design -metadata "
                                      "com.apple.quicktime.model=URSA -metadata "
                                      "com.apple.quicktime.creationdate=2026-11-21T18:02:11+0100 -metadata "
                                      "creation_time=2026-11-21T17:02:11Z"},
            {"phone.mp4", mapVideo + "-frames:v 2 -c:v mpeg4 -metadata creation_time=2026-11-21T17:02:11Z"},
            {"field.wav", mapSound + "-write_bext 1 -metadata origination_date=2026-11-22 -metadata "
                                     "origination_time=10:00:00"},
            {"reel.mxf", mapVideo + "-r 25 -frames:v 2 -c:v mpeg2video -timecode 10:00:00:00 -metadata "
                                    "reel_name=A001R1"}}));
  EXPECT_EQ(described("field.wav").creationDate, "2026-11-22T10:00:00");
  EXPECT_EQ(described("reel.mxf").reelName, "A001R1");
  const MediaDescription camera = described("camera.mov");
  EXPECT_EQ(camera.maker, "Blackmagic_Design");
  EXPECT_EQ(camera.corporation, MediaCorporation::blackmagic);
  EXPECT_EQ(camera.model, "URSA");
  EXPECT_EQ(camera.creationDate, "2026-11-21T18:02:11+0100");
  EXPECT_EQ(tagValue(camera.tags, "COM.apple.quicktime.model"), "URSA");
  const MediaDescription phone = described("phone.mp4");
  EXPECT_EQ(phone.creationDate, "2026-11-21T17:02:11.000000Z");
  EXPECT_EQ(phone.corporation, std::nullopt);
  EXPECT_NE(phone.identity, camera.identity);
  EXPECT_NE(phone, camera);
  EXPECT_EQ(phone, described("phone.mp4"));
}

TEST_F(DescriptionTest, DescribesSingleImagesWithoutARate) {
  const std::vector<std::string> names{"a.png", "a.jpg", "a.dpx", "a.tif", "a.bmp", "a.exr"};
  std::vector<Recipe> recipes;
  for (const std::string& name : names) recipes.push_back({name, mapImage});
  recipes.push_back({"a.mjpeg", mapVideo + "-c:v mjpeg"});
  ASSERT_NO_FATAL_FAILURE(make(recipes));
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const MediaDescription description = described(name);
    ASSERT_EQ(description.video.size(), 1U);
    const VideoStreamDescription& image = description.video.front();
    EXPECT_EQ(image.width, 64);
    EXPECT_EQ(image.height, 36);
    EXPECT_EQ(image.frameCount, 1);
    EXPECT_EQ(image.frameRate, std::nullopt);
    EXPECT_EQ(image.duration, std::nullopt);
    EXPECT_EQ(description.duration, std::nullopt);
    EXPECT_FALSE(image.pixelFormat.empty());
    EXPECT_EQ(description.container, name == "a.dpx" ? std::optional(SLVMediaFileContainerDPX) : std::nullopt);
  }
  EXPECT_EQ(described("a.mjpeg").video.at(0).frameRate, std::nullopt);
}

}  // namespace
}  // namespace meridian::test
