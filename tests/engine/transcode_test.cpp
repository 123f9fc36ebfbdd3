// Whole transcodes: real files in, real files out, read back by FFmpeg's own programs.
#include "meridian/engine/transcode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "meridian/engine/survey_transcode.h"
#include "tests/engine/made_media.h"
#include "tests/engine/numbered_clip.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Result = Expected<TranscodeResult, TranscodeRunError>;

class Transcodes : public testing::Test {
 protected:
  void SetUp() override {
    if (!isInstalled("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  }

  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }

  /// Plans the words, of which those that begin with "@" name a file of the test; reports the errors of one that fails.
  [[nodiscard]] std::optional<TranscodePlan> plan(const std::string& text) const {
    std::istringstream stream(text);
    std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
    for (std::string& word : words) {
      if (word.starts_with('@')) word = path(word.substr(1));
    }
    const std::vector<std::string_view> views(words.begin(), words.end());
    auto planned = planTranscode(explain(views));
    if (planned) return *std::move(planned);
    for (const TranscodePlanError& error : planned.error()) ADD_FAILURE() << text << ": " << error.message();
    return std::nullopt;
  }

  [[nodiscard]] Result result(const std::string& words, const TranscodeOptions& options = {}) const {
    const auto planned = plan(words);
    if (!planned) return Unexpected(TranscodeRunError{TranscodeRunErrorCode::interrupted, "no plan"});
    return transcode(*planned, options);
  }

  /// Reports where ffprobe reads another property from a file than its plan has.
  static void expectAsPlanned(const TranscodePlan& plan, const std::string& output) {
    const std::string name = "file:" + output;
    const Outcome probe = run({"ffprobe", "-v", "error", "-count_frames", "-show_streams", "-of", "json", name});
    const auto streams = nlohmann::json::parse(probe.output)["streams"];
    const auto ofType = [&streams](const char* type) {
      std::vector<nlohmann::json> found;
      for (const auto& each : streams) {
        if (each["codec_type"] == type) found.push_back(each);
      }
      return found;
    };
    const auto images = ofType("video");
    ASSERT_EQ(images.size(), plan.video ? 1U : 0U);
    // A raw stream states no colours, and MXF of FFmpeg none for DNxHD.
    const bool statesColors = !output.ends_with(".mjpeg") && !output.ends_with(".mxf");
    if (plan.video) expectImagesAsPlanned(*plan.video, images.front(), statesColors);
    const auto sounds = ofType("audio");
    ASSERT_EQ(sounds.size(), plan.audio.size());
    for (std::size_t track = 0; track < sounds.size(); ++track) {
      if (plan.audio[track].isCopied()) continue;
      EXPECT_EQ(sounds[track]["sample_rate"], std::to_string(plan.audio[track].sampleRate));
      EXPECT_EQ(sounds[track]["channels"], plan.audio[track].channelCount);
    }
  }

  static void expectImagesAsPlanned(const PlannedVideo& planned, const nlohmann::json& found, bool statesColors) {
    const ImageForm& image = planned.output();
    EXPECT_EQ(found["width"], image.width);
    EXPECT_EQ(found["height"], image.height);
    EXPECT_EQ(found["nb_read_frames"], std::to_string(planned.frameCount.value_or(-1)));
    const MediaRational rate = image.frameRate.rawValue();
    EXPECT_EQ(found["r_frame_rate"], std::to_string(rate.numerator) + "/" + std::to_string(rate.denominator));
    if (!statesColors) return;
    const bool isFull = image.range == ColorRange::full;
    EXPECT_EQ(found.value("color_range", "tv"), isFull ? "pc" : "tv");
    const std::map<int, std::string> names{{1, "bt709"}, {5, "bt470bg"}, {6, "smpte170m"}};
    EXPECT_EQ(found.value("color_space", ""), names.at(image.color.matrix));
    EXPECT_EQ(found.value("color_transfer", ""), names.at(image.color.transfer));
    EXPECT_EQ(found.value("color_primaries", ""), names.at(image.color.primaries));
  }

  /// Transcodes; reports the error of one that fails.
  bool succeeds(const std::string& words, const TranscodeOptions& options = {}) const {
    const Result transcoded = result(words, options);
    if (!transcoded) ADD_FAILURE() << words << ": " << transcoded.error().message();
    return transcoded.has_value();
  }

  void clip(const std::string& name, const NumberedClip& clip = {}) const { makeClip(path(name), clip); }

  [[nodiscard]] const TemporaryDirectory& directory() const { return directory_; }

 private:
  TemporaryDirectory directory_;
};

struct CodecCase {
  std::string words;
  std::string output;
  /// As ffprobe names them.
  std::string codec;
  std::string format;
  std::string profile;
};

std::vector<CodecCase> codecCases() {
  return {
      {"-vcodec h264 -vbd 8", "a.mov", "h264", "yuv420p", "High"},
      {"-vcodec h264 -vbd 10 -vbr 1 -acodec aac", "a.mp4", "h264", "yuv420p10le", "High 10"},
      {"-vcodec h264 -vprofile high422 -key_frames 5", "b.mov", "h264", "yuv422p10le", "High 4:2:2"},
      {"-vcodec h265 -vbd 8", "c.mov", "hevc", "yuv420p", "Main"},
      {"-vcodec h265 -vbd 10", "d.mov", "hevc", "yuv420p10le", "Main 10"},
      {"-vcodec mjpeg", "e.mov", "mjpeg", "yuvj422p", "Baseline"},
      {"-vcodec mjpeg -an", "e.mjpeg", "mjpeg", "yuvj422p", "Baseline"},
      {"-vcodec mp4 -vbr 2", "f.mov", "mpeg4", "yuv420p", "Simple Profile"},
      {"-vcodec dnxhd -vprofile dnxhr_sq", "g.mxf", "dnxhd", "yuv422p", "DNXHR SQ"},
      {"-vcodec dnxhd -vprofile dnxhr_hqx", "h.mxf", "dnxhd", "yuv422p10le", "DNXHR HQX"},
      {"-vcodec dnxhd -dims 1280x720 -aspect_scaling stretch -vbr 90 -vbd 8 -vr 59.94", "i.mxf", "dnxhd", "yuv422p",
       "DNXHD"},
      {"-vcodec prores422proxy", "j.mov", "prores", "yuv422p10le", "Proxy"},
      {"-vcodec prores422lt", "k.mov", "prores", "yuv422p10le", "LT"},
      {"-vcodec prores422", "l.mov", "prores", "yuv422p10le", "Standard"},
      {"-vcodec prores422hq", "m.mov", "prores", "yuv422p10le", "HQ"},
      {"-vcodec prores4444", "n.mov", "prores", "yuv444p12le", "4444"},
      {"-vcodec prores4444xq", "o.mov", "prores", "yuv444p12le", "XQ"},
  };
}

TEST_F(Transcodes, KeepEveryImageInEveryCodec) {
  clip("in.mov");
  for (const CodecCase& each : codecCases()) {
    SCOPED_TRACE(each.words);
    const Result transcoded = result("-in_0_0 @in.mov -out @" + each.output + " " + each.words);
    ASSERT_TRUE(transcoded) << transcoded.error().message();
    const std::string output = path(each.output);
    if (each.words.find("-vr") == std::string::npos) {
      EXPECT_EQ(numbersIn(output), numbersFrom(0, 24));
      EXPECT_EQ(transcoded->frames, 24);
      EXPECT_EQ(probed(output, "v:0", "r_frame_rate"), "25/1");
    }
    if (const auto planned = plan("-in_0_0 @in.mov -out @" + each.output + " -overwrite " + each.words)) {
      expectAsPlanned(*planned, output);
    }
    EXPECT_EQ(probed(output, "v:0", "codec_name"), each.codec);
    EXPECT_EQ(probed(output, "v:0", "pix_fmt"), each.format);
    EXPECT_EQ(probed(output, "v:0", "profile"), each.profile);
    EXPECT_THAT(transcoded->warnings, IsEmpty());
    EXPECT_EQ(transcoded->bytes, std::filesystem::file_size(output));
    std::filesystem::remove(output);
  }
  EXPECT_THAT(directory().names(), ElementsAre("in.mov"));
}

TEST_F(Transcodes, KeepEveryImageOfOtherSources) {
  const struct {
    std::string name;
    std::string filter;
    std::string options;
  } sources[] = {
      {"fields.mov", "setfield=tff", "-c:v prores_ks -flags +ildct -c:a pcm_s16le"},
      // Images without times of display.
      {"reordered.avi", "", "-c:v mpeg4 -bf 2 -q:v 2 -c:a mp3"},
      {"late.ts", "", "-c:v libx264 -bf 3 -pix_fmt yuv422p10le -c:a aac -output_ts_offset 3600"},
      {"open.mkv", "", "-c:v libx265 -x265-params log-level=error -c:a flac"},
  };
  // Images of much detail alone, whose stream begins as a photograph does.
  for (const auto& [rate, text] : {std::pair("24", "24"), std::pair("25", "25"), std::pair("30000/1001", "29.97")}) {
    clip("busy.mov", {.rate = rate, .options = "-c:v prores_ks -an", .filter = "noise=alls=20"});
    ASSERT_TRUE(succeeds("-in_0_0 @busy.mov -out @busy.mjpeg -vcodec mjpeg -overwrite"));
    ASSERT_TRUE(succeeds("-in_0_0 @busy.mjpeg -out @o.mov -vcodec h264 -overwrite -vr " + std::string(text)));
    EXPECT_EQ(numbersIn(path("o.mov")), numbersFrom(0, 24));
  }
  for (const auto& [name, filter, options] : sources) {
    SCOPED_TRACE(name);
    clip(name, {.options = options, .filter = filter});
    ASSERT_TRUE(succeeds("-in_0_0 @" + name + " -out @o.mov -vcodec h264 -acodec aac -overwrite"));
    EXPECT_EQ(numbersIn(path("o.mov")), numbersFrom(0, 24));
    EXPECT_EQ(probed(path("o.mov"), "v:0", "field_order"), "progressive");
    EXPECT_NEAR(std::stod(probed(path("o.mov"), "a:0", "duration")), 0.96, 0.05);
  }
}

struct RateCase {
  std::string from;
  std::string to;
  int frames;
};

TEST_F(Transcodes, ChangeTheRateWithoutDroppingOrDoublingMore) {
  for (const auto& [from, to, frames] : std::vector<RateCase>{{"25", "50", 25},
                                                              {"50", "25", 50},
                                                              {"24000/1001", "25", 48},
                                                              {"25", "23.976", 50},
                                                              {"24", "60", 24},
                                                              {"60000/1001", "29.97", 60},
                                                              {"30", "12.5", 30}}) {
    SCOPED_TRACE(from + " to " + to);
    clip("in.mov", {.frames = frames, .rate = from});
    ASSERT_TRUE(succeeds("-in_0_0 @in.mov -out @out.mov -overwrite -vcodec h264 -an -vr " + to));
    const auto output = describeMedia(Url::fromFilePath(path("out.mov")));
    ASSERT_TRUE(output && output->mainVideo()->exactFrameRate);
    const double ratio = describeMedia(Url::fromFilePath(path("in.mov")))->mainVideo()->exactFrameRate->rawValue() /
                         output->mainVideo()->exactFrameRate->rawValue();
    const std::vector<int> numbers = numbersIn(path("out.mov"));
    EXPECT_EQ(numbers.size(), static_cast<std::size_t>(std::lround(frames / ratio)));
    for (std::size_t place = 0; place < numbers.size(); ++place) {
      // An image is shown from the nearest place on; of several for one place the nearest is. At a tie both are right.
      const double exact = static_cast<double>(place) * ratio;
      EXPECT_LE(numbers[place], exact + std::max(ratio, 1.0) / 2 + 1e-3) << place;
      EXPECT_GE(numbers[place], exact + std::min(ratio, 1.0) / 2 - 1 - 1e-3) << place;
    }
  }
}

TEST_F(Transcodes, JoinPartsWithoutALostOrDoubledImage) {
  std::string inputs;
  for (int part = 0; part < 3; ++part) {
    const std::string name = "part" + std::to_string(part);
    clip(name + ".mov", {.frames = 10, .rate = "24", .first = 10 * part});
    clip(name + ".mp4",
         {.frames = 10, .rate = "24", .first = 10 * part, .options = "-c:v libx264 -g 10 -bf 2 -c:a aac"});
    inputs += " -in_0_" + std::to_string(part) + " @" + name;
  }
  const auto withExtension = [&inputs](const std::string& extension) {
    std::string named = inputs + " ";
    for (std::size_t at = 0; (at = named.find("part", at)) != std::string::npos; at += 10) {
      named.insert(at + 5, extension);
    }
    return named;
  };
  for (const auto& [words, extension, output] : std::vector<std::tuple<std::string, std::string, std::string>>{
           {"-vcodec prores422proxy -acodec lpcm", ".mov", "a.mov"},
           {"-vcodec h264 -acodec aac", ".mp4", "b.mp4"},
           {"", ".mov", "c.mov"},
           {"", ".mp4", "d.mp4"}}) {
    SCOPED_TRACE(words + extension);
    ASSERT_TRUE(succeeds(withExtension(extension) + words + " -out @" + output));
    EXPECT_EQ(numbersIn(path(output)), numbersFrom(0, 30));
    EXPECT_NEAR(std::stod(probed(path(output), "v:0", "duration")), 1.25, 1e-3);
    EXPECT_NEAR(std::stod(probed(path(output), "a:0", "duration")), 1.25, 0.03);
  }
}

TEST_F(Transcodes, CopyPacketsAsTheyAre) {
  clip("a.mov");
  clip("b.mp4", {.frames = 30, .options = "-c:v libx264 -g 12 -bf 2 -c:a aac"});
  clip("c.mkv", {.frames = 30, .options = "-c:v libx264 -g 12 -bf 2 -c:a aac"});
  clip("d.mov", {.frames = 30, .options = "-c:v libx265 -x265-params log-level=error -tag:v hvc1 -c:a alac"});
  for (const auto& [input, output] : std::vector<std::pair<std::string, std::string>>{
           {"a.mov", "o1.mov"}, {"b.mp4", "o2.mov"}, {"b.mp4", "o3.mp4"}, {"c.mkv", "o4.mp4"}, {"d.mov", "o5.mp4"}}) {
    SCOPED_TRACE(input + " to " + output);
    ASSERT_TRUE(succeeds("-in_0_0 @" + input + " -out @" + output));
    EXPECT_EQ(packetHashes(path(output), "v:0"), packetHashes(path(input), "v:0"));
    EXPECT_EQ(packetHashes(path(output), "a:0"), packetHashes(path(input), "a:0"));
    EXPECT_EQ(numbersIn(path(output)), numbersIn(path(input)));
    EXPECT_NEAR(std::stod(probed(path(output), "v:0", "start_time")), 0, 1e-3);
  }
}

TEST_F(Transcodes, CopyClipsThatWereCutWithoutEncoding) {
  clip("whole.mp4", {.frames = 50, .options = "-c:v libx264 -g 100 -bf 3 -c:a aac"});
  clip("b.mp4", {.frames = 10, .first = 10, .options = "-c:v libx264 -coder 0 -refs 1 -bf 0 -crf 40 -c:a aac"});
  const auto cut = [this](const std::vector<std::string>& options, const std::string& name) {
    std::vector<std::string> words{"ffmpeg", "-v", "error", "-nostdin"};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(path(name));
    const Outcome made = run(words);
    ASSERT_EQ(made.status, 0) << made.errors;
  };
  cut({"-ss", "0.5", "-i", path("whole.mp4"), "-c", "copy"}, "start.mp4");
  cut({"-i", path("whole.mp4"), "-t", "1", "-c", "copy"}, "end.mp4");
  // States a constant rate for images at irregular times.
  cut({"-i", path("whole.mp4"), "-vf", "select='not(mod(n,7))+lt(n,10)'", "-vsync", "vfr", "-c:v", "libx264", "-an"},
      "gaps.mkv");
  for (const std::string input : {"start.mp4", "end.mp4", "gaps.mkv"}) {
    SCOPED_TRACE(input);
    ASSERT_TRUE(succeeds("-in_0_0 @" + input + " -out @" + input + ".mov"));
    EXPECT_EQ(numbersIn(path(input + ".mov")), numbersIn(path(input)));
  }
  // Parts of which the second decodes an image ahead, and the first, of two images, does not.
  clip("short.mp4", {.frames = 2, .options = "-c:v libx264 -bf 2 -c:a aac"});
  clip("long.mp4", {.frames = 10, .first = 2, .options = "-c:v libx264 -bf 2 -c:a aac"});
  for (const std::string output : {"copied.mov", "copied.mp4", "copied.mxf"}) {
    SCOPED_TRACE(output);
    ASSERT_TRUE(succeeds("-in_0_0 @short.mp4 -in_0_1 @long.mp4 -an -out @" + output));
    EXPECT_EQ(numbersIn(path(output)), numbersFrom(0, 12));
  }
  // A decoder would need other parameters in the middle of the file.
  const Result joined = result("-in_0_0 @end.mp4 -in_0_1 @b.mp4 -out @joined.mov");
  ASSERT_FALSE(joined);
  EXPECT_EQ(joined.error().code, TranscodeRunErrorCode::notCopyable);
  EXPECT_EQ(joined.error().place, path("b.mp4"));
}

TEST_F(Transcodes, KeepLumaAndChromaTogetherInBarsAndCuts) {
  // The edge between black and red, 4:2:0, is where luma and chroma change.
  const Outcome made = run({"ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i",
                            "color=black:s=320x240:d=0.1,drawbox=160:0:160:240:red:fill,format=yuv420p", "-c:v", "ffv1",
                            path("edge.mkv")});
  ASSERT_EQ(made.status, 0) << made.errors;
  for (const std::string words :
       {"-dims 322x240 -aspect_scaling letterbox", "-dims 326x240 -aspect_scaling letterbox",
        "-dims 301x240 -aspect_scaling crop -crop_anchor cr", "-dims 303x240 -aspect_scaling crop -crop_anchor c"}) {
    SCOPED_TRACE(words);
    ASSERT_TRUE(succeeds("-in_0_0 @edge.mkv -out @edge.mov -overwrite -vcodec prores4444 " + words));
    const Outcome raw = run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("edge.mov"), "-frames:v", "1", "-pix_fmt",
                             "yuv444p", "-f", "rawvideo", "-"});
    const std::size_t width = std::stoul(words.substr(6));
    ASSERT_EQ(raw.output.size(), 3 * width * 240);
    // The edge in a line of a plane: where it passes the middle between its ends.
    const auto edgeIn = [&](std::size_t plane) {
      const auto at = [&](std::size_t x) {
        return static_cast<int>(static_cast<unsigned char>(raw.output[(plane * 240 + 120) * width + x]));
      };
      const int middle = (at(100) + at(200)) / 2;
      std::size_t x = 100;
      while (x < 200 && (at(x) < middle) == (at(100) < middle)) ++x;
      const double before = at(x - 1);
      return static_cast<double>(x - 1) + (middle - before) / (at(x) - before);
    };
    EXPECT_NEAR(edgeIn(0), edgeIn(2), 0.75);
  }
}

