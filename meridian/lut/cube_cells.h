/// \file
/// The cells of a cube as polynomials, which blend faster and more exactly than the points around a pixel do: what is
/// rounded are steps between points, not the points themselves. They need much more memory, and their preparation takes
/// as long as some million pixels gain, so they are made when that many pixels have been converted.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "meridian/base/aligned_allocator.h"

namespace meridian::inline v0_2::detail {

class CubeKernel;

/// The cells of a cube that is prepared for code values, with trilinear interpolation.
class CubeCells {
 public:
  /// What 1 is in the results: 14 bits for the fraction, which leaves room for results far beyond all code values.
  static constexpr std::int32_t one = 1 << 14;
  static constexpr std::size_t floatsPerCell = 32;
  static constexpr std::int64_t mostPoints = 41;

  explicit CubeCells(const CubeKernel& kernel);

  /// Returns whether all results fit.
  [[nodiscard]] bool areUsable() const noexcept { return areUsable_; }

  /// For each cell, the blue index running fastest, eight groups of red, green, blue and one more. The first are
  /// integers: the cell's first point and a bound on the errors of its results. Then steps, whose fourth number is 0:
  /// along blue, red, and red with blue; green, green with blue, red with green, and all three. With the fractions f a
  /// result is
  ///
  ///     point + f_b * blue + f_r * (red + f_b * redBlue) + f_g * (green + ...)
  [[nodiscard]] const float* data() const noexcept { return floats_.data(); }

 private:
  std::vector<float, AlignedAllocator<float, 64>> floats_;
  bool areUsable_ = true;
};

/// The cells of a cube, made by the thread with which enough pixels have been converted.
class CubeCellsOnDemand {
 public:
  /// Returns the cells if there are any, after counting pixels that are about to be converted.
  [[nodiscard]] const CubeCells* forPixels(const CubeKernel& kernel, std::uint64_t count);

 private:
  std::atomic<std::uint64_t> pixels_ = 0;
  std::unique_ptr<const CubeCells> owned_;
  std::atomic<const CubeCells*> cells_ = nullptr;
};

}  // namespace meridian::inline v0_2::detail
