// Colours between the points of a cube.
#pragma once

#include <memory>

#include "meridian/export.h"
#include "meridian/lut/lut_cube.h"

namespace meridian::inline v0_2 {

/// Finds the colour that a cube has for an input, in double precision. All interpolators limit each input to the cube's
/// range from `lowValue` to `highValue` and divide it by `highValue` alone, not by the span from `lowValue`, on
/// purpose; 0 lies at the first point of an axis and `highValue` at the last. The first index of the lattice is red's,
/// the last blue's. A result that is not a number comes from an input that is none, or from a cube whose `highValue` is
/// 0.
class MERIDIAN_API ThreeDimensionalLutInterpolator {
 public:
  ThreeDimensionalLutInterpolator() = default;
  ThreeDimensionalLutInterpolator(const ThreeDimensionalLutInterpolator&) = default;
  ThreeDimensionalLutInterpolator& operator=(const ThreeDimensionalLutInterpolator&) = default;
  ThreeDimensionalLutInterpolator(ThreeDimensionalLutInterpolator&&) = default;
  ThreeDimensionalLutInterpolator& operator=(ThreeDimensionalLutInterpolator&&) = default;
  virtual ~ThreeDimensionalLutInterpolator();

  /// Input and result in the units of the cube's values.
  [[nodiscard]] virtual LutColor sample(double red, double green, double blue) const noexcept = 0;

  [[nodiscard]] virtual const std::shared_ptr<const ThreeDimensionalLutCube>& cube() const noexcept = 0;
};

/// Blends the eight points around an input, along red, then green, then blue. Used wherever nothing else is asked for.
class MERIDIAN_API TrilinearLutInterpolator final : public ThreeDimensionalLutInterpolator {
 public:
  /// A cube without points stops the process.
  explicit TrilinearLutInterpolator(std::shared_ptr<const ThreeDimensionalLutCube> cube);

  [[nodiscard]] LutColor sample(double red, double green, double blue) const noexcept override;
  [[nodiscard]] const std::shared_ptr<const ThreeDimensionalLutCube>& cube() const noexcept override { return cube_; }

 private:
  std::shared_ptr<const ThreeDimensionalLutCube> cube_;
};

/// Blends the four points of the tetrahedron around an input: neutral colours come from neutral points alone.
class MERIDIAN_API TetrahedralLutInterpolator final : public ThreeDimensionalLutInterpolator {
 public:
  /// A cube without points stops the process.
  explicit TetrahedralLutInterpolator(std::shared_ptr<const ThreeDimensionalLutCube> cube);

  [[nodiscard]] LutColor sample(double red, double green, double blue) const noexcept override;
  [[nodiscard]] const std::shared_ptr<const ThreeDimensionalLutCube>& cube() const noexcept override { return cube_; }

 private:
  std::shared_ptr<const ThreeDimensionalLutCube> cube_;
};

}  // namespace meridian::inline v0_2