TEST_F(Transcodes, KeepSoundInItsPlace) {
  // A click at each whole second.
  makeClip(path("in.mov"), {.frames = 75});
  const Outcome made = run({"ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "color=black:s=256x144:r=25:d=3",
                            "-f", "lavfi", "-i", "aevalsrc='if(lt(mod(t,1),0.005),0.8,0)':s=44100:d=3", "-c:v",
                            "prores_ks", "-c:a", "pcm_s24le", path("clicks.mov")});
  ASSERT_EQ(made.status, 0) << made.errors;
  for (const std::string words :
       {"-out @o1.mov -acodec lpcm -asr 48000", "-out @o2.mov -acodec apple_lossless", "-out @o3.mp4 -acodec aac",
        "-out @o4.mov", "-out @o5.wav -vn", "-out @o6.wav -vn -acodec lpcm -asr 96000 -acl mono"}) {
    SCOPED_TRACE(words);
    const bool hasVideo = words.find("-vn") == std::string::npos;
    ASSERT_TRUE(succeeds("-in_0_0 @clicks.mov " + words + (hasVideo ? " -vcodec h264" : "")));
    const std::vector<float> samples = samplesIn(path(words.substr(6, 6)));
    for (const int second : {1, 2}) {
      std::size_t first = static_cast<std::size_t>(second) * 48000 - 12000;
      while (first < samples.size() && std::abs(samples[first]) < 0.2F) ++first;
      EXPECT_NEAR(static_cast<double>(first) / 48000, second, words.find("aac") != std::string::npos ? 0.003 : 0.0005);
    }
  }
}

