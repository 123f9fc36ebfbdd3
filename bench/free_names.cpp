// Finding unused names, compared with a plain loop over std::filesystem.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "bench/allocations.h"
#include "meridian/fs/claimed_files.h"
#include "meridian/fs/free_names.h"
#include "tests/support/temporary_directory.h"

namespace meridian::bench {
namespace {

namespace fs = std::filesystem;

/// A directory in which "clip.mov" and its numbered names are in use.
class TakenNames {
 public:
  explicit TakenNames(std::int64_t count) {
    for (std::int64_t number = 1; number <= count; ++number) {
      const std::string suffix = number == 1 ? "" : " " + std::to_string(number);
      directory_.write("clip" + suffix + ".mov", "");
    }
  }

  [[nodiscard]] fs::path clip() const { return directory_.path() / "clip.mov"; }

 private:
  test::TemporaryDirectory directory_;
};

void freeNameMeridian(benchmark::State& state) {
  const TakenNames taken(state.range(0));
  const Url clip = Url::fromFilePath(taken.clip().string());
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize(filePathAdjustedForCollision(clip));
}

void freeNameFilesystem(benchmark::State& state) {
  const TakenNames taken(state.range(0));
  const fs::path clip = taken.clip();
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    fs::path candidate = clip;
    for (int number = 2; fs::exists(candidate); ++number) {
      candidate =
          clip.parent_path() / (clip.stem().string() + " " + std::to_string(number) + clip.extension().string());
    }
    benchmark::DoNotOptimize(candidate);
  }
}

void claimFileMeridian(benchmark::State& state) {
  const TakenNames taken(state.range(0));
  const Url clip = Url::fromFilePath(taken.clip().string());
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) {
    const auto files = claimFile(clip);
    if (!files) return state.SkipWithError(files.error().message().c_str());
    // Included in the time: pausing the timer costs more than the call.
    fs::remove(files->front().url.path());
  }
}

BENCHMARK(freeNameMeridian)->Name("free_name/meridian")->Arg(1)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(freeNameFilesystem)
    ->Name("free_name/filesystem")
    ->Arg(1)
    ->Arg(100)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(claimFileMeridian)->Name("claim_and_remove")->Arg(1)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace meridian::bench
