// Random vectors from the vocabulary's own tables, for random sources.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <random>

#include "meridian/base/joined.h"
#include "meridian/cli/transcode_properties.h"
#include "meridian/engine/transcode_plan_text.h"
#include "meridian/engine/video_encoders.h"
#include "meridian/media/frame_number.h"
#include "meridian/serialization/transcode_plan_json.h"
#include "tests/engine/planned_words.h"

namespace meridian {
namespace {

class RandomTranscodes {
 public:
  explicit RandomTranscodes(std::uint64_t seed) : engine_(seed) {}

  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }
  bool oneIn(std::size_t count) { return below(count) == 0; }

  std::string value(const FlagDescription& flag) {
    static const std::vector<std::string> odd{"0",
                                              "1",
                                              "-1",
                                              "0.5",
                                              "copy",
                                              "8",
                                              "10",
                                              "12",
                                              "24",
                                              "25",
                                              "48000",
                                              "44100",
                                              "inf",
                                              "nan",
                                              "1e9",
                                              "23.98",
                                              "960x540",
                                              "961x541",
                                              "17x3",
                                              "x",
                                              "",
                                              "[1 2",
                                              "[",
                                              "147",
                                              "63",
                                              "00:01:00;00",
                                              "10:00:00:00",
                                              "high@4.1",
                                              "main",
                                              "dnxhr_sq",
                                              "9223372036854775807"};
    const auto allowed = allowedTextsOfFlag(flag.text);
    if (!allowed.empty() && !oneIn(8)) return std::string(allowed[below(allowed.size())]);
    const auto properties = propertiesOfFlag(flag.text);
    if (!properties.empty() && oneIn(3)) return std::string(properties.front()->example);
    return odd[below(odd.size())];
  }

  std::vector<std::string> words(std::size_t fileCount) {
    static const std::vector<std::string> outputs{"/o/a.mov",   "/o/a.mp4", "/o/a.wav", "/o/a.mxf",
                                                  "/o/a.mjpeg", "/o/a",     "/o/a.avi", "/o/"};
    std::vector<std::string> result;
    for (std::size_t file = 0; file < fileCount; ++file) {
      result.push_back("-in_" + std::to_string(below(2)) + "_" + std::to_string(file));
      result.push_back(oneIn(10) ? "/card/" + std::to_string(file) + ".dpx" : "/card/a.mov");
    }
    if (!oneIn(20)) {
      result.emplace_back("-out");
      result.push_back(outputs[below(oneIn(4) ? outputs.size() : 5)]);
    }
    for (std::size_t count = below(12); count > 0; --count) {
      const FlagDescription& flag = flagDescriptions[below(flagDescriptions.size())];
      if (flag.text == "-in") continue;
      result.emplace_back(flag.text == "-ac_omit" ? "-ac_omit_" + std::to_string(below(4)) : std::string(flag.text));
      if (flag.takesValue() && flag.text != "-ac_omit") result.push_back(value(flag));
    }
    return result;
  }

  Expected<MediaDescription, MediaError> media() {
    if (oneIn(30)) return Unexpected(MediaError{MediaErrorCode::damaged, "/card/a.mov"});
    MediaDescription clip = oneIn(5) ? soundClip() : hdClip();
    for (VideoStreamDescription& video : clip.video) {
      static const std::vector<std::pair<int, int>> sizes{{1920, 1080}, {1280, 720}, {853, 481}, {720, 576}, {1, 1}};
      std::tie(video.width, video.height) = sizes[oneIn(2) ? 0 : below(sizes.size())];
      if (oneIn(4)) video.frameRate = standardVideoFrameRates[below(standardVideoFrameRates.size())];
      if (oneIn(6)) video.pixelAspectRatio = {64, 45};
      if (oneIn(6)) video.rotation = oneIn(4) ? static_cast<int>(below(360)) : 90 * static_cast<int>(below(4));
      if (oneIn(6)) video.fieldOrder = FieldOrder::topFirst;
      if (oneIn(6)) video.bitDepth = 8 + 2 * static_cast<int>(below(5));
      if (oneIn(6)) video.chroma = allCases<ChromaSubsampling>()[below(allCases<ChromaSubsampling>().size())];
      video.hasAlpha = oneIn(6);
      video.isVariable = oneIn(6);
      video.isDecodable = !oneIn(20);
      if (oneIn(6)) video.primaries = video.transfer = video.matrix = {};
      if (oneIn(10)) video.frameRate.reset();
    }
    for (std::size_t count = below(4); count > 0; --count) clip.audio.push_back(clip.audio.front());
    for (AudioStreamDescription& track : clip.audio) {
      track.channelCount = static_cast<int>(oneIn(3) ? 1 + below(20) : 2);
      if (track.channelCount != 2) track.channels.clear();
      if (oneIn(4)) track.codecName = oneIn(2) ? "aac" : "pcm_s16be";
    }
    if (oneIn(3)) clip.timecode.reset();
    return clip;
  }