TEST_F(Transcodes, WriteTimecodeThatExists) {
  clip("in.mov", {.rate = "30000/1001", .options = "-c:v prores_ks -profile:v 0 -an"});
  const auto timecodeOf = [this](const std::string& name) {
    const auto output = describeMedia(Url::fromFilePath(path(name)));
    return output && output->timecode ? output->timecode->start.timecodeString() : std::string("none");
  };
  ASSERT_TRUE(succeeds("-in_0_0 @in.mov -out @a.mov -vcodec h264 -tc_track -tc_custom 01:00:58;28"));
  EXPECT_EQ(timecodeOf("a.mov"), "01:00:58;28");
  ASSERT_TRUE(succeeds("-in_0_0 @a.mov -out @b.mov -tc_track -tc_match"));
  EXPECT_EQ(timecodeOf("b.mov"), "01:00:58;28");
  ASSERT_TRUE(succeeds("-in_0_0 @a.mov -out @c.mp4 -vcodec h264 -vr 25 -tc_track -tc_match"));
  EXPECT_EQ(timecodeOf("c.mp4"), "01:00:58:23");
  ASSERT_TRUE(succeeds("-in_0_0 @a.mov -out @d.mov -vcodec h264 -tc_match"));
  EXPECT_EQ(timecodeOf("d.mov"), "none");
  ASSERT_TRUE(succeeds("-in_0_0 @a.mov -out @e.mxf -vcodec dnxhd -vprofile dnxhr_lb -tc_match"));
  EXPECT_EQ(timecodeOf("e.mxf"), "01:00:58;28");
  // Streams without a place for it have timecode in their groups of pictures.
  for (const std::string name : {"group.mpg", "group.ts", "group.m2v"}) {
    makeClip(path(name), {.rate = "30000/1001",
                          .options = "-c:v mpeg2video -bf 2 -gop_timecode 01:00:58;28 -an" +
                                     std::string(name.ends_with("mpg") ? " -f mpeg" : "")});
    EXPECT_EQ(timecodeOf(name), "01:00:58;28") << name;
  }
  makeClip(path("plain.ts"), {.options = "-c:v mpeg2video -bf 2 -an"});
  EXPECT_EQ(timecodeOf("plain.ts"), "none");
}

