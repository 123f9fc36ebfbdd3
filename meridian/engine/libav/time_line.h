/// \file
/// The time line that all streams of a transcode share. For example:
///
///     toTimeLine(packet.pts, stream.time_base);   // ticks from the start of the stream
///     timeLineOf(MediaRational{1001, 24000});     // 29429400
#pragma once

extern "C" {
#include <libavutil/mathematics.h>
#include <libavutil/rational.h>
}

#include <cstdint>

#include "meridian/media/rational.h"

namespace meridian::inline v0_2::libav {

/// A time in ticks of 1/705,600,000 s, which the frames of all standard rates, also those times 1000/1001, and the
/// samples of all standard sample rates are a whole number of. 64 bits hold 400 years.
using Ticks = std::int64_t;

inline constexpr AVRational timeLine{1, 705'600'000};

/// How often something was noticed, and about when first.
struct Occurrences {
  std::int64_t count = 0;
  Ticks first = 0;

  void add(std::int64_t more, Ticks time) noexcept {
    if (count == 0) first = time;
    count += more;
  }
};

/// Returns the nearest tick to a time in another base.
[[nodiscard]] inline Ticks toTimeLine(std::int64_t time, const AVRational& base) noexcept {
  return av_rescale_q(time, base, timeLine);
}

/// Returns the nearest time in another base to a tick.
[[nodiscard]] inline std::int64_t fromTimeLine(Ticks ticks, const AVRational& base) noexcept {
  return av_rescale_q(ticks, timeLine, base);
}

/// Returns the nearest tick to a number of seconds, whose denominator is not 0.
[[nodiscard]] inline Ticks timeLineOf(const MediaRational& seconds) noexcept {
  return av_rescale(seconds.numerator, timeLine.den, seconds.denominator);
}

/// Returns the ticks as seconds.
[[nodiscard]] constexpr double secondsOfTicks(Ticks ticks) noexcept {
  return static_cast<double>(ticks) / timeLine.den;
}

}  // namespace meridian::inline v0_2::libav
