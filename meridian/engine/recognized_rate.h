/// \file
/// Recognises the exact frame rate that a rounded one stands for. For example:
///
///     recognizedRate({2398, 100})  // 24000/1001
///     recognizedRate({25, 2})      // 25/2: 12.5 is not near any
#pragma once

#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/media/rational.h"

namespace meridian::inline v0_2 {

/// Returns the ratio in lowest terms with a positive denominator; absent if its denominator is 0 or a term cannot be
/// negated.
[[nodiscard]] constexpr std::optional<MediaRational> inLowestTerms(const MediaRational& ratio) noexcept {
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  if (ratio.denominator == 0 || ratio.numerator == least || ratio.denominator == least) return std::nullopt;
  const std::int64_t divisor = std::gcd(ratio.numerator, ratio.denominator) * (ratio.denominator < 0 ? -1 : 1);
  return MediaRational{ratio.numerator / divisor, ratio.denominator / divisor};
}

/// Returns the rate N or N * 1000/1001, for a whole number N, that lies within 0.005 of the given one; N where both do.
/// Returns any other rate in lowest terms. Absent for a rate that is not above 0 or not finite.
[[nodiscard]] constexpr std::optional<MediaRational> recognizedRate(const MediaRational& rate) noexcept {
  const auto reduced = inLowestTerms(rate);
  if (!reduced || reduced->numerator <= 0) return std::nullopt;
  constexpr double tolerance = 0.005;
  const double given = reduced->rawValue();
  const auto near = [given](double candidate) {
    return candidate - given < tolerance && given - candidate < tolerance;
  };
  const auto whole = truncatedInteger(given + 0.5);
  if (whole && *whole > 0 && near(static_cast<double>(*whole))) return MediaRational{*whole, 1};
  const auto nominal = truncatedInteger(given * 1.001 + 0.5);
  const auto numerator = nominal ? checkedProduct<std::int64_t>(*nominal, 1000) : std::nullopt;
  if (!numerator || *numerator <= 0) return reduced;
  const auto ntsc = inLowestTerms({*numerator, 1001});
  return ntsc && near(ntsc->rawValue()) ? ntsc : reduced;
}

}  // namespace meridian::inline v0_2
