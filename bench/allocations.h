// Counts the allocations of the program, so that a benchmark can say how many a call makes and how much memory it
// takes.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

namespace meridian::bench {

/// Allocations through operator new since the program began.
[[nodiscard]] std::size_t allocationCount() noexcept;

/// Bytes allocated and not given back, the most of them at one time since startPeak(), and the start of that count.
[[nodiscard]] std::size_t liveBytes() noexcept;
[[nodiscard]] std::size_t peakBytes() noexcept;
void startPeak() noexcept;

/// While it lives counts allocations, and at its end gives their number per iteration to the benchmark.
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
