/// \file
/// How fast a transcode goes, and how long it will still take. For example:
///
///     TranscodePace pace(120.0, 3000);
///     report(pace.at(750, 30.0, bytes));  // portion 0.25
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "meridian/engine/transcode.h"

namespace meridian::inline v0_2 {

/// Measures from its construction on.
class TranscodePace {
 public:
  using Clock = std::chrono::steady_clock;

  /// The seconds and frames that the output will have, as far as they are known.
  TranscodePace(std::optional<double> seconds, std::optional<std::int64_t> frames)
      : seconds_(seconds), frames_(frames) {}

  [[nodiscard]] Clock::time_point start() const noexcept { return start_; }

  /// Returns how far the transcode is with this much of the output written.
  [[nodiscard]] TranscodeProgress at(std::int64_t frame, double seconds, std::uint64_t bytes) const {
    TranscodeProgress progress{
        .portion = 0, .frame = frame, .frames = frames_, .seconds = seconds, .secondsLeft = {}, .bytes = bytes};
    constexpr double beforeTheEnd = 0.9999;
    if (seconds_ && *seconds_ > 0) progress.portion = std::min(seconds / *seconds_, beforeTheEnd);
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    if (elapsed <= 0) return progress;
    progress.framesPerSecond = static_cast<double>(frame) / elapsed;
    progress.speed = seconds / elapsed;
    if (progress.speed > 0 && seconds_) progress.secondsLeft = std::max(*seconds_ - seconds, 0.0) / progress.speed;
    return progress;
  }

  /// Returns the last progress, of a file that has its name.
  [[nodiscard]] TranscodeProgress complete(std::int64_t frame, double seconds, std::uint64_t bytes) const {
    TranscodeProgress progress = at(frame, seconds, bytes);
    progress.portion = 1;
    progress.frames = frame > 0 ? std::optional(frame) : frames_;
    progress.secondsLeft = 0;
    return progress;
  }

 private:
  std::optional<double> seconds_;
  std::optional<std::int64_t> frames_;
  Clock::time_point start_ = Clock::now();
};

}  // namespace meridian::inline v0_2
