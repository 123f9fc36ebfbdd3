/// \file
/// What a LUT makes of the pixels of an image, as plain definitions in double precision. The vector code has to return
/// exactly what these return.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/lut/bit_depth.h"
#include "meridian/lut/code_value_format.h"
#include "meridian/lut/image_lut_options.h"
#include "meridian/lut/lut_cube.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/lut_interpolation.h"
#include "meridian/lut/sample_converter.h"

namespace meridian::inline v0_2::detail {

/// The formats between which code values are converted, and how results become code values.
struct ImageFormats {
  CodeValueFormat source;
  CodeValueFormat destination;
  LutRounding rounding = LutRounding::truncate;

  /// Whether code values are converted by way of the scale from 0 to 1, and rounded, not truncated.
  [[nodiscard]] bool areRounded() const noexcept {
    return rounding == LutRounding::nearest || source.isLimited() || destination.isLimited();
  }
};

/// How input values map to an axis: they are clamped to `low` and `high`; `offset` is at the first point and `offset` +
/// `span` at the last.
struct AxisRule {
  double low = 0;
  double high = 0;
  double offset = 0;
  double span = 0;

  [[nodiscard]] double position(double input, std::int64_t faceSize) const noexcept {
    input = std::min(input, high);
    if (!(input >= low)) input = low;  // NaN as well
    return (input - offset) / span * static_cast<double>(faceSize - 1);
  }

  friend bool operator==(const AxisRule&, const AxisRule&) noexcept = default;
};

using PixelCodes = std::array<std::uint16_t, 3>;

/// Returns the code value of a result: truncated, converted from the depth of the LUT's values if they are code values
/// (`valueDepth` is 0 if they are not), and clamped to what the destination may hold.
[[nodiscard]] inline std::uint16_t limitedCodeValue(double value, std::int64_t valueDepth,
                                                    CodeValueFormat destination) noexcept {
  if (!(value > 0)) return static_cast<std::uint16_t>(destination.lowest());
  const auto truncated = truncatedUnsignedInteger(value);
  const auto scaled = truncated ? rescaledCodeValue(*truncated, valueDepth, destination.bitDepth) : std::nullopt;
  return static_cast<std::uint16_t>(
      std::clamp(scaled.value_or(destination.highest()), destination.lowest(), destination.highest()));
}

/// Returns an alpha value at the destination's depth; alpha is full range.
[[nodiscard]] inline std::uint16_t rescaledAlpha(std::uint16_t alpha, const ImageFormats& formats) noexcept {
  return limitedCodeValue(alpha, formats.source.bitDepth, formats.destination.bitDepth);
}

/// Returns a code value on the scale from 0, black, to 1, white.
[[nodiscard]] inline double normalizedCodeValue(std::uint16_t code, CodeValueFormat format) noexcept {
  return (static_cast<double>(code) - format.black()) / (format.white() - format.black());
}

/// How values on the scale of a LUT become numbers that are truncated to code values.
struct ResultScale {
  double unit = 1;    ///< the LUT's value for white
  double factor = 1;  ///< code values from black to white
  double offset = 0;  ///< black, and the half by which truncating becomes rounding

  [[nodiscard]] static ResultScale rounded(double unit, CodeValueFormat destination) noexcept {
    return {unit, destination.white() - destination.black(), destination.black() + 0.5};
  }
  [[nodiscard]] double operator()(double value) const noexcept { return value / unit * factor + offset; }
};

/// A cube, and everything that decides how it is applied to images.
struct CubeDefinition {
  /// `integerDepth` is that of a cube of code values.
  CubeDefinition(std::shared_ptr<const ThreeDimensionalLutCube> sharedCube, std::optional<std::int64_t> integerDepth,
                 const LutDeclaredDomain& declaredDomain, const ImageLutOptions& options);

  [[nodiscard]] PixelCodes codeValues(const PixelCodes& input, const ImageFormats& formats) const noexcept;
  [[nodiscard]] LutColor color(const LutColor& input) const noexcept;

  /// Returns how results become code values of the destination, and the depth they have then.
  [[nodiscard]] ResultScale resultScale(const ImageFormats& formats) const noexcept;
  [[nodiscard]] std::int64_t resultDepth(const ImageFormats& formats) const noexcept {
    return formats.areRounded() ? formats.destination.bitDepth : integerDepth.value_or(formats.destination.bitDepth);
  }
  /// Returns what 1 is on the axes and in the results.
  [[nodiscard]] double unit() const noexcept;

  std::shared_ptr<const ThreeDimensionalLutCube> cube;
  std::optional<std::int64_t> integerDepth;
  LutInterpolation interpolation;
  std::int64_t faceSize;
  LatticeStrides strides;
  std::array<AxisRule, 3> axes;

 private:
  [[nodiscard]] double axisValue(std::uint16_t code, const ImageFormats& formats) const noexcept;
};

/// A 1D LUT, and everything that decides how it is applied to images.
struct TableDefinition {
  TableDefinition(const OneDimensionConverter& converter, LutValueType valueType,
                  const LutDeclaredDomain& declaredDomain, const ImageLutOptions& options);

  [[nodiscard]] PixelCodes codeValues(const PixelCodes& input, const ImageFormats& formats) const noexcept;
  [[nodiscard]] LutColor color(const LutColor& input) const noexcept;

 private:
  [[nodiscard]] const OneDimensionConverter& converter() const noexcept;
  [[nodiscard]] std::uint16_t storedCodeValue(std::uint16_t code, std::size_t channel,
                                              const ImageFormats& formats) const noexcept;

  /// One of the two.
  std::shared_ptr<const OneDimensionsUnsignedIntegerConverter> integers_;
  std::shared_ptr<const OneDimensionFloatingPointConverter> floats_;
  /// How inputs map to the rows. Absent if each code value has a row of its own.
  std::optional<std::array<AxisRule, 3>> axes_;
};

}  // namespace meridian::inline v0_2::detail
