#include "meridian/media/video_frame_rate.h"

#include <cmath>

#include "meridian/base/numbers.h"
#include "meridian/base/precondition.h"
#include "meridian/media/frame_rate.h"

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

std::optional<VideoFrameRate> standardRateDisplayedAlike(const VideoFrameRate& rate) {
  if (rate.kind() != VideoFrameRateKind::custom) return std::nullopt;
  const std::string displayed = rate.formattedString();
  for (const VideoFrameRate& standard : standardVideoFrameRates) {
    if (standard.formattedString() == displayed) return standard;
  }
  return std::nullopt;
}

std::string describeFrameRate(double framesPerSecond) {
  if (!(framesPerSecond > 0)) return "not a frame rate: it has to be above 0";
  const auto rational = MediaRational::fromRawValue(framesPerSecond);
  const auto rate = rational ? VideoFrameRate::matching(*rational) : std::nullopt;
  if (!rate) return "too large for a frame rate";
  const std::string text = plainDecimalText(framesPerSecond) + " fps";
  const auto ratioOf = [](const VideoFrameRate& each) {
    return std::to_string(each.rawValue().numerator) + "/" + std::to_string(each.rawValue().denominator);
  };
  if (framesPerSecond == tableRow(FrameRateKind::fps23_98).storedValue) {
    return text + ", the stored form of " + ratioOf(VideoFrameRate::ntsc24p);
  }
  if (const auto alike = standardRateDisplayedAlike(*rate)) {
    return text + ", not a standard rate; " + std::string(rawValue(alike->kind())) + " looks the same but is " +
           ratioOf(*alike);
  }
  if (rate->kind() == VideoFrameRateKind::custom) return text + ", not a standard rate";
  return text + (rate->rawValue().denominator == 1 ? "" : " = " + ratioOf(*rate));
}

}  // namespace meridian::inline v0_2
