/// \file
/// Collects the stretches of a clip that last at least a while. For example:
///
///     IntervalList black(2 * Ticks{timeLine.den});
///     black.add(start, end);   // kept if it lasts 2 s or more
#pragma once

#include <utility>
#include <vector>

#include "meridian/engine/deep_analysis.h"
#include "meridian/engine/libav/time_line.h"

namespace meridian::inline v0_2::libav {

class IntervalList {
 public:
  explicit IntervalList(Ticks least) noexcept : least_(least) {}

  void add(Ticks start, Ticks end) {
    if (end - start >= least_) intervals_.push_back({secondsOfTicks(start), secondsOfTicks(end)});
  }

  [[nodiscard]] std::vector<MediaInterval> take() noexcept { return std::exchange(intervals_, {}); }

 private:
  Ticks least_;
  std::vector<MediaInterval> intervals_;
};

}  // namespace meridian::inline v0_2::libav
