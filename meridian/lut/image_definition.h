// What a look-up table makes of the pixels of an image, as plain definitions in double precision. The vector code is
// held to these.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "meridian/lut/bit_depth.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_cube.h"
#include "meridian/lut/lut_interpolation.h"
#include "meridian/lut/sample_converter.h"

namespace meridian::inline v0_2::detail {

/// The depths between which code values are converted.
struct ImageDepths {
  std::int64_t source = 0;
  std::int64_t destination = 0;
};

/// How input values lie on an axis: limited to `low` and `high`, `offset` lies at the first point and `offset` + `span`
/// at the last.
struct AxisRule {
  double low = 0;
  double high = 0;
  double offset = 0;
  double span = 0;

  [[nodiscard]] double position(double input, std::int64_t faceSize) const noexcept {
    input = std::min(input, high);
    if (!(input >= low)) input = low;  // what is not a number as well
    return (input - offset) / span * static_cast<double>(faceSize - 1);
  }
};

using PixelCodes = std::array<std::uint16_t, 3>;

/// The code value of a result at a destination's depth: truncated, brought from the depth of the table's values where
/// they are code values (0 where they are not), and limited to what the destination can hold.
[[nodiscard]] inline std::uint16_t limitedCodeValue(double value, std::int64_t valueDepth,
                                                    std::int64_t destinationDepth) noexcept {
  if (!(value > 0)) return 0;
  const std::uint64_t largest = largestCodeValue(destinationDepth);
  const auto truncated = truncatedUnsignedInteger(value);
  const auto scaled = truncated ? rescaledCodeValue(*truncated, valueDepth, destinationDepth) : std::nullopt;
  return static_cast<std::uint16_t>(scaled && *scaled < largest ? *scaled : largest);
}

/// A code value on the scale of a table's axis.
[[nodiscard]] inline double axisInput(std::uint16_t code, std::int64_t from, std::int64_t to) noexcept {
  const auto scaled = rescaledCodeValue(code, from, to);
  return scaled ? static_cast<double>(*scaled) : 18446744073709551616.0;
}

/// A cube and all that decides how images go through it.
struct CubeDefinition {
  /// `integerDepth` is that of a cube of code values.
  CubeDefinition(std::shared_ptr<const ThreeDimensionalLutCube> sharedCube, std::optional<std::int64_t> integerDepth,
                 const LutDeclaredDomain& declaredDomain, const ImageLutOptions& options);

  [[nodiscard]] PixelCodes codeValues(const PixelCodes& input, const ImageDepths& depths) const noexcept;
  [[nodiscard]] LutColor color(const LutColor& input) const noexcept;

  /// A source's code value on the axes' scale.
  [[nodiscard]] double axisValue(std::uint16_t code, std::int64_t sourceDepth) const noexcept {
    return integerDepth ? axisInput(code, sourceDepth, *integerDepth)
                        : static_cast<double>(code) / static_cast<double>(largestCodeValue(sourceDepth));
  }
  /// By what results are multiplied before they are truncated.
  [[nodiscard]] double resultScale(std::int64_t destinationDepth) const noexcept {
    return integerDepth ? 1 : static_cast<double>(largestCodeValue(destinationDepth));
  }
  /// The depth of truncated results.
  [[nodiscard]] std::int64_t resultDepth(std::int64_t destinationDepth) const noexcept {
    return integerDepth.value_or(destinationDepth);
  }
  /// What stands for 1 on the axes and in the results when samples are floating point.
  [[nodiscard]] double unit() const noexcept;

  std::shared_ptr<const ThreeDimensionalLutCube> cube;
  std::optional<std::int64_t> integerDepth;
  LutInterpolation interpolation;
  std::int64_t faceSize;
  LatticeStrides strides;
  std::array<AxisRule, 3> axes;
};

/// A one-dimensional table and all that decides how images go through it.
struct TableDefinition {
  TableDefinition(const OneDimensionConverter& converter, const LutDeclaredDomain& declaredDomain,
                  const ImageLutOptions& options);

  [[nodiscard]] PixelCodes codeValues(const PixelCodes& input, const ImageDepths& depths) const noexcept;
  [[nodiscard]] LutColor color(const LutColor& input) const noexcept;

  /// One of the two.
  std::shared_ptr<const OneDimensionsUnsignedIntegerConverter> integers;
  std::shared_ptr<const OneDimensionFloatingPointConverter> floats;
  /// How inputs lie among the rows. Absent for code values that have a row each.
  std::optional<std::array<AxisRule, 3>> axes;

 private:
  [[nodiscard]] const OneDimensionConverter& converter() const noexcept;
};

}  // namespace meridian::inline v0_2::detail
