/// \file
/// The cells of a cube as polynomials, which blend faster and more exactly than the points around a pixel do: what is
/// rounded are steps between points, not the points themselves. They need much more memory, and their preparation takes
/// as long as some million pixels gain, so for code values they are made when that many pixels have been converted, and
/// for floating point with the kernel.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "meridian/base/aligned_allocator.h"

namespace meridian::inline v0_2::detail {

class CubeKernel;

/// The cells of a cube that is prepared for trilinear interpolation.
class CubeCells {
 public:
  /// What a code value of 1 is in the results: 14 bits for the fraction, which leaves room for results far beyond all
  /// code values.
  static constexpr std::int32_t one = 1 << 14;
  static constexpr std::size_t floatsPerCell = 32;
  static constexpr std::int64_t mostPoints = 41;

  explicit CubeCells(const CubeKernel& kernel);

  /// Returns whether all results fit.
  [[nodiscard]] bool areUsable() const noexcept { return areUsable_; }

  /// For each cell, the blue index running fastest, eight groups of red, green, blue and one more. The first is the
  /// cell's first point: for floating point as it is, with 0; for code values as integers, with a bound on the errors
  /// of the cell's results. Then steps, whose fourth number is 0: along blue, red, and red with blue; green, green with
  /// blue, red with green, and all three. With the fractions f a result is
  ///
  ///     point + f_b * blue + f_r * (red + f_b * redBlue) + f_g * (green + ...)
  [[nodiscard]] const float* data() const noexcept { return floats_.data(); }

 private:
  std::vector<float, AlignedAllocator<float, 64>> floats_;
  bool areUsable_ = true;
};

/// The cells of a cube: for code values made by the thread with which enough pixels have been converted; for floating
/// point made from the start, because their last bits differ from those of the points, and the same colour has to
/// yield the same result at all times.
class CubeCellsOnDemand {
 public:
  /// Makes the cells of a cube for floating point.
  void prepare(const CubeKernel& kernel);

  /// Returns the cells if there are any, after counting pixels that are about to be converted.
  [[nodiscard]] const CubeCells* forPixels(const CubeKernel& kernel, std::uint64_t count);

 private:
  void make(const CubeKernel& kernel);

  std::atomic<std::uint64_t> pixels_ = 0;
  std::unique_ptr<const CubeCells> owned_;
  std::atomic<const CubeCells*> cells_ = nullptr;
};

}  // namespace meridian::inline v0_2::detail
