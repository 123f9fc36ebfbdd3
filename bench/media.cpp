// Timecode and frame rates, compared with sscanf and snprintf.
#include <benchmark/benchmark.h>

#include <array>
#include <cinttypes>
#include <cstdio>
#include <string>

#include "bench/allocations.h"
#include "meridian/media/frame_number.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian::bench {
namespace {

// Alternate between cases of different cost, as the lines of an edit list do.
constexpr std::array<const char*, 4> texts{"01:02:03;04", "10:59:59:23", "00:00:00:00", "23:59:59;29"};

void timecodeParseMeridian(benchmark::State& state) {
  const std::array<std::string, 4> given{texts[0], texts[1], texts[2], texts[3]};
  const AllocationsPerIteration allocations(state);
  std::size_t place = 0;
  for (auto _ : state) benchmark::DoNotOptimize(TimecodeComponents::fromTimecode(given[place++ % 4]));
}
BENCHMARK(timecodeParseMeridian)->Name("timecode_parse/meridian");

void timecodeParseSscanf(benchmark::State& state) {
  const AllocationsPerIteration allocations(state);
  std::size_t place = 0;
  for (auto _ : state) {
    TimecodeComponents timecode;
    char separator = 0;
    const int count = std::sscanf(texts[place++ % 4], "%" SCNd64 ":%" SCNd64 ":%" SCNd64 "%c%" SCNd64, &timecode.hours,
                                  &timecode.minutes, &timecode.seconds, &separator, &timecode.frames);
    timecode.isDropFrame = separator == ';';
    benchmark::DoNotOptimize(count == 5 && timecode.minutes <= 60 && timecode.seconds <= 60);
    benchmark::DoNotOptimize(timecode);
  }
}
BENCHMARK(timecodeParseSscanf)->Name("timecode_parse/sscanf");

std::array<TimecodeComponents, 4> timecodes() {
  std::array<TimecodeComponents, 4> result;
  for (std::size_t i = 0; i < 4; ++i) result[i] = *TimecodeComponents::fromTimecode(texts[i]);
  return result;
}

void timecodeFormatMeridian(benchmark::State& state) {
  const auto given = timecodes();
  const AllocationsPerIteration allocations(state);
  std::size_t place = 0;
  for (auto _ : state) benchmark::DoNotOptimize(given[place++ % 4].timecodeString());
}
BENCHMARK(timecodeFormatMeridian)->Name("timecode_format/meridian");

void timecodeFormatSnprintf(benchmark::State& state) {
  const auto given = timecodes();
  const AllocationsPerIteration allocations(state);
  std::size_t place = 0;
  for (auto _ : state) {
    const TimecodeComponents& timecode = given[place++ % 4];
    std::array<char, 88> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%02" PRId64 ":%02" PRId64 ":%02" PRId64 "%c%02" PRId64, timecode.hours,
                      timecode.minutes, timecode.seconds, timecode.isDropFrame ? ';' : ':', timecode.frames);
    benchmark::DoNotOptimize(std::string(text.data(), static_cast<std::size_t>(length)));
  }
}
BENCHMARK(timecodeFormatSnprintf)->Name("timecode_format/snprintf");

void rateMatch(benchmark::State& state) {
  const std::array<MediaRational, 4> given{{{24000, 1001}, {2997, 100}, {600, 1}, {48000, 1001}}};
  const AllocationsPerIteration allocations(state);
  std::size_t place = 0;
  for (auto _ : state) benchmark::DoNotOptimize(VideoFrameRate(given[place++ % 4]));
}
BENCHMARK(rateMatch)->Name("rate_match/meridian");

void framesToTimecode(benchmark::State& state) {
  const AllocationsPerIteration allocations(state);
  VideoFrameRate rate = VideoFrameRate::ntsc30p;
  benchmark::DoNotOptimize(rate);
  std::int64_t frame = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(timecodeOfFrame(frame, rate, true));
    frame = (frame + 104729) % 2589408;
  }
}
BENCHMARK(framesToTimecode)->Name("frames_to_timecode/meridian");

}  // namespace
}  // namespace meridian::bench
