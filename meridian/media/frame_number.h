/// \file
/// Frame numbers: the exact conversion between a number of frames and the timecode that labels the frame. For example:
///
///     constexpr auto label = timecodeOfFrame(1800, VideoFrameRate::ntsc30p, /*isDropFrame=*/true);  // 00:01:00;02
///     frameNumber(*label, VideoFrameRate::ntsc30p)                                                  // 1800
///     frameNumber({0, 1, 0, 0, true}, VideoFrameRate::ntsc30p).error()  // TimecodeErrorCode::droppedLabel
///
/// Labels count whole frames per second, 30 at 29.97, so they run slower than the clock. Drop-frame timecode corrects
/// that by skipping labels, never frames: the first two of each minute (four at 59.94), except in minutes 0, 10, 20,
/// 30, 40 and 50 (SMPTE ST 12-1). All calculations are in integers; only `VideoFrameRate::matching` decides which
/// custom rates count as 29.97 and 59.94.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/expected.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian::inline v0_2 {

/// Why a timecode labels no frame, or a frame number has no timecode.
enum class TimecodeErrorCode : std::uint8_t {
  rateWithoutTimecode,
  notADropFrameRate,
  negativeComponent,
  minutesOrSecondsAbove59,
  framesBeyondSecond,
  droppedLabel,
  tooLarge,
  negativeFrameNumber,
};

template <>
struct EnumerationTable<TimecodeErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<TimecodeErrorCode>>({
      {TimecodeErrorCode::rateWithoutTimecode, "rateWithoutTimecode", "has no meaning at this frame rate",
       "use a finite rate of at least half a frame per second"},
      {TimecodeErrorCode::notADropFrameRate, "notADropFrameRate", "is drop frame, which this frame rate does not have",
       "use 29.97 or 59.94 frames per second, or non-drop timecode"},
      {TimecodeErrorCode::negativeComponent, "negativeComponent", "has a component below 0",
       "use components of 0 or more"},
      {TimecodeErrorCode::minutesOrSecondsAbove59, "minutesOrSecondsAbove59", "has minutes or seconds above 59",
       "use minutes and seconds from 0 to 59"},
      {TimecodeErrorCode::framesBeyondSecond, "framesBeyondSecond", "has more frames than a second at this frame rate",
       "count frames from 0 to one below the rounded rate"},
      {TimecodeErrorCode::droppedLabel, "droppedLabel", "is a label that drop-frame timecode skips",
       "start such a minute at frame 02, or 04 at 59.94"},
      {TimecodeErrorCode::tooLarge, "tooLarge", "is beyond the last frame number, 2^63 - 1", "use fewer hours"},
      {TimecodeErrorCode::negativeFrameNumber, "negativeFrameNumber", "is a frame number below 0",
       "count frames from 0"},
  });
};

/// The code with the timecode as its place.
using TimecodeError = Error<TimecodeErrorCode>;

