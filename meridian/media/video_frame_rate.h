// The standard video frame rates, and the matching of a rational to one of them.
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

/// The cases of VideoFrameRate. The raw value is the key under which a rate is encoded; its text is VideoFrameRate's
/// `formattedString`.
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

struct VideoFrameRateRow {
  VideoFrameRateKind value;
  std::string_view rawValue;
  /// Frames per second.
  MediaRational rational;
  /// Ten thousand times the rate, as `VideoFrameRate::matching` calculates it; 0 for none. Exact keys on
  /// purpose: 23.976 is the standard rate 24000/1001, and 23.98 is not.
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

/// A video frame rate: one of fourteen standard ones, or any other as a rational. Equal when the cases are and, for
/// custom rates, both terms; so a custom 25/1, which only `custom` makes, is not `pal25p`.
class VideoFrameRate {
 public:
  using Kind = VideoFrameRateKind;

  // clang-format off
  static const VideoFrameRate ntsc24p, p24, pal25p, ntsc30p, p30, p48, p50, ntsc60p, p60, p72, ntsc120p, p120, p300,
      p600;
  // clang-format on

  /// The first case, `ntsc24p`.
  constexpr VideoFrameRate() noexcept = default;

  /// The standard rate that the rational matches, else the rational as a custom rate. Stops the process where
  /// `matching` has no answer.
  explicit constexpr VideoFrameRate(const MediaRational& rawValue) {
    const auto rate = matching(rawValue);
    if (!rate) detail::frameRateOutOfRange(rawValue);
    *this = *rate;
  }

  /// As the constructor; absent when the quotient is not finite (a denominator of 0) or ten thousand times it leaves
  /// the signed 64-bit range. The quotient is calculated in single precision and ten thousand times it truncated, so
  /// that 24000/1001 and 2997/125 are both `ntsc24p`, on purpose.
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

  /// The rational as a custom rate, whatever it is.
  [[nodiscard]] static constexpr VideoFrameRate custom(const MediaRational& rational) noexcept {
    VideoFrameRate rate(Kind::custom);
    rate.customRational_ = rational;
    return rate;
  }

  [[nodiscard]] constexpr Kind kind() const noexcept { return kind_; }

  /// Frames per second.
  [[nodiscard]] constexpr MediaRational rawValue() const noexcept {
    return kind_ == Kind::custom ? customRational_ : tableRow(kind_).rational;
  }

  /// "25 FPS", "29.97 FPS": with two decimals unless the rate is whole.
  [[nodiscard]] MERIDIAN_API std::string formattedString() const;

  friend constexpr bool operator==(const VideoFrameRate&, const VideoFrameRate&) = default;

 private:
  constexpr explicit VideoFrameRate(Kind kind) noexcept : kind_(kind) {}

  Kind kind_ = Kind::ntsc24p;
  /// That of a custom rate; of a standard one always the same.
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

/// The fourteen standard rates, in declaration order.
inline constexpr auto standardVideoFrameRates = std::to_array<VideoFrameRate>(
    {VideoFrameRate::ntsc24p, VideoFrameRate::p24, VideoFrameRate::pal25p, VideoFrameRate::ntsc30p, VideoFrameRate::p30,
     VideoFrameRate::p48, VideoFrameRate::p50, VideoFrameRate::ntsc60p, VideoFrameRate::p60, VideoFrameRate::p72,
     VideoFrameRate::ntsc120p, VideoFrameRate::p120, VideoFrameRate::p300, VideoFrameRate::p600});

/// Describes a number of frames per second together with the exact standard rate that it matches: "23.976 fps =
/// 24000/1001", "25 fps", "12.5 fps, not a standard rate". Says so where it is not a frame rate: not above 0, not
/// finite or too large.
[[nodiscard]] MERIDIAN_API std::string describeFrameRate(double framesPerSecond);

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::VideoFrameRate> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::VideoFrameRate& rate) const noexcept {
    const meridian::MediaRational rational = rate.rawValue();
    return meridian::combinedHash(rate.kind(), rational.numerator, rational.denominator);
  }
};
