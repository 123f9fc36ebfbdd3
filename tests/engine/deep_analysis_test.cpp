// Deep analyses of made clips, held against the answers of FFmpeg's own filters.
#include "meridian/engine/deep_analysis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/engine/describe_media.h"
#include "tests/engine/made_media.h"
#include "tests/engine/numbered_clip.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class DeepAnalyses : public MadeMedia {
 protected:
  [[nodiscard]] DeepAnalysis deep(const std::string& name, const DeepAnalysisOptions& options = {}) const {
    const MediaDescription media = described(name);
    std::vector<double> portions;
    auto found = analyzeDeeply(media, options, [&](double portion) { portions.push_back(portion); });
    EXPECT_TRUE(std::ranges::is_sorted(portions));
    if (found) return *std::move(found);
    ADD_FAILURE() << found.error().message();
    return {};
  }

  /// Runs ffmpeg, with arguments separated by blanks; returns both of its outputs.
  [[nodiscard]] std::string ffmpeg(const std::string& input, const std::string& options) const {
    std::vector<std::string> words{"ffmpeg", "-nostdin", "-hide_banner", "-i", path(input)};
    std::istringstream stream(options);
    for (std::string word; stream >> word;) words.push_back(word);
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    return outcome.output + outcome.errors;
  }

  void makeScenes(const std::string& name, const std::string& options) const {
    // Black for 2.4 s, moving for 2 s, still for 2.2 s, another scene for 1 s, and noise.
    std::vector<std::string> words{"ffmpeg", "-v", "error", "-nostdin", "-y", "-f", "lavfi", "-i"};
    words.emplace_back(
        "color=black:s=192x108:r=25:d=2.4[a];testsrc2=s=192x108:r=25:d=2[b];testsrc=s=192x108:r=25:d=0.04,"
        "loop=54:1:0[c];mandelbrot=s=192x108:r=25,trim=duration=1[d];smptebars=s=192x108:r=25:d=0.4,noise=alls=20:allf="
        "t"
        "[e];[a][b][c][d][e]concat=n=5,format=yuv420p");
    words.insert(words.end(), {"-f", "lavfi", "-i"});
    words.emplace_back(
        "aevalsrc='if(between(t,2,5.5),0,0.4*sin(2*PI*(300+100*t)*t))|if(between(t,2.5,6),0,0.2*sin("
        "2*PI*500*t))':s=48000:d=8");
    std::istringstream stream(options);
    for (std::string word; stream >> word;) words.push_back(word);
    words.push_back(path(name));
    const Outcome made = run(words);
    ASSERT_EQ(made.status, 0) << made.errors;
  }
};

/// Returns the numbers that follow a key, each time that it is there.
std::vector<double> numbersAfter(const std::string& text, const std::string& key) {
  std::vector<double> numbers;
  for (std::size_t at = 0; (at = text.find(key, at)) != std::string::npos;) {
    at += key.size();
    numbers.push_back(std::strtod(text.c_str() + at, nullptr));
  }
  return numbers;
}

std::vector<double> startsOf(const std::vector<MediaInterval>& intervals) {
  std::vector<double> starts;
  for (const MediaInterval& each : intervals) starts.push_back(each.start);
  return starts;
}

std::vector<double> endsOf(const std::vector<MediaInterval>& intervals) {
  std::vector<double> ends;
  for (const MediaInterval& each : intervals) ends.push_back(each.end);
  return ends;
}

auto near(const std::vector<double>& numbers, double tolerance) {
  std::vector<testing::Matcher<double>> matchers;
  for (const double number : numbers) matchers.push_back(testing::DoubleNear(number, tolerance));
  return testing::ElementsAreArray(matchers);
}

