/// \file
/// FFmpeg's ratios as Meridian's, by checked arithmetic.
#pragma once

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/rational.h>
}

#include <cstdint>
#include <optional>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/media/rational.h"

namespace meridian::inline v0_2::libav {

/// Returns the ratio in lowest terms; absent if its denominator is 0.
[[nodiscard]] inline std::optional<MediaRational> rationalOf(const AVRational& ratio) noexcept {
  return inLowestTerms({ratio.num, ratio.den});
}

/// Returns the ratio in lowest terms; absent if it is not above 0, as FFmpeg says that it does not know one.
[[nodiscard]] inline std::optional<MediaRational> positiveRationalOf(const AVRational& ratio) noexcept {
  const auto reduced = rationalOf(ratio);
  return reduced && reduced->numerator > 0 ? reduced : std::nullopt;
}

/// Returns a number of ticks as seconds; absent if FFmpeg does not know it or it leaves 64 bits.
[[nodiscard]] inline std::optional<MediaRational> secondsOf(std::int64_t ticks, const AVRational& timeBase) noexcept {
  if (ticks == AV_NOPTS_VALUE || timeBase.den == 0) return std::nullopt;
  // Reduced first, so that only what does not fit is absent.
  const auto partly = inLowestTerms({ticks, timeBase.den});
  if (!partly) return std::nullopt;
  const auto rest = inLowestTerms({timeBase.num, partly->denominator});
  if (!rest) return std::nullopt;
  const auto numerator = checkedProduct<std::int64_t>(partly->numerator, rest->numerator);
  return numerator ? inLowestTerms({*numerator, rest->denominator}) : std::nullopt;
}

/// Returns a number of ticks as seconds; absent also if it is below 0, as no length of time is.
[[nodiscard]] inline std::optional<MediaRational> lengthOf(std::int64_t ticks, const AVRational& timeBase) noexcept {
  const auto seconds = secondsOf(ticks, timeBase);
  return seconds && seconds->numerator >= 0 ? seconds : std::nullopt;
}

}  // namespace meridian::inline v0_2::libav
