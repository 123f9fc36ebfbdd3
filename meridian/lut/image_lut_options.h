/// \file
/// How a LUT file is understood where images are concerned. For example, as published `.cube` files mean it:
///
///     ImageLutOptions{.axisOrder = LutAxisOrder::redFastest, .domain = LutInputDomain::declared}
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"

namespace meridian::inline v0_2 {

/// How colours between the points of a cube are found: from the eight points around them, or from four.
enum class LutInterpolation : std::uint8_t { trilinear, tetrahedral };

template <>
struct EnumerationTable<LutInterpolation> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutInterpolation>>({
      {LutInterpolation::trilinear, "trilinear"},
      {LutInterpolation::tetrahedral, "tetrahedral"},
  });
};

/// Which index runs fastest through the rows of a cube's file.
enum class LutAxisOrder : std::uint8_t {
  blueFastest,  ///< as everywhere else in this library
  redFastest,   ///< as the published `.cube` format says
};

template <>
struct EnumerationTable<LutAxisOrder> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutAxisOrder>>({
      {LutAxisOrder::blueFastest, "blueFastest"},
      {LutAxisOrder::redFastest, "redFastest"},
  });
};

/// Which input values the axes of a LUT cover.
enum class LutInputDomain : std::uint8_t {
  /// As for the converters: from 0 to a cube's highest value; from the first to the last row of a 1D LUT.
  dataRange,
  /// As the file declares; 0 to 1 (all code values of a LUT of integers) where it declares nothing.
  declared,
};

template <>
struct EnumerationTable<LutInputDomain> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutInputDomain>>({
      {LutInputDomain::dataRange, "dataRange"},
      {LutInputDomain::declared, "declared"},
  });
};

/// How results become code values. Floating-point results are never changed.
enum class LutRounding : std::uint8_t {
  truncate,  ///< toward zero, as the converters do
  nearest,   ///< to the nearest code value, so that an identity changes nothing; limited range always does this
};

template <>
struct EnumerationTable<LutRounding> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutRounding>>({
      {LutRounding::truncate, "truncate"},
      {LutRounding::nearest, "nearest"},
  });
};

/// How a LUT is applied to images. The defaults agree with the converters. A value that is not a case of its
/// enumeration, such as one cast from an integer, terminates the process when a LUT is prepared with it.
struct ImageLutOptions {
  LutInterpolation interpolation = LutInterpolation::trilinear;
  LutAxisOrder axisOrder = LutAxisOrder::blueFastest;
  LutInputDomain domain = LutInputDomain::dataRange;
  LutRounding rounding = LutRounding::truncate;
};

}  // namespace meridian::inline v0_2