namespace detail {

/// How timecode counts at a frame rate.
struct TimecodeCounting {
  std::optional<std::int64_t> framesPerSecond;
  std::optional<std::int64_t> droppedPerMinute;
};

constexpr TimecodeCounting calculatedCounting(const MediaRational& rate) noexcept {
  auto [numerator, denominator] = rate;
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  if (numerator < 0 && denominator < 0 && numerator != least && denominator != least) {
    numerator = -numerator;
    denominator = -denominator;
  }
  if (numerator < 1 || denominator < 1) return {};
  TimecodeCounting counting;
  const std::int64_t remainder = numerator % denominator;
  const std::int64_t rounded = numerator / denominator + (remainder >= denominator - remainder ? 1 : 0);
  if (rounded > 0) counting.framesPerSecond = rounded;
  if (const auto matched = VideoFrameRate::matching(rate)) {
    if (*matched == VideoFrameRate::ntsc30p) counting.droppedPerMinute = 2;
    if (*matched == VideoFrameRate::ntsc60p) counting.droppedPerMinute = 4;
  }
  return counting;
}

/// Countings of the standard rates, indexed by kind.
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

/// Returns how many frames timecode counts in a second: the rate rounded to a whole number, halves up (24 for
/// 24000/1001). Absent for a rate that is negative, infinite or rounds to 0.
[[nodiscard]] constexpr std::optional<std::int64_t> timecodeFramesPerSecond(const VideoFrameRate& rate) noexcept {
  return detail::countingOf(rate).framesPerSecond;
}

/// Returns how many labels drop-frame timecode skips in a minute: 2 at 29.97, 4 at 59.94, also for a custom rate that
/// matches one of these (29970029/1000000, as a stored 30000/1001 is read back). Absent for every other rate.
[[nodiscard]] constexpr std::optional<std::int64_t> droppedLabelsPerMinute(const VideoFrameRate& rate) noexcept {
  return detail::countingOf(rate).droppedPerMinute;
}

/// Returns the number of the frame that the timecode labels, counted from 0 at 00:00:00:00. Hours may exceed 23.
/// Returns an error for a label that does not exist at the rate: its code alone, so that nothing is allocated.
[[nodiscard]] constexpr Expected<std::int64_t, TimecodeErrorCode> frameNumber(const TimecodeComponents& timecode,
                                                                              const VideoFrameRate& rate) noexcept {
  using enum TimecodeErrorCode;
  const auto [perSecond, droppedPerMinute] = detail::countingOf(rate);
  if (!perSecond) return Unexpected(rateWithoutTimecode);
  const auto dropped = timecode.isDropFrame ? droppedPerMinute : std::int64_t{0};
  if (!dropped) return Unexpected(notADropFrameRate);

  const auto [hours, minutes, seconds, frames, isDropFrame] = timecode;
  if (hours < 0 || minutes < 0 || seconds < 0 || frames < 0) return Unexpected(negativeComponent);
  if (minutes > 59 || seconds > 59) return Unexpected(minutesOrSecondsAbove59);
  if (frames >= *perSecond) return Unexpected(framesBeyondSecond);
  if (frames < *dropped && seconds == 0 && minutes % 10 != 0) return Unexpected(droppedLabel);

  // Unsigned, since labels run ahead of frames: the last labels leave the signed range, and their frames do not.
  using Count = std::uint64_t;
  const auto hoursInSeconds = checkedProduct<Count>(static_cast<Count>(hours), 3600);
  if (!hoursInSeconds) return Unexpected(tooLarge);
  const auto allSeconds = checkedSum<Count>(*hoursInSeconds, static_cast<Count>(minutes * 60 + seconds));
  if (!allSeconds) return Unexpected(tooLarge);
  const auto secondsInLabels = checkedProduct<Count>(*allSeconds, static_cast<Count>(*perSecond));
  if (!secondsInLabels) return Unexpected(tooLarge);
  const auto labels = checkedSum<Count>(*secondsInLabels, static_cast<Count>(frames));
  if (!labels) return Unexpected(tooLarge);
  const Count allMinutes = *allSeconds / 60;
  const Count number = *labels - static_cast<Count>(*dropped) * (allMinutes - allMinutes / 10);
  if (number > Count{std::numeric_limits<std::int64_t>::max()}) return Unexpected(tooLarge);
  return static_cast<std::int64_t>(number);
}

/// Returns the timecode of the frame with this number; the inverse of `frameNumber`. Returns an error for a negative
/// number, for a rate without timecode, and for drop frame at a rate other than 29.97 and 59.94.
[[nodiscard]] constexpr Expected<TimecodeComponents, TimecodeErrorCode> timecodeOfFrame(std::int64_t frameNumber,
                                                                                        const VideoFrameRate& rate,
                                                                                        bool isDropFrame) noexcept {
  using enum TimecodeErrorCode;
  const auto [perSecond, dropped] = detail::countingOf(rate);
  if (!perSecond) return Unexpected(rateWithoutTimecode);
  if (frameNumber < 0) return Unexpected(negativeFrameNumber);

  if (!isDropFrame) {
    const std::int64_t seconds = frameNumber / *perSecond;
    return TimecodeComponents{seconds / 3600, seconds / 60 % 60, seconds % 60, frameNumber % *perSecond, false};
  }

  if (!dropped) return Unexpected(notADropFrameRate);
  // Of ten minutes the first has all its labels, and each of the others skips its first ones.
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

}  // namespace meridian::inline v0_2