TEST_F(DeepAnalyses, AgreeWithTheFiltersOfFFmpeg) {
  for (const auto& [name, options] : std::map<std::string, std::string>{
           {"a.mov", "-c:v libx264 -crf 12 -c:a pcm_s16le"},
           {"b.mov", "-c:v prores_ks -pix_fmt yuv422p10le -c:a pcm_s24le"},
           {"c.mkv", "-c:v ffv1 -pix_fmt yuv444p12le -c:a flac"},
           {"d.mp4", "-c:v libx264 -pix_fmt yuvj420p -c:a aac"},
           {"e.mxf", "-c:v mpeg2video -flags +ildct+ilme -vf fps=50,tinterlace=interleave_top -c:a pcm_s16le"}}) {
    SCOPED_TRACE(name);
    ASSERT_NO_FATAL_FAILURE(makeScenes(name, options));
    const DeepAnalysis found = deep(name);
    ASSERT_TRUE(found.video);
    ASSERT_EQ(found.audio.size(), 1U);
    EXPECT_THAT(found.faults, IsEmpty());

    const std::string image = ffmpeg(name,
                                     "-map 0:v -vf blackdetect,freezedetect,scdet,idet,signalstats,metadata=print:"
                                     "file=- -f null -");
    const DeepVideoAnalysis& video = *found.video;
    EXPECT_THAT(startsOf(video.black), near(numbersAfter(image, "lavfi.black_start="), 1e-3));
    EXPECT_THAT(endsOf(video.black), near(numbersAfter(image, "lavfi.black_end="), 1e-3));
    EXPECT_THAT(startsOf(video.frozen), near(numbersAfter(image, "freezedetect.freeze_start="), 1e-3));
    EXPECT_THAT(endsOf(video.frozen), near(numbersAfter(image, "freezedetect.freeze_end="), 1e-3));
    std::vector<double> cuts;
    for (const SceneChange& each : video.sceneChanges) cuts.push_back(each.seconds);
    EXPECT_THAT(cuts, near(numbersAfter(image, "lavfi.scd.time="), 1e-3));
    EXPECT_FALSE(video.black.empty() || video.frozen.empty() || video.sceneChanges.empty());
    const auto least = numbersAfter(image, "signalstats.YMIN=");
    const auto greatest = numbersAfter(image, "signalstats.YMAX=");
    const auto means = numbersAfter(image, "signalstats.YAVG=");
    EXPECT_EQ(static_cast<std::size_t>(video.frameCount), means.size());
    EXPECT_EQ(video.luma.minimum, *std::ranges::min_element(least));
    EXPECT_EQ(video.luma.maximum, *std::ranges::max_element(greatest));
    double mean = 0;
    for (const double each : means) mean += each / static_cast<double>(means.size());
    EXPECT_NEAR(video.luma.average, mean, 0.02 * (1 << (video.luma.bitDepth - 8)));
    ASSERT_TRUE(video.fields);
    EXPECT_EQ(video.fields->progressive, std::lround(numbersAfter(image, "idet.multiple.progressive=").back()));
    EXPECT_EQ(video.fields->topFirst, std::lround(numbersAfter(image, "idet.multiple.tff=").back()));
    EXPECT_EQ(video.fields->bottomFirst, std::lround(numbersAfter(image, "idet.multiple.bff=").back()));

    const std::string sound = ffmpeg(name, "-map 0:a -af ebur128=peak=sample+true,silencedetect=n=-60dB:d=2 -f null -");
    const DeepAudioAnalysis& audio = found.audio.front();
    EXPECT_THAT(startsOf(audio.silent), near(numbersAfter(sound, "silence_start: "), 1e-3));
    EXPECT_THAT(endsOf(audio.silent), near(numbersAfter(sound, "silence_end: "), 1e-3));
    EXPECT_FALSE(audio.silent.empty());
    ASSERT_TRUE(audio.loudness && audio.loudness->integrated);
    const std::string summary = sound.substr(sound.rfind("Summary:"));
    EXPECT_NEAR(*audio.loudness->integrated, numbersAfter(summary, "I: ").front(), 0.1);
    EXPECT_NEAR(*audio.loudness->samplePeak, numbersAfter(summary, "Peak: ").front(), 0.1);
    EXPECT_NEAR(*audio.loudness->truePeak, numbersAfter(summary, "Peak: ").back(), 0.3);
  }
}

