// Frame numbers: the exact conversion between a count of frames and the timecode that labels it.
//
// Labels count whole frames a second, 30 at 29.97, so they run slower than the clock. Drop-frame timecode makes up for
// that by leaving labels out, never frames: the first two of each minute (four at 59.94), except in minutes 0, 10, 20,
// 30, 40 and 50 (SMPTE ST 12-1). All of it is integer arithmetic.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian {

/// Why a timecode labels no frame. The description says it in a sentence.
enum class TimecodeFault : std::uint8_t { rateHasNoFrames, notADropFrameRate, outOfBounds, droppedLabel, tooLarge };

template <>
struct EnumerationTable<TimecodeFault> {
  static constexpr auto rows = std::to_array<EnumerationRow<TimecodeFault>>({
      {TimecodeFault::rateHasNoFrames, "rateHasNoFrames", "the rate is not above half a frame a second"},
      {TimecodeFault::notADropFrameRate, "notADropFrameRate", "only 29.97 and 59.94 have drop-frame timecode"},
      {TimecodeFault::outOfBounds, "outOfBounds",
       "a component is negative, minutes or seconds are above 59, or there are not that many frames in a second"},
      {TimecodeFault::droppedLabel, "droppedLabel",
       "drop-frame timecode leaves out the first labels of every minute that is not a multiple of ten"},
      {TimecodeFault::tooLarge, "tooLarge", "the frame number leaves the signed 64-bit range"},
  });
};

namespace detail {

/// How timecode counts at a rate.
struct TimecodeCounting {
  std::optional<std::int64_t> framesPerSecond;
  std::optional<std::int64_t> droppedPerMinute;
};

constexpr TimecodeCounting calculatedCounting(const MediaRational& rate) noexcept {
  const auto [numerator, denominator] = rate;
  if (numerator < 1 || denominator < 1) return {};
  TimecodeCounting counting;
  const std::int64_t remainder = numerator % denominator;
  const std::int64_t rounded = numerator / denominator + (remainder >= denominator - remainder ? 1 : 0);
  if (rounded > 0) counting.framesPerSecond = rounded;
  const std::int64_t divisor = gcd(numerator, denominator);
  const MediaRational reduced{numerator / divisor, denominator / divisor};
  if (reduced == VideoFrameRate::ntsc30p.rawValue()) counting.droppedPerMinute = 2;
  if (reduced == VideoFrameRate::ntsc60p.rawValue()) counting.droppedPerMinute = 4;
  return counting;
}

/// The countings of the standard rates, calculated once.
inline constexpr auto standardCountings = [] {
  std::array<TimecodeCounting, standardVideoFrameRates.size()> countings;
  for (std::size_t place = 0; place < countings.size(); ++place) {
    countings[place] = calculatedCounting(standardVideoFrameRates[place].rawValue());
  }
  return countings;
}();

constexpr TimecodeCounting countingOf(const VideoFrameRate& rate) noexcept {
  if (rate.kind() == VideoFrameRateKind::custom) return calculatedCounting(rate.rawValue());
  return standardCountings[static_cast<std::size_t>(rate.kind())];
}

}  // namespace detail

/// The frames that timecode counts in a second: the rate rounded to a whole number, halves up (24 for 24000/1001).
/// Absent for a rate that has a term below 1 or rounds to 0.
[[nodiscard]] constexpr std::optional<std::int64_t> timecodeFramesPerSecond(const VideoFrameRate& rate) noexcept {
  return detail::countingOf(rate).framesPerSecond;
}

/// The labels that drop-frame timecode leaves out in a minute: 2 at 30000/1001, 4 at 60000/1001, however the rate is
/// held; absent for every other rate.
[[nodiscard]] constexpr std::optional<std::int64_t> droppedLabelsPerMinute(const VideoFrameRate& rate) noexcept {
  return detail::countingOf(rate).droppedPerMinute;
}

