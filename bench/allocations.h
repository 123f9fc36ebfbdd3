/// \file
/// Counts the program's allocations, so that a benchmark can report how many a call makes, and how much memory it
/// needs. For example:
///
///     const bench::AllocationsPerIteration allocations(state);
///     for (auto _ : state) benchmark::DoNotOptimize(parse(words));
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

namespace meridian::bench {

/// Returns the number of allocations through operator new since the program started.
[[nodiscard]] std::size_t allocationCount() noexcept;

/// Returns the number of bytes that are allocated now.
[[nodiscard]] std::size_t liveBytes() noexcept;
/// Returns the greatest number of bytes that were allocated at one time since `startPeak`.
[[nodiscard]] std::size_t peakBytes() noexcept;
/// Sets the peak to the bytes that are allocated now.
void startPeak() noexcept;

/// Counts allocations during its lifetime, and adds their number per iteration to the benchmark when it is destroyed.
class AllocationsPerIteration {
 public:
  explicit AllocationsPerIteration(benchmark::State& state) : state_(state), before_(allocationCount()) {}
  AllocationsPerIteration(const AllocationsPerIteration&) = delete;
  AllocationsPerIteration& operator=(const AllocationsPerIteration&) = delete;
  ~AllocationsPerIteration() {
    state_.counters["allocations"] =
        benchmark::Counter(static_cast<double>(allocationCount() - before_), benchmark::Counter::kAvgIterations);
  }

 private:
  benchmark::State& state_;
  std::size_t before_;
};

}  // namespace meridian::bench
