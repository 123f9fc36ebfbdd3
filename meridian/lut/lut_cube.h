/// \file
/// A cube of colours: the values of a three-dimensional LUT. For example:
///
///     const LutCube cube(rows);
///     cube.lattice()[32][0][0];  // what the last point of the red axis yields, of 33 points per axis
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "meridian/export.h"
#include "meridian/lut/lut_values.h"

namespace meridian::inline v0_2 {

/// A view of a cube's colours: `lattice[red][green][blue]`, each index from 0 to `faceSize` - 1, which is not checked.
/// The colours are stored in one flat block, the blue index running fastest. Valid as long as the cube.
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

  /// Returns the first colour of the block of `faceSize`³.
  [[nodiscard]] constexpr const LutColor* data() const noexcept { return colors_; }

 private:
  const LutColor* colors_;
  std::size_t faceSize_;
};

/// The interface that interpolators read: a lattice and the range of its values.
class MERIDIAN_API ThreeDimensionalLutCube {
 public:
  ThreeDimensionalLutCube() = default;
  ThreeDimensionalLutCube(const ThreeDimensionalLutCube&) = delete;
  ThreeDimensionalLutCube& operator=(const ThreeDimensionalLutCube&) = delete;
  ThreeDimensionalLutCube(ThreeDimensionalLutCube&&) = delete;
  ThreeDimensionalLutCube& operator=(ThreeDimensionalLutCube&&) = delete;
  virtual ~ThreeDimensionalLutCube();

  /// Returns a view of the colours, valid as long as the cube.
  [[nodiscard]] virtual LutLattice lattice() const noexcept = 0;

  /// Returns the points per axis.
  [[nodiscard]] virtual std::int64_t faceSize() const noexcept = 0;

  /// Returns the range of the values: the range given to the constructor (for a file, that of all rows), otherwise that
  /// of the lattice.
  [[nodiscard]] virtual double lowValue() const noexcept = 0;
  [[nodiscard]] virtual double highValue() const noexcept = 0;
};

/// The cube that rows in file order make: the rows fill the lattice with its last index running fastest, so that
/// consecutive rows are neighbours on the blue axis. Published `.cube` files run along the red axis first; the order
/// here is kept deliberately, and whole images can have either (LutAxisOrder).
///
/// The points per axis are the cube root of the number of rows, rounded. Rows beyond the cube are not read; points
/// without a row get the lowest value placed, in all three channels. No rows make a cube without points.
class MERIDIAN_API LutCube final : public ThreeDimensionalLutCube {
 public:
  /// Makes a cube whose range is known. The rows are shared, not copied, if they fill the cube. Terminates the process
  /// for a null pointer.
  LutCube(std::shared_ptr<const LutValueTriplets> triplets, double minimum, double maximum);

  /// Makes a cube whose range is that of the values placed in it; 0 to 0 if there are none.
  explicit LutCube(std::shared_ptr<const LutValueTriplets> triplets);

  ~LutCube() override;

  [[nodiscard]] LutLattice lattice() const noexcept override { return {colors_, static_cast<std::size_t>(faceSize_)}; }
  [[nodiscard]] std::int64_t faceSize() const noexcept override { return faceSize_; }
  [[nodiscard]] double lowValue() const noexcept override { return lowValue_; }
  [[nodiscard]] double highValue() const noexcept override { return highValue_; }

 private:
  std::shared_ptr<const LutValueTriplets> triplets_;
  /// Used if the rows do not fill the cube.
  std::vector<LutColor> filled_;
  const LutColor* colors_ = nullptr;
  std::int64_t faceSize_ = 0;
  double lowValue_ = 0;
  double highValue_ = 0;
};

}  // namespace meridian::inline v0_2
