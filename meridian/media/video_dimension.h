/// \file
/// The output-size choice that conversion settings offer. For example:
///
///     VideoDimension::fromStored(VideoSizingKind::pixels, {1280, 720})  // VideoDimension::sevenTwentyP
///     VideoDimension::sevenTwentyP.description()                        // "HD (1280 x 720)"
///     VideoDimension::scaled(0.9).description()                         // "Custom: 90.0%"
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/combined_hash.h"
#include "meridian/base/enumeration.h"
#include "meridian/export.h"
#include "meridian/media/conversion_codec_type.h"
#include "meridian/media/size.h"

namespace meridian::inline v0_2 {

/// The cases of VideoDimension. The raw value is the name of the case.
enum class VideoDimensionKind : std::uint8_t {
  custom,
  scaled,
  match,
  half,
  quarter,
  eighth,
  sixteenth,
  twoTwentyP,
  twoSeventyP,
  fourEightyP,
  fiveFortyP,
  sevenTwentyP,
  tenEightyP,
  fourK,
};

/// What the two numbers of a stored size mean.
enum class VideoSizingKind : std::uint8_t {
  /// The source's size; both numbers are 0.
  match,
  /// A factor of the source's size; both numbers are the same.
  scale,
  /// Width and height in pixels.
  pixels,
};

/// A row of the table of output sizes.
struct VideoDimensionRow {
  VideoDimensionKind value;
  std::string_view rawValue;
  VideoSizingKind sizing;
  Size size;
  std::string_view description;
};

template <>
struct EnumerationTable<VideoDimensionKind> {
  static constexpr auto rows = std::to_array<VideoDimensionRow>({
      {VideoDimensionKind::custom, "custom", VideoSizingKind::pixels, {}, "Custom Dimensions"},
      {VideoDimensionKind::scaled, "scaled", VideoSizingKind::scale, {}, "Custom Scale"},
      {VideoDimensionKind::match, "match", VideoSizingKind::match, {0, 0}, "Match"},
      {VideoDimensionKind::half, "half", VideoSizingKind::scale, {0.5, 0.5}, "Half"},
      {VideoDimensionKind::quarter, "quarter", VideoSizingKind::scale, {0.25, 0.25}, "Quarter"},
      {VideoDimensionKind::eighth, "eighth", VideoSizingKind::scale, {0.125, 0.125}, "Eighth"},
      {VideoDimensionKind::sixteenth, "sixteenth", VideoSizingKind::scale, {0.0625, 0.0625}, "Sixteenth"},
      // A height of 220, and a text without blanks: stored settings and menus have them.
      {VideoDimensionKind::twoTwentyP, "twoTwentyP", VideoSizingKind::pixels, {320, 220}, "QVGA (320x220)"},
      {VideoDimensionKind::twoSeventyP, "twoSeventyP", VideoSizingKind::pixels, {480, 270}, "270p (480 x 270)"},
      {VideoDimensionKind::fourEightyP, "fourEightyP", VideoSizingKind::pixels, {640, 480}, "VGA (640 x 480)"},
      {VideoDimensionKind::fiveFortyP, "fiveFortyP", VideoSizingKind::pixels, {960, 540}, "qHD (960 x 540)"},
      {VideoDimensionKind::sevenTwentyP, "sevenTwentyP", VideoSizingKind::pixels, {1280, 720}, "HD (1280 x 720)"},
      {VideoDimensionKind::tenEightyP, "tenEightyP", VideoSizingKind::pixels, {1920, 1080}, "Full HD (1920 x 1080)"},
      {VideoDimensionKind::fourK, "fourK", VideoSizingKind::pixels, {3840, 2160}, "4K UHD (3840 x 2160)"},
  });
};

/// The output-size choice of conversion settings: the source's size, a fixed or custom scale of it, one of seven
/// standard frame sizes, or a custom one. Two are equal if the cases are and, for `custom` and `scaled`, the numbers.
class VideoDimension {
 public:
  using Kind = VideoDimensionKind;

  // clang-format off
  static const VideoDimension match, half, quarter, eighth, sixteenth, twoTwentyP, twoSeventyP, fourEightyP, fiveFortyP,
      sevenTwentyP, tenEightyP, fourK;
  // clang-format on

  static constexpr double customScaleDefaultValue = 0.9;

  /// Makes `match`, the source's size.
  constexpr VideoDimension() noexcept = default;

