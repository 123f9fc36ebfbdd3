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

}  // namespace meridian::inline v0_2
