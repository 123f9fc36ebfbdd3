/// \file
/// A cube prepared for vector code by a floating-point filter with an exact fallback.
///
/// The method is that of exact geometric predicates (J. R. Shewchuk, "Adaptive Precision Floating-Point Arithmetic and
/// Fast Robust Geometric Predicates", 1997; CGAL calls it a filtered kernel): single precision computes each result
/// together with a bound on its error. Results are truncated to integers, so an error only matters where an integer
/// lies within the bound of a result. Such results are uncertain; for them alone the definition in double precision is
/// evaluated, operation by operation. All results are thus those of the definition, at nearly the speed of single
/// precision.
///
/// The bound is that of the cell that a pixel is in, since few cells of a real cube are as steep as its steepest. Each
/// point holds the largest bound of the cells around it, and the bounds are blended like a fourth channel: a blend of
/// numbers that are all at least the cell's bound is so too.
///
/// Clipped black and white would be uncertain all over, because their results are integers. Cells that hold one steady
/// value at all their points are therefore marked as flat, and results within them are certain.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "meridian/base/aligned_allocator.h"
#include "meridian/lut/image_definition.h"
#include "meridian/lut/image_view.h"

namespace meridian::inline v0_2::detail {

/// How single precision finds a place on an axis: at `value` * (scaleHigh + scaleLow) + offset. `scaleHigh` has so few
/// bits that its product with a code value of 16 bits is exact, and so is the difference of that product and the point
/// below, which leaves the fraction nearly without error.
struct FastAxis {
  float scaleHigh = 0;
  float scaleLow = 0;
  float offset = 0;
  /// A value below `low` is at `lowPoint` + `lowFraction`, one above `high` at the last point.
  float low = 0;
  float high = 0;
  float lowPoint = 0;
  float lowFraction = 0;
};

/// Which values have to be clamped: those above an axis' end, which single precision holds exactly or only nearly, or
/// those below its beginning as well.
enum class AxisLimits : std::uint8_t { exactEnd, end, both };

/// How code values become numbers on the scale of the cube's axes:
/// ((code >> shiftRight) - black) * factor / divisor * unit, where all but the division are exact.
struct InputScale {
  int shiftRight = 0;
  std::int32_t black = 0;
  double factor = 1;
  double divisor = 1;
  double unit = 1;
};

/// A cube prepared for images of one kind.
class CubeKernel {
 public:
  /// For code values, with formats, or for floating point, without.
  CubeKernel(CubeDefinition cubeDefinition, const std::optional<ImageFormats>& imageFormats);

  CubeDefinition definition;
  /// Absent for floating point.
  std::optional<ImageFormats> formats;

  /// Whether single precision is of use at all.
  bool filterApplies = false;

  InputScale input;
  std::array<FastAxis, 3> axes;
  AxisLimits limits = AxisLimits::both;
  float lastPoint = 0;
  /// From a point to its neighbours, in floats of `lattice`; along blue it is always 4.
  std::size_t redStride = 0;
  std::size_t greenStride = 0;
  /// Red, green, blue and a mark for each point, blue running fastest. Values are scaled as results are truncated, less
  /// `center`, which makes them small and thus precise. The mark is a bound on the errors of code values in the cells
  /// around the point. Its lowest bits say which channels are flat in the cell above the point: have a value at all its
  /// points that the definition's own arithmetic returns unchanged.
  std::vector<float, AlignedAllocator<float, 64>> lattice;
  std::int32_t center = 0;
  /// Nearer than this to a cell's border, a place may be in the next cell by the definition.
  float flatMargin = 0;

  /// Returns the channels that a mark calls flat: red 1, green 2, blue 4.
  [[nodiscard]] static unsigned flatChannels(float mark) noexcept { return std::bit_cast<std::uint32_t>(mark) & 7U; }

  /// How numbers on the cube's scale are truncated: scaled, clamped to `limitBefore`, shifted to the left (to the right
  /// if negative), and clamped to `lowest` and `highest`.
  ResultScale resultScale;
  int shift = 0;
  std::int32_t limitBefore = 0;
  std::int32_t lowest = 0;
  std::int32_t highest = 0;

 private:
  [[nodiscard]] bool isSteady(double value) const noexcept;
  [[nodiscard]] bool isFlat(const LutColor& point, double LutColor::* value, float stored) const noexcept;

  [[nodiscard]] double toResult(double value) const noexcept;

  void prepareCodeValues();
  void prepareAxes();
  void prepareLattice();
  void fillLattice();
  void storeBounds();

  /// The largest error of a fraction.
  double fractionError_ = 0;
  /// A bound on what the definition itself rounds in double precision.
  double definitionError_ = 0;
};

/// The source and the destination of some rows of pixels.
template <ImageSample Sample>
struct PixelRows {
  ImageView<const Sample> source;
  ImageView<Sample> destination;
};

/// Applies the cube to the rows with the best instructions that this machine has. The images have to be usable.
void applyCube(const CubeKernel& kernel, const PixelRows<std::uint8_t>& rows);
void applyCube(const CubeKernel& kernel, const PixelRows<std::uint16_t>& rows);
void applyCube(const CubeKernel& kernel, const PixelRows<float>& rows);

}  // namespace meridian::inline v0_2::detail