  /// Returns a custom size in pixels; 0 if none is entered yet.
  [[nodiscard]] static constexpr VideoDimension custom(double width, double height) noexcept {
    return {Kind::custom, {width, height}};
  }
  /// Returns a custom scale; 1 is the source's size, 0 means that none is entered yet.
  [[nodiscard]] static constexpr VideoDimension scaled(double factor) noexcept {
    return {Kind::scaled, {factor, factor}};
  }

  /// Returns the choice for a stored size: the case of exactly these numbers, else `custom` for two numbers above 0 and
  /// `scaled` for one factor above 0. Absent if the numbers do not fit their kind: not finite, not above 0, two
  /// different factors, or other than 0 for `VideoSizingKind::match`.
  [[nodiscard]] static constexpr std::optional<VideoDimension> fromStored(VideoSizingKind sizing,
                                                                          const Size& size) noexcept;

  [[nodiscard]] constexpr Kind kind() const noexcept { return kind_; }

  /// Returns the size in pixels; for a scale, the factor in both members, and for `match` 0 x 0.
  [[nodiscard]] constexpr Size size() const noexcept { return size_; }
  /// Returns what the numbers of `size` mean.
  [[nodiscard]] constexpr VideoSizingKind sizing() const noexcept { return tableRow(kind_).sizing; }
  /// Returns the size in pixels of a preview: 1920 x 1080 for every scale option.
  [[nodiscard]] constexpr Size previewSize() const noexcept { return isScaleOption() ? Size{1920, 1080} : size_; }

  [[nodiscard]] constexpr bool isCustom() const noexcept { return kind_ == Kind::custom; }
  [[nodiscard]] constexpr bool isCustomScale() const noexcept { return kind_ == Kind::scaled; }
  /// Returns true if the size is relative to the source's, with any factor.
  [[nodiscard]] constexpr bool isScaleOption() const noexcept { return sizing() != VideoSizingKind::pixels; }

  /// Returns the display text: "Half", "HD (1280 x 720)", "Custom: 400.0 x 400.0", "Custom: 90.0%"; "Custom Dimensions"
  /// and "Custom Scale" unless the numbers are above 0.
  [[nodiscard]] MERIDIAN_API std::string description() const;
  /// Returns the display text in a list to choose from: without the numbers of a custom size or scale.
  [[nodiscard]] MERIDIAN_API std::string pickerDescription() const;
  /// Returns the identifier in a list: "custom", "scaled", else the description.
  [[nodiscard]] MERIDIAN_API std::string tag() const;
  /// Return the description and the picker's text in the user's language.
  [[nodiscard]] MERIDIAN_API std::string localizedString() const;
  [[nodiscard]] MERIDIAN_API std::string localizedPickerString() const;

  /// Lists all cases except `custom` and `scaled`, in declaration order.
  [[nodiscard]] static constexpr std::span<const VideoDimension> wellDefinedCases() noexcept;
  [[nodiscard]] static constexpr std::span<const VideoDimension> allCases() noexcept { return wellDefinedCases(); }
  /// Lists the choices relative to the source's size; the last is a custom scale of `customScaleDefaultValue`.
  [[nodiscard]] static constexpr std::span<const VideoDimension> scaleOptions() noexcept;
  /// Lists the standard sizes; the last is a custom size of 400 x 400.
  [[nodiscard]] static constexpr std::span<const VideoDimension> exactDimensionsOptions() noexcept;

  /// Return the members of the list that are scale options, or exact ones, in the list's order. The only custom members
  /// are the scale of `customScaleDefaultValue` and the size 400 x 400.
  [[nodiscard]] MERIDIAN_API static std::vector<VideoDimension> filterScaleOptions(
      std::span<const VideoDimension> from);
  [[nodiscard]] MERIDIAN_API static std::vector<VideoDimension> filterExactDimensionsOptions(
      std::span<const VideoDimension> from);

  /// Returns all choices for a codec, scaled ones first. Avid DNxHD codes fixed rasters (SMPTE ST 2019-1): it allows
  /// 1280 x 720, 1920 x 1080, and `match` for sources that have such a raster. Every other codec allows all options.
  [[nodiscard]] MERIDIAN_API static std::vector<VideoDimension> allAllowedOptions(ConversionCodecType codec);
  /// Returns the exact ones.
  [[nodiscard]] static constexpr std::span<const VideoDimension> allowedExactOptions(
      ConversionCodecType codec) noexcept;
  /// Returns the scaled ones.
  [[nodiscard]] static constexpr std::span<const VideoDimension> allowedScaledOptions(
      ConversionCodecType codec) noexcept;

  friend constexpr bool operator==(const VideoDimension&, const VideoDimension&) = default;

