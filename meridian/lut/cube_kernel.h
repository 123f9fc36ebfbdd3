// A cube made ready for vector code.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "meridian/base/aligned_allocator.h"
#include "meridian/lut/image_definition.h"
#include "meridian/lut/image_view.h"

namespace meridian::inline v0_2::detail {

/// How single precision finds a place on an axis: at `value` * (scaleHigh + scaleLow) + offset. `scaleHigh` has so few
/// bits that its product with a code value of 16 bits is exact, and so is the difference of that product and the point
/// below, which leaves the fraction with next to no error.
struct FastAxis {
  float scaleHigh = 0;
  float scaleLow = 0;
  float offset = 0;
  /// A value below `low` lies at `lowPoint` + `lowFraction`, one above `high` at the last point.
  float low = 0;
  float high = 0;
  float lowPoint = 0;
  float lowFraction = 0;
};

/// Which values need care: those beyond an axis' end, which single precision has exactly or only nearly, or those
/// before its beginning as well.
enum class AxisLimits : std::uint8_t { exactEnd, end, both };

/// A cube for images of one kind. Single precision gives each result with an error of at most `errorBound`; where
/// that leaves open which integer a result is truncated to, the definition in double precision decides. So the results
/// are those of the definition, at nearly the speed of single precision.
class CubeKernel {
 public:
  /// For code values, with depths, or for floating point, without.
  CubeKernel(CubeDefinition cubeDefinition, const std::optional<ImageDepths>& imageDepths);

  CubeDefinition definition;
  /// Absent for floating point.
  std::optional<ImageDepths> depths;

  /// Whether single precision is of use at all.
  bool isFast = false;

  /// What brings a code value to the depth of a cube of code values: a shift to the right, then a power of two.
  int inputShiftRight = 0;
  double inputFactor = 1;
  std::array<FastAxis, 3> axes;
  AxisLimits limits = AxisLimits::both;
  float lastPoint = 0;
  /// From a point to its neighbours, in floats of `lattice`; along blue it is always 4.
  std::size_t redStride = 0;
  std::size_t greenStride = 0;
  /// Red, green, blue and a mark for each point, blue running fastest. Values are scaled as results are truncated, less
  /// `center`, which makes them small and thus exact. The mark says which channels are flat in the cell above the
  /// point: have a value at all its points that the definition's own arithmetic leaves as it is. As a number the mark
  /// is never in doubt itself.
  std::vector<float, AlignedAllocator<float, 64>> lattice;
  std::int32_t center = 0;
  float errorBound = 0;
  /// Nearer than this to a cell's border a place may lie in the next cell, by the definition.
  float flatMargin = 0;

  /// The channels that a mark calls flat: red 1, green 2, blue 4.
  [[nodiscard]] static unsigned flatChannels(float mark) noexcept {
    return static_cast<unsigned>((mark - leastMark) * 16);
  }

  /// How far a truncated result is shifted to the destination's depth: to the left, or below 0 to the right.
  int shift = 0;
  /// The largest truncated result that is shifted, and the largest one after the shift.
  std::int32_t limitBefore = 0;
  std::int32_t limitAfter = 0;

 private:
  static constexpr float leastMark = 0.25F;
  [[nodiscard]] bool isSteady(double value) const noexcept;
  [[nodiscard]] bool isFlat(const LutColor& point, double LutColor::* value, float stored) const noexcept;

  void prepareAxes();
  void prepareLattice();
  void prepareResults();

  /// The error of a fraction, at most.
  double fractionError_ = 0;
};

/// Rows of pixels that lie beside each other or in planes.
template <ImageSample Sample>
struct PixelRows {
  ImageView<const Sample> source;
  ImageView<Sample> destination;
};

/// Leads the rows through the cube with the best instructions that this machine has. The images have no fault.
void applyCube(const CubeKernel& kernel, const PixelRows<std::uint8_t>& rows);
void applyCube(const CubeKernel& kernel, const PixelRows<std::uint16_t>& rows);
void applyCube(const CubeKernel& kernel, const PixelRows<float>& rows);

}  // namespace meridian::inline v0_2::detail
