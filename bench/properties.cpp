// Typed properties of the argument store: one of each kind, read and written.
#include <benchmark/benchmark.h>

#include "bench/allocations.h"
#include "bench/argument_vectors.h"
#include "meridian/cli/transcode_cli_arguments.h"

namespace meridian::bench {
namespace {

TranscodeCliArguments filledStore() { return TranscodeCliArguments(propertyWords); }

template <auto getter>
void get(benchmark::State& state) {
  const TranscodeCliArguments arguments = filledStore();
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize((arguments.*getter)());
}

/// Sets the value that the store already has.
template <auto getter, auto setter>
void set(benchmark::State& state) {
  TranscodeCliArguments arguments = filledStore();
  const auto value = (arguments.*getter)();
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    (arguments.*setter)(value);
    benchmark::ClobberMemory();
  }
}

/// Removes a setting and stores it again.
void removeAndInsert(benchmark::State& state) {
  TranscodeCliArguments arguments = filledStore();
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    arguments.setVideoFrameRate(std::nullopt);
    arguments.setVideoFrameRate(23.976F);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(removeAndInsert)->Name("property_set/remove_and_insert");

using Arguments = TranscodeCliArguments;
BENCHMARK(get<&Arguments::videoFormat>)->Name("property_get/enumerated");
BENCHMARK(get<&Arguments::videoFrameRate>)->Name("property_get/float");
BENCHMARK(get<&Arguments::videoBitDepth>)->Name("property_get/integer");
BENCHMARK(get<&Arguments::gpuDecode>)->Name("property_get/switch");
BENCHMARK(get<&Arguments::videoProfile>)->Name("property_get/text");
BENCHMARK(get<&Arguments::lutFile>)->Name("property_get/file");
BENCHMARK(get<&Arguments::videoDimensions>)->Name("property_get/dimensions");
BENCHMARK(get<&Arguments::timecode>)->Name("property_get/timecode");
BENCHMARK(get<&Arguments::timecodeBurnFontColor>)->Name("property_get/color");
BENCHMARK(set<&Arguments::videoFormat, &Arguments::setVideoFormat>)->Name("property_set/enumerated");
BENCHMARK(set<&Arguments::videoFrameRate, &Arguments::setVideoFrameRate>)->Name("property_set/float");
BENCHMARK(set<&Arguments::videoBitDepth, &Arguments::setVideoBitDepth>)->Name("property_set/integer");
BENCHMARK(set<&Arguments::gpuDecode, &Arguments::setGpuDecode>)->Name("property_set/switch");
BENCHMARK(set<&Arguments::videoProfile, &Arguments::setVideoProfile>)->Name("property_set/text");
BENCHMARK(set<&Arguments::lutFile, &Arguments::setLutFile>)->Name("property_set/file");
BENCHMARK(set<&Arguments::videoDimensions, &Arguments::setVideoDimensions>)->Name("property_set/dimensions");
BENCHMARK(set<&Arguments::timecode, &Arguments::setTimecode>)->Name("property_set/timecode");
BENCHMARK(set<&Arguments::timecodeBurnFontColor, &Arguments::setTimecodeBurnFontColor>)->Name("property_set/color");

}  // namespace
}  // namespace meridian::bench