TEST_F(DeepAnalyses, ComputeTheHashOfWhatIsDecoded) {
  for (const auto& [name, options, format] : std::vector<std::tuple<std::string, std::string, std::string>>{
           {"a.mov", "-c:v libx264 -bf 2 -c:a aac", "pcm_f32le"},
           {"b.mov", "-c:v prores_ks -profile:v 4 -pix_fmt yuva444p10le -c:a alac", "pcm_s16le"},
           {"c.mkv", "-c:v png -pix_fmt rgb24 -c:a pcm_s24le", "pcm_s32le"},
           {"d.avi", "-c:v gif -pix_fmt pal8 -c:a pcm_u8", "pcm_u8"}}) {
    SCOPED_TRACE(name);
    ASSERT_NO_FATAL_FAILURE(make({{name, "-map 0:v -map 1:a " + options}}));
    const std::string hashes = ffmpeg(name, "-map 0 -vsync passthrough -c:a " + format + " -f streamhash -hash md5 -");
    const DeepAnalysis found = deep(name);
    ASSERT_TRUE(found.video);
    EXPECT_THAT(hashes, HasSubstr("0,v,MD5=" + found.video->md5));
    EXPECT_THAT(hashes, HasSubstr("1,a,MD5=" + found.audio.front().md5));
  }
  // Two lenses in one file, the second of another size and rate.
  const Outcome made =
      run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=64x48:r=25:d=1", "-f", "lavfi", "-i",
           "testsrc=s=80x60:r=50:d=1", "-map", "0", "-map", "1", "-c:v", "libx264", path("two.mov")});
  ASSERT_EQ(made.status, 0) << made.errors;
  const std::string hashes = ffmpeg("two.mov", "-map 0 -vsync passthrough -f streamhash -hash md5 -");
  const DeepAnalysis two = deep("two.mov");
  EXPECT_EQ(two.video->frameCount, 25);
  ASSERT_EQ(two.otherVideo.size(), 1U);
  EXPECT_EQ(two.otherVideo[0].stream, 1);
  EXPECT_EQ(two.otherVideo[0].frameCount, 50);
  EXPECT_THAT(hashes, HasSubstr("0,v,MD5=" + two.video->md5));
  EXPECT_THAT(hashes, HasSubstr("1,v,MD5=" + two.otherVideo[0].md5));
}

TEST_F(DeepAnalyses, FindDamageWhereItIs) {
  for (const std::string options : {"-c:v prores_ks -profile:v 0 -an", "-c:v libx264 -g 12 -bf 2 -crf 18 -an"}) {
    SCOPED_TRACE(options);
    makeClip(path("whole.mov"), {.frames = 100, .options = options});
    EXPECT_EQ(deep("whole.mov").faultCount, 0);
    // Zeros within the image in the middle.
    const auto size = std::filesystem::file_size(path("whole.mov"));
    std::filesystem::copy_file(path("whole.mov"), path("hurt.mov"), std::filesystem::copy_options::overwrite_existing);
    const std::string offsets = run({"ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                                     "packet=pts_time,pos,size", "-of", "csv=p=0", path("whole.mov")})
                                    .output;
    std::istringstream lines(offsets);
    std::string line;
    for (int skipped = 0; skipped <= 60; ++skipped) std::getline(lines, line);
    std::ranges::replace(line, ',', ' ');
    std::istringstream entry(line);
    double time = 0;
    std::size_t length = 0;
    std::size_t place = 0;
    entry >> time >> length >> place;
    ASSERT_GT(length, 40U);
    ASSERT_LT(place + length, size);
    {
      std::fstream file(path("hurt.mov"), std::ios::in | std::ios::out | std::ios::binary);
      file.seekp(static_cast<std::streamoff>(place + length / 3));
      file << std::string(length / 3, '\0');
    }
    const DeepAnalysis found = deep("hurt.mov");
    ASSERT_GE(found.faultCount, 1);
    EXPECT_NEAR(found.faults.front().seconds, time, 0.041);
    EXPECT_FALSE(found.faults.front().track);
    EXPECT_FALSE(found.faults.front().reason.empty());
    const auto error = errorOfFaults(found, path("hurt.mov"));
    ASSERT_TRUE(error);
    EXPECT_THAT(error->message(), HasSubstr("hurt.mov"));
  }
}

TEST_F(DeepAnalyses, MeasureWhatIsUnusual) {
  ASSERT_NO_FATAL_FAILURE(
      make({{"still.%d.png", "-map 0:v -frames:v 10"},
            {"sound.wav", "-map 1:a"},
            {"plain.mov", "-map 0:v -c:v mjpeg"},
            {"vfr.mp4", "-map 0:v -vf select='not(mod(n,3))+not(mod(n,4))' -vsync vfr -c:v libx264"},
            {"many.wav", "-map 1:a -af pan=hexadecagonal|c0=c0|c5=c0 -ar 8000"}}));
  std::filesystem::create_directory(path("frames"));
  for (int image = 1; image <= 10; ++image) {
    const std::string name = "still." + std::to_string(image) + ".png";
    std::filesystem::rename(path(name), path("frames/" + name));
  }
  const DeepAnalysis sequence = deep("frames", {.filmstripImages = 4, .filmstripWidth = 32, .filmstripHeight = 32});
  EXPECT_EQ(sequence.assumedRate, VideoFrameRate::pal25p);
  EXPECT_EQ(sequence.video->frameCount, 10);
  EXPECT_DOUBLE_EQ(sequence.video->seconds, 0.4);
  EXPECT_FALSE(sequence.video->isVariable);
  ASSERT_EQ(sequence.video->filmstrip.size(), 4U);
  EXPECT_EQ(sequence.video->filmstrip[0].width, 32);
  EXPECT_EQ(sequence.video->filmstrip[0].height, 18);
  EXPECT_EQ(sequence.video->filmstrip[0].samples.size(), 3U * 32 * 18);

  const DeepAnalysis sound = deep("sound.wav");
  EXPECT_FALSE(sound.video);
  EXPECT_EQ(sound.audio.front().sampleCount, std::lround(sound.audio.front().seconds * 48000));
  EXPECT_NEAR(*sound.audio.front().loudness->samplePeak, 20 * std::log10(0.125), 0.1);
  float greatest = 0;
  for (const WaveformPart& part : sound.audio.front().waveform) greatest = std::max(greatest, part.greatest);
  EXPECT_NEAR(greatest, 0.125, 0.001);

  static_cast<void>(ffmpeg("plain.mov", "-c copy -metadata:s:v:0 rotate=90 " + path("turned.mov")));
  const DeepAnalysis turned = deep("turned.mov", {.filmstripImages = 1});
  EXPECT_EQ(turned.video->filmstrip.front().height, 64);
  const DeepAnalysis variable = deep("vfr.mp4");
  EXPECT_TRUE(variable.video->isVariable);
  EXPECT_NEAR(variable.video->shortestFrame, 1 / 60.0, 1e-4);
  EXPECT_NEAR(variable.video->longestFrame, 3 / 60.0, 1e-4);
  EXPECT_TRUE(deep("many.wav").audio.front().loudness);

  // The clock of the container is coarser than a millisecond, and one image of a sequence has another size.
  makeClip(path("coarse.mov"), {.rate = "24000/1001", .options = "-c:v mjpeg -an -video_track_timescale 600"});
  EXPECT_FALSE(deep("coarse.mov").video->isVariable);
  static_cast<void>(ffmpeg("plain.mov", "-frames:v 1 -vf scale=20:20 -y " + path("frames/still.5.png")));
  const DeepAnalysis unlike = deep("frames");
  EXPECT_EQ(unlike.video->frameCount, 10);
  EXPECT_EQ(unlike.faultCount, 1);
  const Outcome made =
      run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=192x108:r=50:d=2", "-vf",
           "tinterlace=interleave_bottom", "-c:v", "mpeg2video", "-flags", "+ildct+ilme", path("fields.mxf")});
  ASSERT_EQ(made.status, 0) << made.errors;
  EXPECT_EQ(deep("fields.mxf").video->fields->seen(), FieldOrder::bottomFirst);

  std::stop_source stop;
  stop.request_stop();
  const auto stopped = analyzeDeeply(described("vfr.mp4"), {}, [](double) {}, stop.get_token());
  ASSERT_FALSE(stopped);
  EXPECT_EQ(stopped.error().code, DeepAnalysisErrorCode::stopped);
}