 private:
  constexpr VideoDimension(Kind kind, const Size& size) noexcept : kind_(kind), size_(size) {}
  constexpr explicit VideoDimension(Kind kind) noexcept : kind_(kind), size_(tableRow(kind_).size) {}

  Kind kind_ = Kind::match;
  Size size_;
};

inline constexpr VideoDimension VideoDimension::match{Kind::match};
inline constexpr VideoDimension VideoDimension::half{Kind::half};
inline constexpr VideoDimension VideoDimension::quarter{Kind::quarter};
inline constexpr VideoDimension VideoDimension::eighth{Kind::eighth};
inline constexpr VideoDimension VideoDimension::sixteenth{Kind::sixteenth};
inline constexpr VideoDimension VideoDimension::twoTwentyP{Kind::twoTwentyP};
inline constexpr VideoDimension VideoDimension::twoSeventyP{Kind::twoSeventyP};
inline constexpr VideoDimension VideoDimension::fourEightyP{Kind::fourEightyP};
inline constexpr VideoDimension VideoDimension::fiveFortyP{Kind::fiveFortyP};
inline constexpr VideoDimension VideoDimension::sevenTwentyP{Kind::sevenTwentyP};
inline constexpr VideoDimension VideoDimension::tenEightyP{Kind::tenEightyP};
inline constexpr VideoDimension VideoDimension::fourK{Kind::fourK};

namespace detail {

inline constexpr auto wellDefinedDimensions = std::to_array<VideoDimension>(
    {VideoDimension::match, VideoDimension::half, VideoDimension::quarter, VideoDimension::eighth,
     VideoDimension::sixteenth, VideoDimension::twoTwentyP, VideoDimension::twoSeventyP, VideoDimension::fourEightyP,
     VideoDimension::fiveFortyP, VideoDimension::sevenTwentyP, VideoDimension::tenEightyP, VideoDimension::fourK});

inline constexpr auto scaleOptions = std::to_array<VideoDimension>(
    {VideoDimension::match, VideoDimension::half, VideoDimension::quarter, VideoDimension::eighth,
     VideoDimension::sixteenth, VideoDimension::scaled(VideoDimension::customScaleDefaultValue)});

inline constexpr auto exactDimensionsOptions =
    std::to_array<VideoDimension>({VideoDimension::twoTwentyP, VideoDimension::twoSeventyP, VideoDimension::fourEightyP,
                                   VideoDimension::fiveFortyP, VideoDimension::sevenTwentyP, VideoDimension::tenEightyP,
                                   VideoDimension::fourK, VideoDimension::custom(400, 400)});

inline constexpr auto dnxhdScaledOptions = std::to_array<VideoDimension>({VideoDimension::match});
inline constexpr auto dnxhdExactOptions =
    std::to_array<VideoDimension>({VideoDimension::sevenTwentyP, VideoDimension::tenEightyP});

}  // namespace detail

constexpr std::span<const VideoDimension> VideoDimension::wellDefinedCases() noexcept {
  return detail::wellDefinedDimensions;
}

constexpr std::span<const VideoDimension> VideoDimension::scaleOptions() noexcept { return detail::scaleOptions; }

constexpr std::span<const VideoDimension> VideoDimension::exactDimensionsOptions() noexcept {
  return detail::exactDimensionsOptions;
}

constexpr std::span<const VideoDimension> VideoDimension::allowedScaledOptions(ConversionCodecType codec) noexcept {
  if (codec == ConversionCodecType::dnxhd) return detail::dnxhdScaledOptions;
  return scaleOptions();
}

constexpr std::span<const VideoDimension> VideoDimension::allowedExactOptions(ConversionCodecType codec) noexcept {
  if (codec == ConversionCodecType::dnxhd) return detail::dnxhdExactOptions;
  return exactDimensionsOptions();
}

constexpr std::optional<VideoDimension> VideoDimension::fromStored(VideoSizingKind sizing, const Size& size) noexcept {
  for (const VideoDimension& each : wellDefinedCases()) {
    if (each.sizing() == sizing && each.size() == size) return each;
  }
  constexpr double largest = std::numeric_limits<double>::max();
  const bool isFree = size.width > 0 && size.width <= largest && size.height > 0 && size.height <= largest;
  if (!isFree) return std::nullopt;
  if (sizing == VideoSizingKind::pixels) return custom(size.width, size.height);
  if (sizing == VideoSizingKind::scale && size.width == size.height) return scaled(size.width);
  return std::nullopt;
}

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::VideoDimension> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::VideoDimension& dimension) const noexcept {
    return meridian::combinedHash(dimension.kind(), dimension.size().width, dimension.size().height);
  }
};
