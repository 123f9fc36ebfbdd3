/// \file
/// The standard video frame rates, and which of them a ratio matches. For example:
///
///     VideoFrameRate({30000, 1001}) == VideoFrameRate::ntsc30p    // true
///     VideoFrameRate({30000, 1001}).formattedString()             // "29.97 FPS"
///     VideoFrameRate::matching({25, 0})                           // std::nullopt
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "meridian/base/combined_hash.h"
#include "meridian/base/enumeration.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/export.h"
#include "meridian/media/rational.h"

namespace meridian::inline v0_2 {

/// The cases of VideoFrameRate. The raw value is the key of an encoded rate; `VideoFrameRate::formattedString` gives
/// the display text.
enum class VideoFrameRateKind : std::uint8_t {
  ntsc24p,
  p24,
  pal25p,
  ntsc30p,
  p30,
  p48,
  p50,
  ntsc60p,
  p60,
  p72,
  ntsc120p,
  p120,
  p300,
  p600,
  custom,
};

/// A row of the table of video frame rates.
struct VideoFrameRateRow {
  VideoFrameRateKind value;
  std::string_view rawValue;
  /// Frames per second.
  MediaRational rational;
  /// Ten thousand times the rate, as `VideoFrameRate::matching` calculates it; unused for `custom`. Matched
  /// exactly: 23.976 is the standard rate 24000/1001, and 23.98 is not.
  std::int64_t matchKey;
  std::string_view description = {};
};

template <>
struct EnumerationTable<VideoFrameRateKind> {
  static constexpr auto rows = std::to_array<VideoFrameRateRow>({
      {VideoFrameRateKind::ntsc24p, "ntsc24p", {24000, 1001}, 239760},
      {VideoFrameRateKind::p24, "p24", {24, 1}, 240000},
      {VideoFrameRateKind::pal25p, "pal25p", {25, 1}, 250000},
      {VideoFrameRateKind::ntsc30p, "ntsc30p", {30000, 1001}, 299700},
      {VideoFrameRateKind::p30, "p30", {30, 1}, 300000},
      {VideoFrameRateKind::p48, "p48", {48, 1}, 480000},
      {VideoFrameRateKind::p50, "p50", {50, 1}, 500000},
      {VideoFrameRateKind::ntsc60p, "ntsc60p", {60000, 1001}, 599400},
      {VideoFrameRateKind::p60, "p60", {60, 1}, 600000},
      {VideoFrameRateKind::p72, "p72", {72, 1}, 720000},
      {VideoFrameRateKind::ntsc120p, "ntsc120p", {120000, 1001}, 1198801},
      {VideoFrameRateKind::p120, "p120", {120, 1}, 1200000},
      {VideoFrameRateKind::p300, "p300", {300, 1}, 3000000},
      {VideoFrameRateKind::p600, "p600", {600, 1}, 6000000},
      {VideoFrameRateKind::custom, "custom", {}, 0},
  });
};

namespace detail {

[[noreturn]] MERIDIAN_API void frameRateOutOfRange(const MediaRational& rational);

}  // namespace detail

/// A video frame rate: one of fourteen standard ones, or any other as a ratio. Two are equal if the cases are and, for
/// `custom`, both terms; so `custom({25, 1})` does not equal `pal25p`.
class VideoFrameRate {
 public:
  using Kind = VideoFrameRateKind;

  // clang-format off
  static const VideoFrameRate ntsc24p, p24, pal25p, ntsc30p, p30, p48, p50, ntsc60p, p60, p72, ntsc120p, p120, p300,
      p600;
  // clang-format on

  /// Makes the first case, `ntsc24p`.
  constexpr VideoFrameRate() noexcept = default;

  /// Makes what `matching` returns; terminates the process where that is absent.
  explicit constexpr VideoFrameRate(const MediaRational& rawValue) {
    const auto rate = matching(rawValue);
    if (!rate) detail::frameRateOutOfRange(rawValue);
    *this = *rate;
  }

  /// Returns the standard rate that the ratio matches, else the ratio as a custom rate. Compares ten thousand times the
  /// quotient, calculated in single precision and truncated, so that 24000/1001 and 2997/125 are both `ntsc24p`. Absent
  /// for a denominator of 0, and if ten thousand times the quotient leaves the signed 64-bit range.
  [[nodiscard]] static constexpr std::optional<VideoFrameRate> matching(const MediaRational& rawValue) noexcept {
    if (rawValue.denominator == 0) return std::nullopt;
    const float quotient = static_cast<float>(rawValue.numerator) / static_cast<float>(rawValue.denominator);
    const auto key = truncatedInteger(static_cast<double>(quotient * 10000.0F));
    if (!key) return std::nullopt;
    for (const VideoFrameRateRow& row : EnumerationTable<Kind>::rows) {
      if (row.matchKey == *key && row.value != Kind::custom) return VideoFrameRate(row.value);
    }
    return custom(rawValue);
  }