TEST_F(Transcodes, KeepTheTimeOfCreation) {
  clip("in.mov", {.options = "-c:v prores_ks -profile:v 0 -an -metadata creation_time=2021-05-06T05:08:09Z"});
  for (const std::string words : {"-out @a.mov -vcodec h264", "-out @b.mp4 -vcodec h264", "-out @c.mov"}) {
    SCOPED_TRACE(words);
    ASSERT_TRUE(succeeds("-in_0_0 @in.mov " + words));
    EXPECT_EQ(probed(path(words.substr(6, 5)), "format", ":format_tags=creation_time"), "2021-05-06T05:08:09.000000Z");
  }
}

/// Returns the mean of a plane of the first image, in code values of 10 bits.
double meanOfPlane(const std::string& path, int plane) {
  const Outcome outcome = run({"ffmpeg", "-v", "error", "-nostdin", "-i", path, "-frames:v", "1", "-pix_fmt",
                               "yuv444p10le", "-f", "rawvideo", "-"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  const std::size_t size = outcome.output.size() / 3;
  double sum = 0;
  for (std::size_t place = 0; place + 1 < size; place += 2) {
    const auto at = [&](std::size_t byte) {
      return static_cast<unsigned char>(outcome.output[size * static_cast<std::size_t>(plane) + byte]);
    };
    sum += at(place) + at(place + 1) * 256.0;
  }
  return sum * 2 / static_cast<double>(size);
}

TEST_F(Transcodes, SayWhichTextCannotBeSeen) {
  clip("in.mov", {.frames = 2});
  const auto codes = [this](const std::string& words) {
    const Result made = result("-in_0_0 @in.mov -out @out.mov -overwrite -vcodec prores422proxy " + words);
    std::vector<TranscodeRunWarningCode> found;
    if (made) {
      for (const TranscodeRunWarning& warning : made->warnings) found.push_back(warning.code);
    }
    return found;
  };
  using enum TranscodeRunWarningCode;
  EXPECT_THAT(codes("-wmt_burn -wmt_text größe -tc_burn"), testing::IsEmpty());
  EXPECT_THAT(codes("-wmt_burn -wmt_text " + std::string(200, 'x')), testing::ElementsAre(textCut));
  EXPECT_THAT(codes("-tc_burn -tc_burn_size 400"), testing::ElementsAre(textCut));
  EXPECT_THAT(codes("-wmt_burn -wmt_text a\U0010FFFC"), testing::ElementsAre(charactersMissing));
}

TEST_F(Transcodes, ScaleAsAReferenceDoes) {
  const auto made = run({"ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i",
                         "testsrc2=s=1280x720:d=0.4,format=yuv444p10le", "-c:v", "ffv1", "-colorspace", "bt709",
                         "-color_primaries", "bt709", "-color_trc", "bt709", "file:" + path("in.mov")});
  ASSERT_EQ(made.status, 0) << made.errors;
  for (const std::string size : {"640x360", "1920x1080"}) {
    ASSERT_TRUE(succeeds(
        "-in_0_0 @in.mov -out @out.mov -vcodec prores4444xq -overwrite -aspect_scaling stretch -dims " + size));
    std::string reference = "[1]zscale=" + size + ":filter=bicubic,format=yuv444p12le[r];[0][r]psnr";
    reference.replace(reference.find('x', reference.find('=')), 1, ":");
    const Outcome compared = run({"ffmpeg", "-nostdin", "-hide_banner", "-i", "file:" + path("out.mov"), "-i",
                                  "file:" + path("in.mov"), "-filter_complex", reference, "-f", "null", "-"});
    const std::size_t place = compared.errors.find("average:");
    ASSERT_NE(place, std::string::npos) << compared.errors;
    EXPECT_GT(std::stod(compared.errors.substr(place + 8)), 45.0) << size;
  }
}

TEST_F(Transcodes, ApplyLutsInTheMatrixOfTheVideo) {
  // Blue in BT.709, 10 bits: 128, 770, 471 are its Y'CbCr of R'G'B' (0, 0, 0.75) or so; an identity must keep it.
  const std::string identity =
      directory().write("identity.cube", "LUT_3D_SIZE 2\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n");
  for (const std::string tags : {"", "-color_primaries bt709 -color_trc bt709 -colorspace bt709"}) {
    SCOPED_TRACE(tags);
    const std::string command =
        "ffmpeg -v error -nostdin -y -f lavfi -i "
        "color=black:s=1280x720:r=25:d=0.2,format=yuv444p10le,geq=lum=128:cb=770:cr=471 " +
        tags + " -c:v prores_ks -profile:v 4 -pix_fmt yuv444p10le " + path("in.mov");
    std::istringstream words(command);
    const Outcome made = run({std::istream_iterator<std::string>(words), {}});
    ASSERT_EQ(made.status, 0) << made.errors;
    ASSERT_TRUE(succeeds("-in_0_0 @in.mov -out @out.mov -overwrite -vcodec prores4444 -clut @identity.cube"));
    EXPECT_NEAR(meanOfPlane(path("out.mov"), 0), meanOfPlane(path("in.mov"), 0), 1.5);
    EXPECT_NEAR(meanOfPlane(path("out.mov"), 1), meanOfPlane(path("in.mov"), 1), 1.5);
    EXPECT_NEAR(meanOfPlane(path("out.mov"), 2), meanOfPlane(path("in.mov"), 2), 1.5);
    EXPECT_EQ(probed(path("out.mov"), "v:0", "color_space"), "bt709");
    EXPECT_EQ(probed(path("out.mov"), "v:0", "color_primaries"), "bt709");
  }
}

TEST_F(Transcodes, FailOnDamageUnlessItIsAccepted) {
  clip("whole.mov", {.frames = 50});
  std::ifstream stream(path("whole.mov"), std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  std::string zeroed = bytes;
  zeroed.replace(bytes.size() / 3, 20'000, 20'000, '\0');
  directory().write("zeroed.mov", zeroed);
  const Result failed = result("-in_0_0 @zeroed.mov -out @out.mov -vcodec h264");
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, TranscodeRunErrorCode::sourceDamaged) << failed.error().message();
  EXPECT_THAT(failed.error().detail, HasSubstr(" s"));
  EXPECT_THAT(directory().names(), Not(testing::Contains("out.mov")));
  const Result accepted = result("-in_0_0 @zeroed.mov -out @out.mov -vcodec h264", {.acceptsDamaged = true});
  ASSERT_TRUE(accepted) << accepted.error().message();
  EXPECT_EQ(numbersIn(path("out.mov")).size(), 50U);
  ASSERT_FALSE(accepted->warnings.empty());
  EXPECT_EQ(accepted->warnings.front().code, TranscodeRunWarningCode::damageAccepted);

  clip("front.mov", {.frames = 50,
                     .options = "-c:v prores_ks -profile:v 0 -pix_fmt yuv422p10le -c:a pcm_s16le -movflags faststart"});
  std::filesystem::resize_file(path("front.mov"), std::filesystem::file_size(path("front.mov")) / 2);
  for (const std::string codec : {"-vcodec h264", ""}) {
    const Result half = result("-in_0_0 @front.mov -out @half.mov " + codec);
    ASSERT_FALSE(half) << codec;
    EXPECT_THAT(half.error().message(), HasSubstr("front.mov"));
  }
  EXPECT_THAT(directory().names(), Not(testing::Contains("half.mov")));
}

TEST_F(Transcodes, GoOnWhereTimeStampsGoBack) {
  // One recording behind another in a file, as programs write that append.
  makeClip(path("once.ts"), {.frames = 50, .options = "-c:v libx264 -bf 2 -crf 12 -c:a aac"});
  {
    std::ofstream twice(path("twice.ts"), std::ios::binary);
    for (int time = 0; time < 2; ++time) twice << std::ifstream(path("once.ts"), std::ios::binary).rdbuf();
  }
  std::vector<int> expected = numbersFrom(0, 50);
  expected.insert(expected.end(), expected.begin(), expected.begin() + 50);
  for (const std::string codec : {"prores422proxy -acodec lpcm", "copy"}) {
    SCOPED_TRACE(codec);
    ASSERT_TRUE(succeeds("-in_0_0 @twice.ts -out @out.mov -overwrite -vcodec " + codec, {.acceptsDamaged = true}));
    EXPECT_EQ(numbersIn(path("out.mov")), expected);
    EXPECT_NEAR(std::stod(probed(path("out.mov"), "a:0", "duration")), 4, 0.1);
  }
}

TEST_F(Transcodes, NeverTouchASourceOrAnExistingFile) {
  clip("in.mov");
  directory().write("there.mov", "precious");
  std::filesystem::create_hard_link(path("in.mov"), path("hard.mov"));
  auto planned = plan("-in_0_0 @in.mov -out @new.mov -vcodec h264");
  ASSERT_TRUE(planned);
  planned->output.path = path("there.mov");
  EXPECT_EQ(transcode(*planned).error().code, TranscodeRunErrorCode::outputExists);
  planned->output.path = path("hard.mov");
  planned->output.mayReplace = true;
  EXPECT_EQ(transcode(*planned).error().code, TranscodeRunErrorCode::outputIsSource);
  // A file that comes into being meanwhile stays.
  planned->output.path = path("late.mov");
  planned->output.mayReplace = false;
  const Result late = transcode(*planned, {.progress =
                                               [this](const TranscodeProgress& progress) {
                                                 if (progress.portion < 1) directory().write("late.mov", "precious");
                                               },
                                           .interval = std::chrono::milliseconds(0)});
  ASSERT_FALSE(late);
  EXPECT_EQ(late.error().code, TranscodeRunErrorCode::outputExists);
  for (const std::string name : {"there.mov", "late.mov"}) {
    std::ifstream file(path(name));
    EXPECT_EQ((std::string{std::istreambuf_iterator<char>(file), {}}), "precious") << name;
  }
  // Replacing keeps the old file until the new one is complete.
  planned->output.path = path("there.mov");
  planned->output.mayReplace = true;
  std::stop_source stop;
  const Result stopped = transcode(*planned, {.progress = [&](const TranscodeProgress&) { stop.request_stop(); },
                                              .interval = std::chrono::milliseconds(0),
                                              .stop = stop.get_token()});
  ASSERT_FALSE(stopped);
  EXPECT_EQ(stopped.error().code, TranscodeRunErrorCode::interrupted);
  EXPECT_EQ(std::filesystem::file_size(path("there.mov")), 8U);
  ASSERT_TRUE(transcode(*planned));
  EXPECT_EQ(numbersIn(path("there.mov")), numbersFrom(0, 24));
  EXPECT_EQ(numbersIn(path("in.mov")), numbersFrom(0, 24));
}

TEST_F(Transcodes, TellHowFarTheyAre) {
  clip("in.mov", {.frames = 40});
  std::vector<TranscodeProgress> progress;
  ASSERT_TRUE(succeeds("-in_0_0 @in.mov -out @out.mov -vcodec h264",
                       {.progress = [&progress](const TranscodeProgress& each) { progress.push_back(each); },
                        .interval = std::chrono::milliseconds(0)}));
  ASSERT_GT(progress.size(), 3U);
  for (std::size_t place = 1; place < progress.size(); ++place) {
    EXPECT_GE(progress[place].portion, progress[place - 1].portion);
    EXPECT_GE(progress[place].frame, progress[place - 1].frame);
    EXPECT_EQ(progress[place].frames, 40);
  }
  EXPECT_LT(progress[progress.size() - 2].portion, 1);
  EXPECT_EQ(progress.back().portion, 1);
  EXPECT_EQ(progress.back().frame, 40);
  EXPECT_EQ(progress.back().bytes, std::filesystem::file_size(path("out.mov")));
}

TEST_F(Transcodes, TakeNumberedImagesAsAClip) {
  for (const std::string extension : {"dpx", "tiff", "png", "jpg", "exr"}) {
    SCOPED_TRACE(extension);
    std::filesystem::create_directory(path(extension));
    const Outcome made = run({"ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i",
                              "color=black:s=256x144:r=25,format=gray,geq=lum='if(mod(floor(N/pow(2,floor(X/16))),2),"
                              "200,40)',format=rgb24",
                              "-frames:v", "6", "-start_number", "99", path(extension + "/shot.%04d." + extension)});
    ASSERT_EQ(made.status, 0) << made.errors;
    ASSERT_TRUE(succeeds("-in_0_0 @" + extension + " -vr 24 -out @" + extension + ".mov -vcodec prores422"));
    EXPECT_EQ(numbersIn(path(extension + ".mov")), numbersFrom(0, 6));
    EXPECT_EQ(probed(path(extension + ".mov"), "v:0", "r_frame_rate"), "24/1");
  }
  // One that is missing is never closed up in silence.
  std::filesystem::remove(path("png/shot.0101.png"));
  const std::string words = "-in_0_0 @png -vr 24 -out @gap.mov -vcodec prores422";
  const Result failed = result(words);
  ASSERT_FALSE(failed);
  EXPECT_THAT(failed.error().message(), HasSubstr("the image with the number 101 is missing"));
  ASSERT_TRUE(succeeds(words, {.acceptsDamaged = true}));
  EXPECT_THAT(numbersIn(path("gap.mov")), ElementsAre(0, 1, testing::AnyOf(1, 3), 3, 4, 5));
  // Nor does one of another size change the clip.
  std::filesystem::create_directory(path("unlike"));
  for (const std::string size : {"64x48", "32x24"}) {
    const std::string number = size == "64x48" ? "1" : "2";
    ASSERT_EQ(run({"ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "color=s=" + size, "-frames:v", "1",
                   path("unlike/shot." + number + ".png")})
                  .status,
              0);
  }
  const Result unlike = result("-in_0_0 @unlike -vr 24 -out @unlike.mov -vcodec prores422");
  ASSERT_FALSE(unlike);
  EXPECT_EQ(unlike.error().code, TranscodeRunErrorCode::imagesDiffer);
  EXPECT_EQ(unlike.error().detail, "it is 32 x 24 where the sequence is 64 x 48");
}

TEST_F(Transcodes, NameThePartThatLacksSound) {
  clip("whole.mkv", {.frames = 25});
  const Outcome made = run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("whole.mkv"), "-c:v", "copy", "-af",
                            "aselect='not(between(t,0.3,0.6))'", "-c:a", "pcm_s16le", path("holed.mkv")});
  ASSERT_EQ(made.status, 0) << made.errors;
  for (const std::string words : {"-in_0_0 @whole.mkv -in_0_1 @holed.mkv", "-in_0_0 @holed.mkv -in_0_1 @whole.mkv"}) {
    SCOPED_TRACE(words);
    const Result joined = result(words + " -out @joined.mov -overwrite -vcodec prores422 -acodec lpcm");
    ASSERT_TRUE(joined) << joined.error().message();
    ASSERT_EQ(joined->warnings.size(), 1U);
    EXPECT_EQ(joined->warnings.front().code, TranscodeRunWarningCode::soundFilled);
    EXPECT_EQ(joined->warnings.front().place, path("holed.mkv"));
  }
}

TEST_F(Transcodes, ConvertSceneLinearImages) {
  const Outcome made =
      run({"ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i",
           "color=black:s=64x48,format=gbrpf32le,geq=r=0.18:g=0.18:b=0.18", "-frames:v", "1", path("grey.1.exr")});
  ASSERT_EQ(made.status, 0) << made.errors;
  ASSERT_TRUE(succeeds("-in_0_0 @grey.1.exr -vr 24 -out @grey.mov -vcodec prores422 -c_space rec_709"));
  const std::string luma = run({"ffmpeg", "-v", "error", "-nostdin", "-i", path("grey.mov"), "-vf", "extractplanes=y",
                                "-f", "rawvideo", "-pix_fmt", "gray10le", "-"})
                               .output;
  ASSERT_EQ(luma.size(), 2U * 64 * 48);
  const int code = static_cast<unsigned char>(luma[0]) + 256 * static_cast<unsigned char>(luma[1]);
  // What a display of Rec. ITU-R BT.1886 shows as 0.18, as a code value of 10 bits.
  EXPECT_NEAR(code, 64 + 876 * std::pow(0.18, 1 / 2.4), 3);
}

}  // namespace
}  // namespace meridian::test
