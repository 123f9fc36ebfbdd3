// Frame numbers: the exact conversion between a count of frames and the timecode that labels it.
//
// Labels count whole frames a second, 30 at 29.97, so they run slower than the clock. Drop-frame timecode makes up for
// that by leaving labels out, never frames: the first two of each minute (four at 59.94), except in minutes 0, 10, 20,
// 30, 40 and 50 (SMPTE ST 12-1). The conversion is integer arithmetic throughout; only which custom rates count
// as 29.97 and 59.94 is left to the matching of VideoFrameRate, so that there is one rule for that.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian::inline v0_2 {

/// Why a timecode labels no frame. The description says it in a sentence.
enum class TimecodeFault : std::uint8_t {
  rateWithoutTimecode,
  notADropFrameRate,
  negativeComponent,
  minutesOrSecondsAbove59,
  framesBeyondSecond,
  droppedLabel,
  tooLarge,
};

template <>
struct EnumerationTable<TimecodeFault> {
  static constexpr auto rows = std::to_array<EnumerationRow<TimecodeFault>>({
      {TimecodeFault::rateWithoutTimecode, "rateWithoutTimecode",
       "the rate is below half a frame a second, or infinite"},
      {TimecodeFault::notADropFrameRate, "notADropFrameRate", "drop frame is for 29.97 and 59.94 alone"},
      {TimecodeFault::negativeComponent, "negativeComponent", "a component is negative"},
      {TimecodeFault::minutesOrSecondsAbove59, "minutesOrSecondsAbove59", "minutes and seconds end at 59"},
      {TimecodeFault::framesBeyondSecond, "framesBeyondSecond", "a second has fewer frames"},
      {TimecodeFault::droppedLabel, "droppedLabel", "drop frame leaves this label out"},
      {TimecodeFault::tooLarge, "tooLarge", "the frame number is beyond 64 bits"},
  });
};

namespace detail {

/// How timecode counts at a rate.
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
/// Absent for a rate that is negative, infinite or rounds to 0.
[[nodiscard]] constexpr std::optional<std::int64_t> timecodeFramesPerSecond(const VideoFrameRate& rate) noexcept {
  return detail::countingOf(rate).framesPerSecond;
}

/// The labels that drop-frame timecode leaves out in a minute: 2 at 29.97, 4 at 59.94, also for a custom rate that
/// matches one of these (29970029/1000000, which 30000/1001 is read back as); absent for every other rate.
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
  if (!perSecond) return {0, TimecodeFault::rateWithoutTimecode};
  const auto dropped = timecode.isDropFrame ? droppedPerMinute : std::int64_t{0};
  if (!dropped) return {0, TimecodeFault::notADropFrameRate};

  const auto [hours, minutes, seconds, frames, isDropFrame] = timecode;
  if (hours < 0 || minutes < 0 || seconds < 0 || frames < 0) return {0, TimecodeFault::negativeComponent};
  if (minutes > 59 || seconds > 59) return {0, TimecodeFault::minutesOrSecondsAbove59};
  if (frames >= *perSecond) return {0, TimecodeFault::framesBeyondSecond};
  if (frames < *dropped && seconds == 0 && minutes % 10 != 0) return {0, TimecodeFault::droppedLabel};

  // Labels run ahead of frames, so the last labels are beyond the signed range and their frames are not.
  using Count = std::uint64_t;
  const auto hoursInSeconds = checkedProduct<Count>(static_cast<Count>(hours), 3600);
  if (!hoursInSeconds) return {0, TimecodeFault::tooLarge};
  const Count allSeconds = *hoursInSeconds + static_cast<Count>(minutes * 60 + seconds);
  const auto secondsInLabels = checkedProduct<Count>(allSeconds, static_cast<Count>(*perSecond));
  if (allSeconds < *hoursInSeconds || !secondsInLabels) return {0, TimecodeFault::tooLarge};
  const auto labels = checkedSum<Count>(*secondsInLabels, static_cast<Count>(frames));
  if (!labels) return {0, TimecodeFault::tooLarge};
  const Count allMinutes = allSeconds / 60;
  const Count number = *labels - static_cast<Count>(*dropped) * (allMinutes - allMinutes / 10);
  if (number > Count{std::numeric_limits<std::int64_t>::max()}) return {0, TimecodeFault::tooLarge};
  return {static_cast<std::int64_t>(number), std::nullopt};
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

}  // namespace meridian::inline v0_2