 private:
  std::mt19937_64 engine_;
};

void expectConsistent(const TranscodePlan& plan) {
  EXPECT_TRUE(plan.video || !plan.audio.empty());
  if (plan.video && !plan.video->isCopied()) {
    const ImageForm& image = plan.video->output();
    const PlannedVideoEncoder& encoder = *plan.video->encoder;
    const PixelFormatRow& format = tableRow(encoder.pixelFormat);
    EXPECT_EQ(image.pixelFormat, format.rawValue);
    EXPECT_EQ(image.chroma, format.chroma);
    EXPECT_GE(std::min(image.width, image.height), 2);
    if (encoder.name.starts_with("libx26") && format.chroma == ChromaSubsampling::yuv420) {
      EXPECT_EQ(image.width % 2 + image.height % 2, 0);
    }
    EXPECT_GT(image.frameRate.rawValue().rawValue(), 0);
    EXPECT_FALSE(image.isInterlaced && !encoder.keepsFields);
    EXPECT_TRUE(holdsEncoded(plan.output.container, encoder.codec));
    int bars = 0;
    for (const PlannedStep& step : plan.video->steps) {
      if (std::holds_alternative<PadStep>(step.step)) ++bars;
      // Bars are added after the LUT.
      if (std::holds_alternative<LutStep>(step.step)) {
        EXPECT_EQ(bars, 0);
      }
    }
  }
  for (const PlannedAudioTrack& track : plan.audio) {
    EXPECT_FALSE(track.origins.empty());
    if (track.isCopied()) {
      EXPECT_TRUE(holdsCodec(plan.output.container, track.copiedCodec));
      continue;
    }
    EXPECT_GE(track.channelCount, 1);
    EXPECT_LE(track.channelCount, 64);
    EXPECT_TRUE(track.channels.empty() || track.channels.size() == static_cast<std::size_t>(track.channelCount));
    EXPECT_TRUE(track.channels.empty() || bitmapOfChannels(track.channels));
  }
  if (plan.timecode) {
    EXPECT_TRUE(frameNumber(plan.timecode->start, plan.timecode->rate)) << plan.timecode->start.timecodeString();
  }
}

TEST(PlanProperties, HoldForRandomVectors) {
  RandomTranscodes random(20);
  int planned = 0;
  for (int round = 0; round < 10000; ++round) {
    const std::size_t fileCount = random.oneIn(20) ? 0 : 1 + random.below(random.oneIn(4) ? 3 : 1);
    const std::vector<std::string> words = random.words(fileCount);
    SCOPED_TRACE(joined(words, " "));
    const TranscodeExplanation explanation = explain(words);
    std::vector<Expected<MediaDescription, MediaError>> media;
    const auto files = explanation.arguments.inputFiles().value_or(std::vector<std::string>());
    for (std::size_t file = 0; file < files.size(); ++file) media.push_back(random.media());
    TranscodeSurroundings found;
    found.output.exists = random.oneIn(10);
    if (random.oneIn(4)) found.watermark = FoundWatermark{"logo.png", {300, 200}};
    const Plan plan = planTranscode(explanation, media, fullInventory(), found);
    // A store does not tell "-presets" from "-preset".
    if (std::ranges::none_of(explanation.rejectedEntries, &RejectedEntry::isListing)) {
      EXPECT_EQ(planTranscode(explanation.arguments, media, fullInventory(), found).has_value(), plan.has_value());
    }
    if (plan) {
      ++planned;
      expectConsistent(*plan);
      EXPECT_FALSE(describe(*plan).empty());
      EXPECT_FALSE(nlohmann::ordered_json(*plan).dump().empty());
    } else {
      ASSERT_FALSE(plan.error().empty());
      for (const TranscodePlanError& error : plan.error()) {
        const bool isWritten = std::ranges::find(words, error.place) != words.end();
        EXPECT_TRUE(isWritten || error.detail.find("set by -preset") != std::string::npos || error.place == "-in" ||
                    error.place == "-out")
            << error.message();
        EXPECT_FALSE(error.remedy().empty()) << error.message();
      }
    }
    if (HasFailure()) return;
  }
  EXPECT_GT(planned, 500);
}

}  // namespace
}  // namespace meridian