TEST_F(DeepAnalyses, FindWhatIsMissing) {
  makeClip(path("whole.mkv"), {.frames = 150, .options = "-c:v libx264 -c:a pcm_s16le"});
  static_cast<void>(
      ffmpeg("whole.mkv", "-c:v copy -c:a pcm_s16le -af aselect='not(between(t,1,4))' " + path("hole.mkv")));
  const DeepAnalysis hole = deep("hole.mkv");
  ASSERT_EQ(hole.audio.size(), 1U);
  EXPECT_THAT(startsOf(hole.audio[0].silent), near({1}, 0.05));
  EXPECT_THAT(endsOf(hole.audio[0].silent), near({4}, 0.05));
  EXPECT_NEAR(hole.audio[0].seconds, 6, 0.05);
  EXPECT_NEAR(static_cast<double>(hole.audio[0].waveform.size()) * hole.audio[0].secondsPerPart, 6, 0.05);
  const auto soft = std::ranges::count_if(hole.audio[0].loudnessCurve, [](const LoudnessPoint& point) {
    return point.seconds > 1.5 && point.seconds < 4 && point.momentary < -70;
  });
  EXPECT_NEAR(static_cast<double>(soft), 25, 2);

  // One recording behind another: a single step back, and all after it goes on.
  static_cast<void>(ffmpeg("whole.mkv", "-c:v copy -c:a aac " + path("once.ts")));
  {
    std::ofstream twice(path("twice.ts"), std::ios::binary);
    for (int time = 0; time < 2; ++time) twice << std::ifstream(path("once.ts"), std::ios::binary).rdbuf();
  }
  const DeepAnalysis twice = deep("twice.ts");
  EXPECT_EQ(twice.video->frameCount, 300);
  EXPECT_NEAR(twice.video->seconds, 12, 0.1);
  EXPECT_NEAR(twice.audio[0].seconds, 12, 0.2);
  ASSERT_THAT(twice.faults, testing::SizeIs(testing::AllOf(testing::Ge(1), testing::Le(3))));
  for (const DecodeFault& fault : twice.faults) EXPECT_NEAR(fault.seconds, 6, 0.2) << fault.reason;

  std::filesystem::create_directory(path("frames"));
  static_cast<void>(ffmpeg("whole.mkv", "-frames:v 10 " + path("frames/%d.png")));
  for (const int number : {4, 5, 8}) std::filesystem::remove(path("frames/" + std::to_string(number) + ".png"));
  const DeepAnalysis frames = deep("frames");
  EXPECT_EQ(frames.video->frameCount, 7);
  EXPECT_FALSE(frames.video->isVariable);
  ASSERT_EQ(frames.faults.size(), 2U);
  EXPECT_DOUBLE_EQ(frames.faults[0].seconds, 0.12);
  EXPECT_EQ(frames.faults[0].reason, "2 images are missing");
  EXPECT_DOUBLE_EQ(frames.faults[1].seconds, 0.28);
}

