// Planning a transcode of one described clip: from the words, and from words that are explained already.
#include <benchmark/benchmark.h>

#include "bench/allocations.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/engine/transcode_plan_text.h"

namespace meridian::bench {
namespace {

constexpr auto planWords = std::to_array<std::string_view>(
    {"-in_0_0", "/Volumes/A001/CLIPS/A001C001.mov", "-out", "/Volumes/Proxies/A001C001.mov", "-preset", "solvane_cloud",
     "-clut", "/Looks/Rec709.cube", "-tc_burn", "-tc_track", "-tc_match", "-vr", "23.976", "-overwrite"});

MediaDescription clip() {
  MediaDescription media;
  VideoStreamDescription& video = media.video.emplace_back();
  video.codecName = "prores";
  video.isDecodable = true;
  video.width = video.displayWidth = 1920;
  video.height = video.displayHeight = 1080;
  video.frameRate = VideoFrameRate::ntsc24p;
  video.frameCount = 2880;
  video.pixelFormat = "yuv422p10le";
  video.bitDepth = 10;
  video.chroma = ChromaSubsampling::yuv422;
  video.primaries = video.transfer = video.matrix = {1, "bt709"};
  AudioStreamDescription& track = media.audio.emplace_back();
  track.codecName = "pcm_s24le";
  track.isDecodable = true;
  track.sampleRate = 48000;
  track.bitsPerChannel = 24;
  track.channelCount = 2;
  track.channels = {{1, "FL"}, {2, "FR"}};
  media.timecode = TimecodeDescription{{1, 0, 0, 0, false}, {}, VideoFrameRate::ntsc24p, MediaTimecodeSource::tmcd};
  return media;
}

const std::vector<Expected<MediaDescription, MediaError>>& sources() {
  static const std::vector<Expected<MediaDescription, MediaError>> media{clip()};
  return media;
}

void planFromWords(benchmark::State& state) {
  const EncoderInventory& inventory = encoderInventory();
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize(planTranscode(explain(planWords), sources(), inventory, {}));
}
BENCHMARK(planFromWords)->Name("transcode_plan/from_words")->Unit(benchmark::kMicrosecond);

void planFromExplanation(benchmark::State& state) {
  const EncoderInventory& inventory = encoderInventory();
  const TranscodeExplanation words = explain(planWords);
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize(planTranscode(words, sources(), inventory, {}));
}
BENCHMARK(planFromExplanation)->Name("transcode_plan/from_explanation")->Unit(benchmark::kMicrosecond);

void describePlan(benchmark::State& state) {
  const auto plan = planTranscode(explain(planWords), sources(), encoderInventory(), {});
  if (!plan) {
    state.SkipWithError(plan.error().front().message().c_str());
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(describe(*plan));
}
BENCHMARK(describePlan)->Name("transcode_plan/describe")->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace meridian::bench
