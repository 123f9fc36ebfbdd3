/// \file
/// How far colours that single precision blends may be from exact ones: a bound for each cell of a lattice. For
/// example, for the points of a cube, four floats each, blue running fastest:
///
///     const std::vector<float> bounds = errorBoundsAroundPoints(lattice, 33, rounding);
///     bounds[(1 * 33 + 0) * 33 + 2];  // covers the four cells around the point (1, 0, 2)
#pragma once

#include <cstddef>
#include <vector>

#include "meridian/lut/image_lut_options.h"

namespace meridian::inline v0_2::detail {

/// The largest relative error of one rounding to single precision.
inline constexpr double roundingError = 0x1p-24;

/// What makes blends inexact, apart from a cell's own values.
struct BlendErrors {
  LutInterpolation interpolation = LutInterpolation::trilinear;
  /// The largest error of a fraction, and what is added to every bound.
  float fraction = 0;
  float constant = 0;

  /// Returns a bound on the error of every blend in a cell. `largest` is the largest magnitude of the cell's points,
  /// `steepest` the largest difference along its edges.
  [[nodiscard]] float bound(float largest, float steepest) const noexcept;
};

/// Returns the largest bound of the cells around each point of a lattice of at least two points per axis, in the order
/// of the points. `lattice` has four floats for each point, of which the last is not read.
[[nodiscard]] std::vector<float> errorBoundsAroundPoints(const float* lattice, std::size_t faceSize,
                                                         const BlendErrors& errors);

}  // namespace meridian::inline v0_2::detail