TEST_F(DeepAnalyses, SayWhenSamplesAreNotNumbers) {
  std::vector<float> samples(96000, 0.25F);
  for (const std::size_t place : {500U, 600U, 50000U}) samples[place] = std::numeric_limits<float>::quiet_NaN();
  {
    std::ofstream raw(path("sound.f32"), std::ios::binary);
    raw.write(reinterpret_cast<const char*>(samples.data()), static_cast<std::streamsize>(samples.size() * 4));
  }
  const Outcome made = run({"ffmpeg", "-v", "error", "-f", "f32le", "-ar", "48000", "-ac", "2", "-i", path("sound.f32"),
                            "-c:a", "copy", path("sound.wav")});
  ASSERT_EQ(made.status, 0) << made.errors;
  const DeepAnalysis found = deep("sound.wav");
  EXPECT_EQ(found.faultCount, 2);
  EXPECT_NEAR(*found.audio.front().loudness->samplePeak, 20 * std::log10(0.25), 0.01);
}

TEST_F(DeepAnalyses, MeasureTheRangeOfLoudness) {
  // Steps of loudness in surround sound, long enough that the beginnings of windows do not count.
  const Outcome made = run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i",
                            "aevalsrc='0.02*(1+floor(t/10))*sin(2*PI*440*t)|0.1*sin(2*PI*220*t)|0.05*sin(2*PI*990*t)|"
                            "0.5*sin(2*PI*50*t)|0.1*sin(2*PI*660*t)|0.02*floor(t/10)*sin(2*PI*330*t)':s=48000:d=60:"
                            "c=5.1",
                            "-c:a", "pcm_s24le", path("steps.wav")});
  ASSERT_EQ(made.status, 0) << made.errors;
  const std::string said = ffmpeg("steps.wav", "-af ebur128=peak=true -f null -");
  const std::string summary = said.substr(said.rfind("Summary:"));
  const Loudness loudness = *deep("steps.wav").audio.front().loudness;
  EXPECT_NEAR(*loudness.integrated, numbersAfter(summary, "I: ").front(), 0.1);
  EXPECT_NEAR(loudness.range, numbersAfter(summary, "LRA: ").front(), 0.3);
  EXPECT_NEAR(*loudness.truePeak, numbersAfter(summary, "Peak: ").back(), 0.1);
  const auto shortTerm = numbersAfter(said, " S:");
  EXPECT_NEAR(*loudness.greatestShortTerm, *std::ranges::max_element(shortTerm), 0.2);
}

TEST_F(DeepAnalyses, ChooseImagesAtEqualDistances) {
  makeClip(path("clip.mov"), {.frames = 97});
  const DeepAnalysis found = deep("clip.mov", {.filmstripImages = 8});
  ASSERT_EQ(found.video->filmstrip.size(), 8U);
  std::vector<double> times;
  for (const FilmstripImage& image : found.video->filmstrip) times.push_back(image.seconds);
  std::vector<double> expected;
  for (int image = 0; image < 8; ++image) expected.push_back((image + 0.5) * 97 / 25 / 8);
  EXPECT_THAT(times, near(expected, 0.041));
}

}  // namespace
}  // namespace meridian::test
