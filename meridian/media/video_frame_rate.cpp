#include "meridian/media/video_frame_rate.h"

#include <cmath>

#include "meridian/base/numbers.h"
#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {

namespace detail {

void frameRateOutOfRange(const MediaRational& rational) {
  preconditionFailed("VideoFrameRate of " + std::to_string(rational.numerator) + "/" +
                     std::to_string(rational.denominator) +
                     ": ten thousand times the rate is not finite, or outside the signed 64-bit range");
}

}  // namespace detail

std::string VideoFrameRate::formattedString() const {
  const double rate = rawValue().rawValue();
  return fixedDecimalText(rate, std::fmod(rate, 1.0) == 0 ? 0 : 2) + " FPS";
}

std::string describeFrameRate(double framesPerSecond) {
  if (!(framesPerSecond > 0)) return "not a frame rate: it has to be above 0";
  const auto rational = MediaRational::fromRawValue(framesPerSecond);
  const auto rate = rational ? VideoFrameRate::matching(*rational) : std::nullopt;
  if (!rate) return "too large for a frame rate";
  const std::string text = plainDecimalText(framesPerSecond) + " fps";
  if (rate->kind() == VideoFrameRateKind::custom) return text + ", not a standard rate";
  const auto [numerator, denominator] = rate->rawValue();
  return text + (denominator == 1 ? "" : " = " + std::to_string(numerator) + "/" + std::to_string(denominator));
}

}  // namespace meridian::inline v0_2