namespace detail {

struct FrameNumberResult {
  std::int64_t frameNumber = 0;
  std::optional<TimecodeFault> fault;
};

constexpr FrameNumberResult readFrameNumber(const TimecodeComponents& timecode, const VideoFrameRate& rate) noexcept {
  const auto [perSecond, droppedPerMinute] = countingOf(rate);
  if (!perSecond) return {0, TimecodeFault::rateHasNoFrames};
  const auto dropped = timecode.isDropFrame ? droppedPerMinute : std::int64_t{0};
  if (!dropped) return {0, TimecodeFault::notADropFrameRate};

  const auto [hours, minutes, seconds, frames, isDropFrame] = timecode;
  if (hours < 0 || minutes < 0 || minutes > 59 || seconds < 0 || seconds > 59 || frames < 0 || frames >= *perSecond) {
    return {0, TimecodeFault::outOfBounds};
  }
  if (frames < *dropped && seconds == 0 && minutes % 10 != 0) return {0, TimecodeFault::droppedLabel};

  const auto hoursInSeconds = checkedProduct(hours, 3600);
  if (!hoursInSeconds) return {0, TimecodeFault::tooLarge};
  const auto allSeconds = checkedSum(*hoursInSeconds, minutes * 60 + seconds);
  if (!allSeconds) return {0, TimecodeFault::tooLarge};
  const auto secondsInFrames = checkedProduct(*allSeconds, *perSecond);
  if (!secondsInFrames) return {0, TimecodeFault::tooLarge};
  const auto labels = checkedSum(*secondsInFrames, frames);
  if (!labels) return {0, TimecodeFault::tooLarge};
  const std::int64_t allMinutes = *allSeconds / 60;
  return {*labels - *dropped * (allMinutes - allMinutes / 10), std::nullopt};
}

}  // namespace detail

/// The number of the frame that the timecode labels, counted from 0 at 00:00:00:00. Hours may go beyond 23. Absent
/// where `timecodeFault` says why.
[[nodiscard]] constexpr std::optional<std::int64_t> frameNumber(const TimecodeComponents& timecode,
                                                                const VideoFrameRate& rate) noexcept {
  const detail::FrameNumberResult read = detail::readFrameNumber(timecode, rate);
  if (read.fault) return std::nullopt;
  return read.frameNumber;
}

/// Why the timecode labels no frame at the rate; absent when it does.
[[nodiscard]] constexpr std::optional<TimecodeFault> timecodeFault(const TimecodeComponents& timecode,
                                                                   const VideoFrameRate& rate) noexcept {
  return detail::readFrameNumber(timecode, rate).fault;
}

/// The timecode of the frame with this number, the inverse of `frameNumber`. Absent for a negative number, for a rate
/// without timecode, and for drop frame at a rate other than 29.97 and 59.94.
[[nodiscard]] constexpr std::optional<TimecodeComponents> timecodeOfFrame(std::int64_t frameNumber,
                                                                          const VideoFrameRate& rate,
                                                                          bool isDropFrame) noexcept {
  const auto [perSecond, dropped] = detail::countingOf(rate);
  if (!perSecond || frameNumber < 0) return std::nullopt;

  if (!isDropFrame) {
    const std::int64_t seconds = frameNumber / *perSecond;
    return TimecodeComponents{seconds / 3600, seconds / 60 % 60, seconds % 60, frameNumber % *perSecond, false};
  }

  if (!dropped) return std::nullopt;
  // Of ten minutes the first is full, and each of the others begins with its dropped labels left out.
  const std::int64_t perFullMinute = *perSecond * 60;
  const std::int64_t perMinute = perFullMinute - *dropped;
  const std::int64_t perTenMinutes = perFullMinute + 9 * perMinute;
  std::int64_t minutes = frameNumber / perTenMinutes * 10;
  std::int64_t label = frameNumber % perTenMinutes;
  if (label >= perFullMinute) {
    minutes += 1 + (label - perFullMinute) / perMinute;
    label = (label - perFullMinute) % perMinute + *dropped;
  }
  return TimecodeComponents{minutes / 60, minutes % 60, label / *perSecond, label % *perSecond, true};
}

}  // namespace meridian
