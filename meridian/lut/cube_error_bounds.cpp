#include "meridian/lut/cube_error_bounds.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace meridian::inline v0_2::detail {
namespace {

/// Returns the largest error of rounding to single precision a number of at most the first power of two from this
/// magnitude on.
float roundingErrorUpTo(float magnitude) noexcept {
  constexpr std::uint32_t mantissa = 0x007FFFFF;
  const float power = std::bit_cast<float>((std::bit_cast<std::uint32_t>(magnitude) + mantissa) & ~mantissa);
  return power * static_cast<float>(roundingError / 2);
}

/// Returns the largest number. Compilers turn it into vector instructions, unlike a list of numbers.
float largest(float number) noexcept { return number; }
template <typename... Numbers>
float largest(float first, Numbers... others) noexcept {
  return std::max(first, largest(others...));
}

float largestOf(const float* point) noexcept {
  return largest(std::fabs(point[0]), std::fabs(point[1]), std::fabs(point[2]));
}

float largestStep(const float* point, const float* neighbour) noexcept {
  return largest(std::fabs(neighbour[0] - point[0]), std::fabs(neighbour[1] - point[1]),
                 std::fabs(neighbour[2] - point[2]));
}

/// Values of the points of a plane across the red axis, followed by zeros for the neighbours beyond its end. At the end
/// of a line, where no cell begins, what is computed from neighbours has no meaning.
using PlaneValues = std::vector<float>;

/// The squares of four points in a plane: the largest magnitude of each and its steepest edge.
struct Squares {
  explicit Squares(std::size_t size) : largest(size), steepest(size) {}

  PlaneValues largest;
  PlaneValues steepest;
};

class CellBounds {
 public:
  CellBounds(const float* lattice, std::size_t faceSize, const BlendErrors& errors)
      : lattice_(lattice),
        face_(faceSize),
        plane_(face_ * face_),
        errors_(errors),
        magnitudes_(plane_ + face_ + 1),
        alongRed_(plane_ + face_ + 1),
        alongGreen_(plane_ + face_ + 1),
        alongBlue_(plane_ + face_ + 1),
        cells_(plane_) {}

  [[nodiscard]] std::vector<float> aroundPoints() {
    std::vector<float> bounds(face_ * plane_);
    Squares lower(plane_);
    Squares upper(plane_);
    findSquares(0, lower);
    for (std::size_t red = 0; red + 1 < face_; ++red) {
      findSquares(red + 1, upper);
      findCells(red, lower, upper);
      float* const into = bounds.data() + red * plane_;
      for (std::size_t i = 0; i < plane_; ++i) into[i] = std::max(into[i], cells_[i]);
      std::copy_n(cells_.begin(), plane_, into + plane_);
      std::swap(lower, upper);
    }
    return bounds;
  }

 private:
  void findSquares(std::size_t red, Squares& squares) {
    const float* const points = lattice_ + red * plane_ * 4;
    for (std::size_t i = 0; i < plane_; ++i) magnitudes_[i] = largestOf(points + i * 4);
    for (std::size_t i = 0; i + 1 < plane_; ++i) alongBlue_[i] = largestStep(points + i * 4, points + (i + 1) * 4);
    for (std::size_t i = 0; i + face_ < plane_; ++i) {
      alongGreen_[i] = largestStep(points + i * 4, points + (i + face_) * 4);
    }
    for (std::size_t i = 0; i < plane_; ++i) {
      squares.largest[i] = largestOfSquare(magnitudes_, i);
      squares.steepest[i] = largest(alongGreen_[i], alongGreen_[i + 1], alongBlue_[i], alongBlue_[i + face_]);
    }
  }

  /// Finds the bounds of the cells from a plane to the next, and the largest of those around each point.
  void findCells(std::size_t red, const Squares& lower, const Squares& upper) {
    const float* const points = lattice_ + red * plane_ * 4;
    const float* const next = points + plane_ * 4;
    for (std::size_t i = 0; i < plane_; ++i) alongRed_[i] = largestStep(points + i * 4, next + i * 4);
    for (std::size_t i = 0; i < plane_; ++i) {
      const float steepest = largest(lower.steepest[i], upper.steepest[i], largestOfSquare(alongRed_, i));
      cells_[i] = errors_.bound(std::max(lower.largest[i], upper.largest[i]), steepest);
    }
    // No cell begins at the end of an axis.
    std::fill(cells_.end() - static_cast<std::ptrdiff_t>(face_), cells_.end(), 0.0F);
    for (std::size_t i = face_ - 1; i < plane_; i += face_) cells_[i] = 0;
    // From each point's own cell to those around it, where the cell before the first of a line is that 0.
    for (const std::size_t distance : {std::size_t{1}, face_}) {
      for (std::size_t i = plane_; i-- > distance;) cells_[i] = std::max(cells_[i], cells_[i - distance]);
    }
  }

  [[nodiscard]] float largestOfSquare(const PlaneValues& values, std::size_t i) const noexcept {
    return largest(values[i], values[i + 1], values[i + face_], values[i + face_ + 1]);
  }

  const float* lattice_;
  std::size_t face_;
  std::size_t plane_;
  const BlendErrors& errors_;
  PlaneValues magnitudes_;
  PlaneValues alongRed_;
  PlaneValues alongGreen_;
  PlaneValues alongBlue_;
  PlaneValues cells_;
};

}  // namespace

/// The stored points are rounded once; then each of three blends rounds a difference of neighbours, its product with
/// the fraction where instructions do not fuse it with the sum, and the sum, and carries the fraction's error. No
/// difference of blends exceeds the steepest edge, since it is a blend of edges.
float BlendErrors::bound(float largest, float steepest) const noexcept {
  // What is stored is rounded, and so are the differences.
  largest *= 1 + 0x1p-21F;
  const float stored = roundingErrorUpTo(largest);
  steepest = steepest * (1 + 0x1p-21F) + 2 * stored;
  const float step = 2 * roundingErrorUpTo(1.5F * steepest + 16 * stored) + fraction * steepest;
  // No point is beyond the power of two that `largest` is or is followed by, and a blend exceeds it by the step's error
  // alone. Where that is less than half the distance to the next number there, rounding takes it back to the power of
  // two, nearer to the true sum. Tetrahedral blends go on from sums that have an error already.
  const bool endsAtPower = interpolation == LutInterpolation::trilinear && step <= 2 * stored;
  const float anywhere = roundingErrorUpTo(1.01F * largest + 8 * step);
  const float sum = endsAtPower ? stored : anywhere;
  return (stored + 3 * (sum + step)) * 1.01F + constant;
}

std::vector<float> errorBoundsAroundPoints(const float* lattice, std::size_t faceSize, const BlendErrors& errors) {
  return CellBounds(lattice, faceSize, errors).aroundPoints();
}

}  // namespace meridian::inline v0_2::detail
