/// \file
/// The value types of the C interface and those of the library, in both directions:
///
///     const TimecodeComponents timecode = fromC(MeridianTimecode{1, 2, 3, 4, true});
///     return toC(timecode);
#pragma once

#include <cstddef>
#include <cstdint>

#include "meridian/c/media.h"
#include "meridian/media/rational.h"
#include "meridian/media/rgb_color.h"
#include "meridian/media/size.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_frame_rate.h"

namespace meridian::inline v0_2::c {

constexpr float toC(float value) noexcept { return value; }
constexpr std::int64_t toC(std::int64_t value) noexcept { return value; }

constexpr MeridianSize toC(const Size& size) noexcept { return {size.width, size.height}; }
constexpr Size fromC(MeridianSize size) noexcept { return {size.width, size.height}; }

constexpr MeridianColor toC(RgbColor color) noexcept { return {color.red, color.green, color.blue}; }
constexpr RgbColor fromC(MeridianColor color) noexcept { return {color.red, color.green, color.blue}; }

constexpr MeridianTimecode toC(const TimecodeComponents& timecode) noexcept {
  return {timecode.hours, timecode.minutes, timecode.seconds, timecode.frames, timecode.isDropFrame};
}
constexpr TimecodeComponents fromC(const MeridianTimecode& timecode) noexcept {
  return {timecode.hours, timecode.minutes, timecode.seconds, timecode.frames, timecode.is_drop_frame};
}

constexpr MeridianFrameRate toC(const VideoFrameRate& rate) noexcept {
  const auto [numerator, denominator] = rate.rawValue();
  const bool isCustom = rate.kind() == VideoFrameRateKind::custom;
  return {{numerator, denominator}, isCustom ? MERIDIAN_CUSTOM_FRAME_RATE : static_cast<int>(rate.kind())};
}
constexpr VideoFrameRate fromC(const MeridianFrameRate& rate) noexcept {
  const auto place = static_cast<std::size_t>(rate.standard);
  if (rate.standard >= 0 && place < standardVideoFrameRates.size()) return standardVideoFrameRates[place];
  return VideoFrameRate::custom({rate.rational.numerator, rate.rational.denominator});
}

}  // namespace meridian::inline v0_2::c
