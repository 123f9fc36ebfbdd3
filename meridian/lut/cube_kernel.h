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
/// point of the lattice holds the largest bound of the cells around it, and the bounds are blended like a fourth
/// channel: a blend of numbers that are all at least the cell's bound is so too. Cells (cube_cells.h) hold their own.
///
/// Clipped black and white would be uncertain all over, because their results are integers. Cells that hold one steady
/// value at all their points are therefore marked as flat, and results within them are certain. Results beyond the
/// lowest and the highest code value are certain as well.
///
/// Blocks of pixels pass through three steps: places on the axes (cube_kernel_places-inl.h), colours
/// (cube_kernel_blend-inl.h) and code values (cube_kernel_filter-inl.h). Uncertain pixels are collected for the
/// definition (cube_kernel_exact-inl.h).
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "meridian/base/aligned_allocator.h"
#include "meridian/lut/cube_cells.h"
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
  /// The scale as one number, with which the point below a place is found; a little less if the axis is checked.
  float pointScale = 0;
  /// A value below `low` is at `lowPoint` + `lowFraction`, one above `high` at the last point.
  float low = 0;
  float high = 0;
  float lowPoint = 0;
  float lowFraction = 0;
};

/// How places on the axes are found.
enum class AxisForm : std::uint8_t {
  checked,  ///< for code values, of which those beside each point were tried when the cube was prepared
  any,      ///< for code values on axes that begin or end at other numbers
  floats,
};

/// How code values become numbers on the scale of the cube's axes:
/// ((code >> shiftRight) - black) / divisor * factor * unit. One of the divisor and the factor, a power of two, is 1.
struct InputScale {
  int shiftRight = 0;
  std::int32_t black = 0;
  double factor = 1;
  double divisor = 1;
  double unit = 1;

  /// Returns the number that a code value of 1 becomes, apart from the shift and black.
  [[nodiscard]] double scale() const noexcept { return factor / divisor * unit; }
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
  AxisForm axisForm = AxisForm::any;
  /// Whether no code value is so near a point between two cells that the definition might put it into the other one.
  bool codesAvoidPoints = false;
  float lastPoint = 0;
  /// From a point to its neighbours, in floats of `lattice`; along blue it is always 4.
  std::size_t redStride = 0;
  std::size_t greenStride = 0;
  /// Red, green, blue and a mark for each point, blue running fastest. Floating-point results are stored as they are.
  /// Those that become code values are stored less `center`, which makes them small and thus precise, with 16 bits for
  /// the fraction. Their marks are bounds on the errors in the cells around a point; the lowest bits say which channels
  /// are flat in the cell above it: have a value at all its points that the definition's own arithmetic returns
  /// unchanged.
  std::vector<float, AlignedAllocator<float, 64>> lattice;
  std::int32_t center = 0;
  /// Nearer than this to a cell's border, a place may be in the next cell by the definition.
  float flatMargin = 0;

  /// What 1 is in `lattice`, and the fraction that results beyond the lowest and the highest one are given. They are
  /// certain, since a larger bound than that is raised to `alwaysUncertain`.
  static constexpr float one = 65536;
  static constexpr float clampedFraction = 0x7F00;
  static constexpr float alwaysUncertain = 0x20000;

  /// Returns the channels that a mark calls flat: red 1, green 4, blue 16.
  static constexpr std::uint32_t flatBits = 0x1F;
  [[nodiscard]] static unsigned flatChannels(float mark) noexcept {
    return std::bit_cast<std::uint32_t>(mark) & flatBits;
  }
  [[nodiscard]] unsigned flatChannelsOfCell(std::size_t red, std::size_t green, std::size_t blue) const noexcept {
    return flatChannels(lattice[red * redStride + green * greenStride + blue * 4 + 3]);
  }

  /// How numbers on the cube's scale become code values: scaled, truncated, clamped to `lowestBefore` and
  /// `highestBefore`, shifted to the left, and clamped to `highest`. A shift to the right is a part of the scale, as
  /// `depthScale`, which changes no result: truncating before and after it is truncating after it.
  ResultScale resultScale;
  double depthScale = 1;
  int shiftLeft = 0;
  std::int32_t lowestBefore = 0;
  std::int32_t highestBefore = 0;
  std::int32_t highest = 0;

  /// Return the scale and the offset with which numbers of the cube become results. A code value of 1 is stored as
  /// `unit`; floating-point results are stored as they are, whatever `unit` is.
  [[nodiscard]] double storedScale(double unit) const noexcept {
    return formats ? resultScale.factor / resultScale.unit * depthScale * unit : 1 / definition.unit();
  }
  [[nodiscard]] double storedOffset(double unit) const noexcept {
    return formats ? (resultScale.offset * depthScale - center) * unit : 0;
  }

  /// Return the largest error of a fraction, and what the definition itself rounds at most, as a part of a code value.
  [[nodiscard]] double fractionError() const noexcept { return fractionError_; }
  [[nodiscard]] double definitionError() const noexcept { return definitionError_; }

  /// Returns the cells to convert an image of this many pixels with; null if they are not worth it.
  [[nodiscard]] const CubeCells* cellsFor(std::uint64_t pixels) const { return cells_->forPixels(*this, pixels); }

  /// Returns the smallest and the largest number in `lattice` that becomes a code value.
  [[nodiscard]] float least() const noexcept {
    return static_cast<float>(lowestBefore - center) * one + clampedFraction;
  }
  [[nodiscard]] float most() const noexcept {
    return static_cast<float>(highestBefore - center) * one + clampedFraction;
  }

 private:
  [[nodiscard]] bool isSteady(double value) const noexcept;
  [[nodiscard]] bool isFlat(const LutColor& point, double LutColor::* value, float stored) const noexcept;

  [[nodiscard]] double toResult(double value) const noexcept;
  [[nodiscard]] std::int32_t truncated(float stored) const noexcept;

  void prepareCodeValues();
  void prepareAxes();
  [[nodiscard]] bool findPointScale(const AxisRule& rule, double scale, FastAxis& axis) noexcept;
  void prepareLattice();
  void fillLattice();
  void storeBounds();

  /// The largest error of a fraction.
  double fractionError_ = 0;
  double definitionError_ = 0;
  std::unique_ptr<CubeCellsOnDemand> cells_ = std::make_unique<CubeCellsOnDemand>();
};

/// The source and the destination of some rows of pixels.
template <ImageSample Sample>
struct PixelRows {
  ImageView<const Sample> source;
  ImageView<Sample> destination;
};

/// Applies the cube to the rows with the best instructions that this machine has, by way of its cells unless they are
/// null. The images have to be usable.
void applyCube(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<std::uint8_t>& rows);
void applyCube(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<std::uint16_t>& rows);
void applyCube(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<float>& rows);

}  // namespace meridian::inline v0_2::detail
