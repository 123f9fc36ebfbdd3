#include "meridian/lut/lut_interpolator.h"

#include <utility>

#include "meridian/base/precondition.h"
#include "meridian/lut/lut_interpolation.h"

namespace meridian::inline v0_2 {
namespace {

std::shared_ptr<const ThreeDimensionalLutCube> withPoints(std::shared_ptr<const ThreeDimensionalLutCube> cube) {
  if (cube == nullptr || cube->faceSize() < 1) preconditionFailed("a LUT interpolator needs a cube with points");
  return cube;
}

LutColor interpolate(LutInterpolation interpolation, const ThreeDimensionalLutCube& cube, double red, double green,
                     double blue) noexcept {
  const std::int64_t faceSize = cube.faceSize();
  const double low = cube.lowValue();
  const double high = cube.highValue();
  const auto face = static_cast<std::size_t>(faceSize);
  return detail::interpolatedColor(
      interpolation, cube.lattice().data(), {face * face, face, 1}, detail::axisPosition(red, low, high, faceSize),
      detail::axisPosition(green, low, high, faceSize), detail::axisPosition(blue, low, high, faceSize));
}

}  // namespace

ThreeDimensionalLutInterpolator::~ThreeDimensionalLutInterpolator() = default;

TrilinearLutInterpolator::TrilinearLutInterpolator(std::shared_ptr<const ThreeDimensionalLutCube> cube)
    : cube_(withPoints(std::move(cube))) {}

LutColor TrilinearLutInterpolator::sample(double red, double green, double blue) const noexcept {
  return interpolate(LutInterpolation::trilinear, *cube_, red, green, blue);
}

TetrahedralLutInterpolator::TetrahedralLutInterpolator(std::shared_ptr<const ThreeDimensionalLutCube> cube)
    : cube_(withPoints(std::move(cube))) {}

LutColor TetrahedralLutInterpolator::sample(double red, double green, double blue) const noexcept {
  return interpolate(LutInterpolation::tetrahedral, *cube_, red, green, blue);
}

}  // namespace meridian::inline v0_2
