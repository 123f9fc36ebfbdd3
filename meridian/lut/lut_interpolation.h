/// \file
/// How a colour between the points of a lattice is found, in double precision: the definition that everything else in
/// this directory has to match.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "meridian/lut/image_lut_options.h"
#include "meridian/lut/lut_values.h"

namespace meridian::inline v0_2::detail {

/// A place on one axis: between the points `lower` and `upper`, `fraction` of the way.
struct AxisPosition {
  std::size_t lower = 0;
  std::size_t upper = 0;
  double fraction = 0;
};

/// Returns the place at `position` on an axis of `faceSize` points, the first at 0 and the last at `faceSize` - 1. For
/// NaN the fraction is NaN.
[[nodiscard]] inline AxisPosition placeOnAxis(double position, std::int64_t faceSize) noexcept {
  const double last = static_cast<double>(faceSize - 1);
  // The comparisons are false for NaN, which thus gets the first point.
  const double floored = std::floor(position);
  const double lower = floored > 0 ? std::min(floored, last) : 0;
  const auto place = static_cast<std::size_t>(lower);
  return {place, std::min(place + 1, static_cast<std::size_t>(faceSize - 1)), position - lower};
}

/// Returns the place of an input value on an axis whose values range from `low` to `high`, to which the input is
/// clamped. It is deliberately divided by `high` alone, not by the span from `low`: the points stand for the values
/// from 0 to `high`, whatever the lowest value is.
[[nodiscard]] inline AxisPosition axisPosition(double input, double low, double high, std::int64_t faceSize) noexcept {
  input = std::max(std::min(input, high), low);
  return placeOnAxis(input / high * static_cast<double>(faceSize - 1), faceSize);
}

/// How far apart neighbours on the axes are in a lattice's block.
struct LatticeStrides {
  std::size_t red = 0;
  std::size_t green = 0;
  std::size_t blue = 0;
};

[[nodiscard]] inline double blended(double first, double second, double fraction) noexcept {
  return first * (1 - fraction) + second * fraction;
}

/// Returns the colour between the eight points around a place, blended along red, then green, then blue.
[[nodiscard]] inline LutColor trilinearColor(const LutColor* lattice, const LatticeStrides& strides,
                                             const AxisPosition& red, const AxisPosition& green,
                                             const AxisPosition& blue) noexcept {
  const auto corner = [&](std::size_t r, std::size_t g, std::size_t b) -> const LutColor& {
    return lattice[r * strides.red + g * strides.green + b * strides.blue];
  };
  const std::array<const LutColor*, 8> corners{
      &corner(red.lower, green.lower, blue.lower), &corner(red.upper, green.lower, blue.lower),
      &corner(red.lower, green.upper, blue.lower), &corner(red.upper, green.upper, blue.lower),
      &corner(red.lower, green.lower, blue.upper), &corner(red.upper, green.lower, blue.upper),
      &corner(red.lower, green.upper, blue.upper), &corner(red.upper, green.upper, blue.upper)};
  const auto channel = [&](double LutColor::* value) {
    const auto blendedAlongRed = [&](std::size_t place) {
      return blended(corners[place]->*value, corners[place + 1]->*value, red.fraction);
    };
    const double lower = blended(blendedAlongRed(0), blendedAlongRed(2), green.fraction);
    const double upper = blended(blendedAlongRed(4), blendedAlongRed(6), green.fraction);
    return blended(lower, upper, blue.fraction);
  };
  return {channel(&LutColor::red), channel(&LutColor::green), channel(&LutColor::blue)};
}

/// Returns the colour between the four points of the tetrahedron around a place: from the lower point along the axis
/// with the largest fraction, then the middle one, then the smallest, to the upper point (J. M. Kasson, S. I. Nin,
/// W. Plouffe, J. L. Hafner, "Performing color space conversions with three-dimensional linear interpolation", 1995).
/// Equal fractions are ordered red, green, blue.
[[nodiscard]] inline LutColor tetrahedralColor(const LutColor* lattice, const LatticeStrides& strides,
                                               const AxisPosition& red, const AxisPosition& green,
                                               const AxisPosition& blue) noexcept {
  struct Step {
    double fraction;
    std::size_t distance;
  };
  std::array<Step, 3> steps{{{red.fraction, (red.upper - red.lower) * strides.red},
                             {green.fraction, (green.upper - green.lower) * strides.green},
                             {blue.fraction, (blue.upper - blue.lower) * strides.blue}}};
  if (steps[1].fraction > steps[0].fraction) std::swap(steps[0], steps[1]);
  if (steps[2].fraction > steps[1].fraction) std::swap(steps[1], steps[2]);
  if (steps[1].fraction > steps[0].fraction) std::swap(steps[0], steps[1]);

  const LutColor* const first =
      lattice + red.lower * strides.red + green.lower * strides.green + blue.lower * strides.blue;
  const LutColor* const second = first + steps[0].distance;
  const LutColor* const third = second + steps[1].distance;
  const LutColor* const fourth = third + steps[2].distance;
  const auto channel = [&](double LutColor::* value) {
    // In this form equal points yield exactly their value.
    return first->*value + (second->*value - first->*value) * steps[0].fraction +
           (third->*value - second->*value) * steps[1].fraction + (fourth->*value - third->*value) * steps[2].fraction;
  };
  return {channel(&LutColor::red), channel(&LutColor::green), channel(&LutColor::blue)};
}

[[nodiscard]] inline LutColor interpolatedColor(LutInterpolation interpolation, const LutColor* lattice,
                                                const LatticeStrides& strides, const AxisPosition& red,
                                                const AxisPosition& green, const AxisPosition& blue) noexcept {
  return interpolation == LutInterpolation::tetrahedral ? tetrahedralColor(lattice, strides, red, green, blue)
                                                        : trilinearColor(lattice, strides, red, green, blue);
}

}  // namespace meridian::inline v0_2::detail
