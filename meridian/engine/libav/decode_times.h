/// \file
/// Finds when packets of images are decoded, where the container states only when they are shown. For example, of
/// images shown at 0, 3, 1, 2, of which one is decoded ahead:
///
///     DecodeTimes times(1, 1);  // decoded at -1, 0, 1, 2
#pragma once

#include <cstdint>
#include <functional>
#include <queue>
#include <vector>

namespace meridian::inline v0_2::libav {

/// Takes the times of display of all packets in the order of decoding.
class DecodeTimes {
 public:
  /// `delay` is how many images are decoded before the first is shown, `duration` how long an image is shown, in the
  /// unit of the times.
  DecodeTimes(int delay, std::int64_t duration) : delay_(delay), duration_(duration) {}

  /// Returns when the packet is decoded: when the image is shown that comes `delay` images earlier in the order of
  /// display. Every image that is shown before that one is decoded by then.
  [[nodiscard]] std::int64_t next(std::int64_t shown) {
    if (count_ == 0) first_ = shown;
    shown_.push(shown);
    if (count_ < delay_) return first_ - (delay_ - count_++) * duration_;
    const std::int64_t time = shown_.top();
    shown_.pop();
    return time;
  }

 private:
  int delay_;
  std::int64_t duration_;
  std::int64_t first_ = 0;
  int count_ = 0;
  std::priority_queue<std::int64_t, std::vector<std::int64_t>, std::greater<>> shown_;
};

}  // namespace meridian::inline v0_2::libav
