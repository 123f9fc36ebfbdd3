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

std::optional<MediaRational> recognizedRate(const MediaRational& rate) noexcept {
  const auto reduced = inLowestTerms(rate);
  if (!reduced || reduced->numerator <= 0) return std::nullopt;
  const double given = reduced->rawValue();
  constexpr double greatestRounded = 1000;
  constexpr double tolerance = 0.005;
  if (given > greatestRounded) return reduced;
  const auto distanceTo = [given](const MediaRational& each) { return std::abs(each.rawValue() - given); };
  const MediaRational whole{std::llround(given), 1};
  const MediaRational ntsc{std::llround(given * 1.001) * 1000, 1001};
  const MediaRational& nearest = distanceTo(whole) <= distanceTo(ntsc) ? whole : ntsc;
  return nearest.numerator > 0 && distanceTo(nearest) <= tolerance ? inLowestTerms(nearest) : reduced;
}

std::optional<VideoFrameRate> frameRateMeantBy(double framesPerSecond) {
  if (framesPerSecond == tableRow(FrameRateKind::fps23_98).storedValue) return VideoFrameRate::ntsc24p;
  const auto millionths = MediaRational::fromRawValue(framesPerSecond);
  const auto rate = millionths ? recognizedRate(*millionths) : std::nullopt;
  return rate ? VideoFrameRate::matching(*rate) : std::nullopt;
}

std::string describeFrameRate(double framesPerSecond) {
  if (!(framesPerSecond > 0)) return "not a frame rate: it has to be above 0";
  const auto meant = frameRateMeantBy(framesPerSecond);
  if (!meant) return framesPerSecond < 1 ? "too small for a frame rate" : "too large for a frame rate";
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
