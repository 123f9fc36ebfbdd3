/// \file
/// Colours between the points of a cube. For example:
///
///     const TrilinearLutInterpolator interpolator(cube);
///     interpolator.sample(0.5, 0.5, 0.5);  // what the cube makes of middle grey
#pragma once

#include <memory>

#include "meridian/export.h"
#include "meridian/lut/lut_cube.h"

namespace meridian::inline v0_2 {

/// Finds the colour that a cube yields for an input, in double precision. All interpolators clamp each input to the
/// cube's range from `lowValue` to `highValue` and deliberately divide it by `highValue` alone, not by the span from
/// `lowValue`; 0 is at the first point of an axis and `highValue` at the last. The first index of the lattice is red's,
/// the last blue's. The result is NaN for an input of NaN, and for a cube whose `highValue` is 0.
class MERIDIAN_API ThreeDimensionalLutInterpolator {
 public:
  ThreeDimensionalLutInterpolator() = default;
  ThreeDimensionalLutInterpolator(const ThreeDimensionalLutInterpolator&) = default;
  ThreeDimensionalLutInterpolator& operator=(const ThreeDimensionalLutInterpolator&) = default;
  ThreeDimensionalLutInterpolator(ThreeDimensionalLutInterpolator&&) = default;
  ThreeDimensionalLutInterpolator& operator=(ThreeDimensionalLutInterpolator&&) = default;
  virtual ~ThreeDimensionalLutInterpolator();

  /// Returns the colour for an input. Both are in the units of the cube's values.
  [[nodiscard]] virtual LutColor sample(double red, double green, double blue) const noexcept = 0;

  [[nodiscard]] virtual const std::shared_ptr<const ThreeDimensionalLutCube>& cube() const noexcept = 0;
};

/// Blends the eight points around an input, along red, then green, then blue. Used unless another is asked for.
class MERIDIAN_API TrilinearLutInterpolator final : public ThreeDimensionalLutInterpolator {
 public:
  /// Terminates the process for a null cube or one without points.
  explicit TrilinearLutInterpolator(std::shared_ptr<const ThreeDimensionalLutCube> cube);

  [[nodiscard]] LutColor sample(double red, double green, double blue) const noexcept override;
  [[nodiscard]] const std::shared_ptr<const ThreeDimensionalLutCube>& cube() const noexcept override { return cube_; }

 private:
  std::shared_ptr<const ThreeDimensionalLutCube> cube_;
};

/// Blends the four points of the tetrahedron around an input: neutral colours depend on neutral points only.
class MERIDIAN_API TetrahedralLutInterpolator final : public ThreeDimensionalLutInterpolator {
 public:
  /// Terminates the process for a null cube or one without points.
  explicit TetrahedralLutInterpolator(std::shared_ptr<const ThreeDimensionalLutCube> cube);

  [[nodiscard]] LutColor sample(double red, double green, double blue) const noexcept override;
  [[nodiscard]] const std::shared_ptr<const ThreeDimensionalLutCube>& cube() const noexcept override { return cube_; }

 private:
  std::shared_ptr<const ThreeDimensionalLutCube> cube_;
};

}  // namespace meridian::inline v0_2
