#include "meridian/lut/lut_cube.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {
namespace {

/// Tracks the lowest and the highest of all numbers that it sees; 0 and 0 before the first.
class RangeTracker {
 public:
  void see(double number) noexcept {
    low_ = std::min(low_, number);
    high_ = std::max(high_, number);
  }
  void see(const LutColor& color) noexcept {
    see(color.red);
    see(color.green);
    see(color.blue);
  }
  [[nodiscard]] double low() const noexcept { return low_ <= high_ ? low_ : 0; }
  [[nodiscard]] double high() const noexcept { return low_ <= high_ ? high_ : 0; }

 private:
  double low_ = std::numeric_limits<double>::infinity();
  double high_ = -std::numeric_limits<double>::infinity();
};

RangeTracker rangeOf(std::span<const LutColor> colors) noexcept {
  RangeTracker range;
  for (const LutColor& color : colors) range.see(color);
  return range;
}

}  // namespace

ThreeDimensionalLutCube::~ThreeDimensionalLutCube() = default;
LutCube::~LutCube() = default;

LutCube::LutCube(std::shared_ptr<const LutValueTriplets> triplets, double minimum, double maximum)
    : triplets_(std::move(triplets)), lowValue_(minimum), highValue_(maximum) {
  if (triplets_ == nullptr) preconditionFailed("a LUT cube needs rows");
  const std::span<const LutColor> rows = triplets_->colors();
  faceSize_ = std::lround(std::cbrt(static_cast<float>(rows.size())));  // halves away from zero
  const auto face = static_cast<std::size_t>(faceSize_);
  const std::size_t points = face * face * face;
  if (rows.size() >= points) {
    colors_ = rows.data();
    return;
  }
  const double fill = rangeOf(rows).low();
  filled_.reserve(points);
  filled_.assign(rows.begin(), rows.end());
  filled_.resize(points, LutColor{fill, fill, fill});
  colors_ = filled_.data();
}

LutCube::LutCube(std::shared_ptr<const LutValueTriplets> triplets) : LutCube(std::move(triplets), 0, 0) {
  const auto face = static_cast<std::size_t>(faceSize_);
  const RangeTracker range = rangeOf({colors_, face * face * face});
  lowValue_ = range.low();
  highValue_ = range.high();
}

}  // namespace meridian::inline v0_2
