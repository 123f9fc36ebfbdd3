#include "meridian/media/video_frame_rate.h"

#include <cmath>

#include "meridian/base/integer_arithmetic.h"
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

std::optional<VideoFrameRate> frameRateMeantBy(double framesPerSecond) {
  const auto rational = framesPerSecond > 0 ? MediaRational::fromRawValue(framesPerSecond) : std::nullopt;
  const auto rate = rational ? VideoFrameRate::matching(*rational) : std::nullopt;
  if (!rate || rate->kind() != VideoFrameRateKind::custom) return rate;
  if (framesPerSecond == tableRow(FrameRateKind::fps23_98).storedValue) return VideoFrameRate::ntsc24p;
  const auto distanceTo = [framesPerSecond](const MediaRational& each) {
    return std::abs(each.rawValue() - framesPerSecond);
  };
  // From 1001 on, N * 1000/1001 is as far from N as the next whole number.
  if (framesPerSecond <= 1000) {
    const MediaRational whole{std::llround(framesPerSecond), 1};
    const MediaRational reduced{std::llround(framesPerSecond * 1001 / 1000) * 1000, 1001};
    const MediaRational& nearest = distanceTo(whole) <= distanceTo(reduced) ? whole : reduced;
    constexpr double tolerance = 0.005;
    if (nearest.numerator > 0 && distanceTo(nearest) <= tolerance) return VideoFrameRate::matching(nearest);
  }
  const std::int64_t divisor = gcd(rational->numerator, rational->denominator);
  return VideoFrameRate::custom({rational->numerator / divisor, rational->denominator / divisor});
}

std::string describeFrameRate(double framesPerSecond) {
  if (!(framesPerSecond > 0)) return "not a frame rate: it has to be above 0";
  const auto meant = frameRateMeantBy(framesPerSecond);
  if (!meant) return "too large for a frame rate";
  const std::string text = plainDecimalText(framesPerSecond) + " fps";
  const MediaRational rational = meant->rawValue();
  const bool isWhole = rational.denominator == 1;
  const std::string ratio =
      std::to_string(rational.numerator) + (isWhole ? "" : "/" + std::to_string(rational.denominator));
  if (framesPerSecond == tableRow(FrameRateKind::fps23_98).storedValue) return text + ", the stored form of " + ratio;
  const auto exact = VideoFrameRate::matching(*MediaRational::fromRawValue(framesPerSecond));
  if (exact->kind() != VideoFrameRateKind::custom) return text + (isWhole ? "" : " = " + ratio);
  constexpr double millionth = 1e-6;
  if (std::abs(rational.rawValue() - framesPerSecond) > millionth) return text + ", meaning " + ratio;
  return text + ", not a standard rate";
}

}  // namespace meridian::inline v0_2
