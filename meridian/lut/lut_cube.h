// A cube of colours, the heart of a three-dimensional look-up table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "meridian/export.h"
#include "meridian/lut/lut_values.h"

namespace meridian::inline v0_2 {

/// A view of a cube's colours: `lattice[red][green][blue]`, each index from 0 to `faceSize` - 1, which is not checked.
/// The colours lie in one flat block, the blue index running fastest. Valid while the cube is there.
class LutLattice {
 public:
  class Line {
   public:
    constexpr Line(const LutColor* colors) noexcept : colors_(colors) {}  // NOLINT(google-explicit-constructor)
    [[nodiscard]] constexpr const LutColor& operator[](std::size_t blue) const noexcept { return colors_[blue]; }

   private:
    const LutColor* colors_;
  };
  class Plane {
   public:
    constexpr Plane(const LutColor* colors, std::size_t faceSize) noexcept : colors_(colors), faceSize_(faceSize) {}
    [[nodiscard]] constexpr Line operator[](std::size_t green) const noexcept { return colors_ + green * faceSize_; }

   private:
    const LutColor* colors_;
    std::size_t faceSize_;
  };

  constexpr LutLattice(const LutColor* colors, std::size_t faceSize) noexcept : colors_(colors), faceSize_(faceSize) {}

  [[nodiscard]] constexpr Plane operator[](std::size_t red) const noexcept {
    return {colors_ + red * faceSize_ * faceSize_, faceSize_};
  }

  /// The first colour of the block of `faceSize`³.
  [[nodiscard]] constexpr const LutColor* data() const noexcept { return colors_; }

 private:
  const LutColor* colors_;
  std::size_t faceSize_;
};

/// What interpolators read: a lattice and the range of its values.
class MERIDIAN_API ThreeDimensionalLutCube {
 public:
  ThreeDimensionalLutCube() = default;
  ThreeDimensionalLutCube(const ThreeDimensionalLutCube&) = delete;
  ThreeDimensionalLutCube& operator=(const ThreeDimensionalLutCube&) = delete;
  ThreeDimensionalLutCube(ThreeDimensionalLutCube&&) = delete;
  ThreeDimensionalLutCube& operator=(ThreeDimensionalLutCube&&) = delete;
  virtual ~ThreeDimensionalLutCube();

  [[nodiscard]] virtual LutLattice lattice() const noexcept = 0;

  /// Points per axis.
  [[nodiscard]] virtual std::int64_t faceSize() const noexcept = 0;

  /// The range of the values: as it was given, which for a file is that of all its rows, or that of the lattice.
  [[nodiscard]] virtual double lowValue() const noexcept = 0;
  [[nodiscard]] virtual double highValue() const noexcept = 0;
};

/// The cube that rows in file order make: the rows fill the lattice with its last index running fastest, so that the
/// rows that follow each other in the file lie along the blue axis. Published `.cube` files run along the red axis
/// first; the order here is kept on purpose, and whole images can be had either way (LutAxisOrder).
///
/// The points per axis are the cube root of the number of rows, rounded. Rows beyond the cube are not read; points
/// beyond the rows get the lowest value placed, in all three channels, or 0 when there is no row at all,
/// which makes a cube of no points.
class MERIDIAN_API LutCube final : public ThreeDimensionalLutCube {
 public:
  /// A cube with its range known. The rows are shared, not copied, where they fill the cube. A null pointer stops the
  /// process.
  LutCube(std::shared_ptr<const LutValueTriplets> triplets, double minimum, double maximum);

  /// A cube whose range is that of the values placed in it; 0 to 0 when there is none.
  explicit LutCube(std::shared_ptr<const LutValueTriplets> triplets);

  ~LutCube() override;

  [[nodiscard]] LutLattice lattice() const noexcept override { return {colors_, static_cast<std::size_t>(faceSize_)}; }
  [[nodiscard]] std::int64_t faceSize() const noexcept override { return faceSize_; }
  [[nodiscard]] double lowValue() const noexcept override { return lowValue_; }
  [[nodiscard]] double highValue() const noexcept override { return highValue_; }

 private:
  std::shared_ptr<const LutValueTriplets> triplets_;
  /// Used where the rows do not fill the cube.
  LutColorBlock filled_;
  const LutColor* colors_ = nullptr;
  std::int64_t faceSize_ = 0;
  double lowValue_ = 0;
  double highValue_ = 0;
};

}  // namespace meridian::inline v0_2