  /// Returns the ratio as a custom rate without matching it.
  [[nodiscard]] static constexpr VideoFrameRate custom(const MediaRational& rational) noexcept {
    VideoFrameRate rate(Kind::custom);
    rate.customRational_ = rational;
    return rate;
  }

  [[nodiscard]] constexpr Kind kind() const noexcept { return kind_; }

  /// Returns the frames per second.
  [[nodiscard]] constexpr MediaRational rawValue() const noexcept {
    return kind_ == Kind::custom ? customRational_ : tableRow(kind_).rational;
  }

  /// Returns the rate with two decimals unless it is whole: "25 FPS", "29.97 FPS".
  [[nodiscard]] MERIDIAN_API std::string formattedString() const;

  friend constexpr bool operator==(const VideoFrameRate&, const VideoFrameRate&) = default;

 private:
  constexpr explicit VideoFrameRate(Kind kind) noexcept : kind_(kind) {}

  Kind kind_ = Kind::ntsc24p;
  /// The ratio of a custom rate; the default for a standard one, so that comparing members works.
  MediaRational customRational_;
};

inline constexpr VideoFrameRate VideoFrameRate::ntsc24p{Kind::ntsc24p};
inline constexpr VideoFrameRate VideoFrameRate::p24{Kind::p24};
inline constexpr VideoFrameRate VideoFrameRate::pal25p{Kind::pal25p};
inline constexpr VideoFrameRate VideoFrameRate::ntsc30p{Kind::ntsc30p};
inline constexpr VideoFrameRate VideoFrameRate::p30{Kind::p30};
inline constexpr VideoFrameRate VideoFrameRate::p48{Kind::p48};
inline constexpr VideoFrameRate VideoFrameRate::p50{Kind::p50};
inline constexpr VideoFrameRate VideoFrameRate::ntsc60p{Kind::ntsc60p};
inline constexpr VideoFrameRate VideoFrameRate::p60{Kind::p60};
inline constexpr VideoFrameRate VideoFrameRate::p72{Kind::p72};
inline constexpr VideoFrameRate VideoFrameRate::ntsc120p{Kind::ntsc120p};
inline constexpr VideoFrameRate VideoFrameRate::p120{Kind::p120};
inline constexpr VideoFrameRate VideoFrameRate::p300{Kind::p300};
inline constexpr VideoFrameRate VideoFrameRate::p600{Kind::p600};

/// Lists the fourteen standard rates in declaration order.
inline constexpr auto standardVideoFrameRates = std::to_array<VideoFrameRate>(
    {VideoFrameRate::ntsc24p, VideoFrameRate::p24, VideoFrameRate::pal25p, VideoFrameRate::ntsc30p, VideoFrameRate::p30,
     VideoFrameRate::p48, VideoFrameRate::p50, VideoFrameRate::ntsc60p, VideoFrameRate::p60, VideoFrameRate::p72,
     VideoFrameRate::ntsc120p, VideoFrameRate::p120, VideoFrameRate::p300, VideoFrameRate::p600});

/// Returns the first standard rate that is displayed like this custom rate but differs from it: 24000/1001 for 23.98;
/// absent for a standard rate, and if no standard rate looks alike.
[[nodiscard]] MERIDIAN_API std::optional<VideoFrameRate> standardRateDisplayedAlike(const VideoFrameRate& rate);

/// Returns the exact rate that a rounded one stands for, in lowest terms: the whole number N or N * 1000/1001,
/// whichever is nearer, if it is at most 0.005 away, so that 2398/100 is 24000/1001; any other rate as it is. Rates
/// above 1000 are never rounded, as N * 1000/1001 is then as far from N as from other whole numbers. Absent for a rate
/// that is not above 0 or not finite.
[[nodiscard]] MERIDIAN_API std::optional<MediaRational> recognizedRate(const MediaRational& rate) noexcept;

/// Returns the exact rate that is meant by a number of frames per second as people and stored settings write it: that
/// of `recognizedRate` for its millionths, so that 12.5 is 25/2; also 24000/1001 for 23.967, the stored form of 23.98.
/// Absent for a number below a millionth, not finite or too large.
[[nodiscard]] MERIDIAN_API std::optional<VideoFrameRate> frameRateMeantBy(double framesPerSecond);

/// Describes a number of frames per second together with the exact rate that is meant by it: "23.976 fps =
/// 24000/1001", "25 fps", "23.98 fps, meaning 24000/1001", "12.5 fps, not a standard rate". Says that 23.967 is the
/// stored form of 24000/1001. Says so where it is not a frame rate: not above 0, below a
/// millionth, not finite or too large.
[[nodiscard]] MERIDIAN_API std::string describeFrameRate(double framesPerSecond);

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::VideoFrameRate> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::VideoFrameRate& rate) const noexcept {
    const meridian::MediaRational rational = rate.rawValue();
    return meridian::combinedHash(rate.kind(), rational.numerator, rational.denominator);
  }
};
