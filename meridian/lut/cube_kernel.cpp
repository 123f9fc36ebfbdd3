#include "meridian/lut/cube_kernel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace meridian::inline v0_2::detail {
namespace {

/// The largest relative error of one rounding to single precision.
constexpr double roundingError = 0x1p-24;

constexpr std::uint64_t mantissaBits = 0x000FFFFFFFFFFFFF;

/// Returns the largest error of rounding to single precision a number of at most the first power of two from this
/// magnitude on.
double roundingErrorUpTo(double magnitude) noexcept {
  const std::uint64_t bits = std::bit_cast<std::uint64_t>(magnitude) + mantissaBits;
  return std::bit_cast<double>(bits & ~mantissaBits) * (roundingError / 2);
}

constexpr std::array channelValues{&LutColor::red, &LutColor::green, &LutColor::blue};

/// Returns the number with only its eight leading bits.
float withEightBits(double number) noexcept {
  int exponent = 0;
  const double mantissa = std::frexp(number, &exponent);
  return static_cast<float>(std::ldexp(std::floor(mantissa * 0x1p8), exponent - 8));
}

/// Returns whether a product with a number of eight bits is exact.
bool hasSixteenBits(float number) noexcept { return (std::bit_cast<std::uint32_t>(number) & 0xFFU) == 0; }

float roundedUp(double number) noexcept {
  const auto rounded = static_cast<float>(number);
  return rounded < number ? std::nextafter(rounded, std::numeric_limits<float>::infinity()) : rounded;
}

float roundedDown(double number) noexcept { return -roundedUp(-number); }

/// Returns by how many bits `rescaledCodeValue` shifts a code value to the left.
int shiftBetween(std::int64_t from, std::int64_t to) noexcept {
  return from > 0 && to > 0 ? static_cast<int>(to - from) : 0;
}

}  // namespace

CubeKernel::CubeKernel(CubeDefinition cubeDefinition, const std::optional<ImageFormats>& imageFormats)
    : definition(std::move(cubeDefinition)), formats(imageFormats) {
  if (formats) prepareCodeValues();
  // With more points per axis their distances would not all be exact in single precision or fit into 32 bits.
  filterApplies = definition.faceSize >= 2 && definition.faceSize <= 200;
  for (const AxisRule& axis : definition.axes)
    filterApplies = filterApplies && axis.span > 0 && std::isfinite(axis.span);
  if (!filterApplies) return;
  prepareAxes();
  prepareLattice();
}

void CubeKernel::prepareCodeValues() {
  if (formats->areRounded()) {
    const CodeValueFormat& source = formats->source;
    input = {.black = static_cast<std::int32_t>(source.black()),
             .divisor = source.white() - source.black(),
             .unit = definition.unit()};
  } else if (definition.integerDepth) {
    const auto shiftLeft = shiftBetween(formats->source.bitDepth, *definition.integerDepth);
    input = {.shiftRight = std::max(-shiftLeft, 0), .factor = std::ldexp(1.0, std::max(shiftLeft, 0))};
  } else {
    input = {.divisor = formats->source.white()};
  }
  const CodeValueFormat& destination = formats->destination;
  resultScale = definition.resultScale(*formats);
  shift = std::clamp(shiftBetween(definition.resultDepth(*formats), destination.bitDepth), -31, 31);
  lowest = static_cast<std::int32_t>(destination.lowest());
  highest = static_cast<std::int32_t>(destination.highest());
  // Just enough to exceed the limit after the shift.
  limitBefore = shift > 0 ? (highest >> shift) + 1 : std::numeric_limits<std::int32_t>::max();
}

void CubeKernel::prepareAxes() {
  const double last = static_cast<double>(definition.faceSize - 1);
  lastPoint = static_cast<float>(last);
  // What 1 becomes on the axes' scale: as a sample of floating point, or as a code value after shift and black.
  const double unit = formats ? input.factor / input.divisor * input.unit : definition.unit();
  limits = formats && input.black == 0 ? AxisLimits::exactEnd : AxisLimits::both;
  double largestOffset = 0;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const AxisRule& rule = definition.axes[channel];
    FastAxis& axis = axes[channel];
    const double scale = unit / rule.span * last;
    axis.scaleHigh = withEightBits(scale);
    axis.scaleLow = static_cast<float>(scale - axis.scaleHigh);
    axis.offset = static_cast<float>(-rule.offset / rule.span * last);
    largestOffset = std::max(largestOffset, std::fabs(-rule.offset / rule.span * last));
    axis.low = roundedUp(rule.low / unit);
    axis.high = roundedDown(rule.high / unit);
    const AxisPosition lowestPlace = placeOnAxis(rule.position(rule.low, definition.faceSize), definition.faceSize);
    const AxisPosition inside = lowestPlace.lower == static_cast<std::size_t>(definition.faceSize - 1)
                                    ? AxisPosition{lowestPlace.lower - 1, lowestPlace.lower, 1}  // in the last cell
                                    : lowestPlace;
    axis.lowPoint = static_cast<float>(inside.lower);
    axis.lowFraction = static_cast<float>(inside.fraction);
    filterApplies =
        filterApplies && std::isnormal(axis.scaleHigh) && std::isfinite(axis.offset) && rule.high >= rule.low;
    // An end that takes part in the arithmetic has to be as short as the code values are.
    const bool endsExactly = static_cast<double>(axis.high) == rule.high / unit && hasSixteenBits(axis.high);
    const AxisLimits end = endsExactly ? AxisLimits::exactEnd : AxisLimits::end;
    limits = std::max(limits, rule.low > 0 ? AxisLimits::both : end);
  }
  // What is rounded: scaleLow, its product and the sum with the offset, all at most 2^-7 of a place; the offset; and
  // the last sum, which is about 1. The product with scaleHigh is exact, for values of at most 16 bits.
  fractionError_ = roundingError * (1 + 4 * (last + largestOffset) * 0x1p-7 + 4 * largestOffset);
  flatMargin = roundedUp(2 * fractionError_ + 0x1p-40 * (last + largestOffset));
}

/// Returns a point's value on the scale of the results.
double CubeKernel::toResult(double value) const noexcept {
  return formats ? resultScale(value) : value / definition.unit();
}

void CubeKernel::prepareLattice() {
  const auto face = static_cast<std::size_t>(definition.faceSize);
  double lowestValue = std::numeric_limits<double>::infinity();
  double highestValue = -lowestValue;
  double steepest = 0;
  const auto noteStep = [&](const LutColor& color, const LutColor& neighbour) {
    for (const auto value : channelValues) {
      steepest = std::max(steepest, std::fabs(neighbour.*value - color.*value));
    }
  };
  const LutColor* color = definition.cube->lattice().data();
  for (std::size_t i = 0; i < face; ++i) {
    for (std::size_t j = 0; j < face; ++j) {
      for (std::size_t k = 0; k < face; ++k, ++color) {
        lowestValue = std::min({lowestValue, color->red, color->green, color->blue});
        highestValue = std::max({highestValue, color->red, color->green, color->blue});
        if (i + 1 < face) noteStep(*color, color[face * face]);
        if (j + 1 < face) noteStep(*color, color[face]);
        if (k + 1 < face) noteStep(*color, color[1]);
      }
    }
  }
  const double lowestResult = toResult(lowestValue);
  const double highestResult = toResult(highestValue);
  steepest = formats ? steepest / resultScale.unit * resultScale.factor : steepest / definition.unit();
  constexpr double largestExact = 1 << 21;
  const bool isExact = std::fabs(lowestResult) < largestExact && std::fabs(highestResult) < largestExact;
  if (formats && !isExact) {
    filterApplies = false;  // single precision cannot tell such large results apart
    return;
  }
  if (formats) center = static_cast<std::int32_t>(std::floor((lowestResult + highestResult) / 2));
  if (!std::isfinite(static_cast<float>(std::max(highestResult - center, center - lowestResult)))) {
    filterApplies = false;
    return;
  }
  fillLattice();
  if (!formats) return;  // floating-point results are used as they are
  definitionError_ = 0x1p-40 * (std::fabs(lowestResult) + std::fabs(highestResult) + steepest * lastPoint);
  storeBounds();
}

void CubeKernel::fillLattice() {
  const auto face = static_cast<std::size_t>(definition.faceSize);
  const LutColor* const colors = definition.cube->lattice().data();
  greenStride = face * 4;
  redStride = face * greenStride;
  lattice.resize(face * redStride);
  float* entry = lattice.data();
  for (std::size_t red = 0; red < face; ++red) {
    for (std::size_t green = 0; green < face; ++green) {
      for (std::size_t blue = 0; blue < face; ++blue) {
        const LutColor& point =
            colors[red * definition.strides.red + green * definition.strides.green + blue * definition.strides.blue];
        const bool beginsCell = std::max({red, green, blue}) + 1 < face;
        std::uint32_t mark = 0;
        std::uint32_t bit = 1;
        for (const auto value : channelValues) {
          *entry = static_cast<float>(toResult(point.*value) - center);
          if (beginsCell && isFlat(point, value, *entry)) mark |= bit;
          ++entry;
          bit *= 2;
        }
        *entry++ = std::bit_cast<float>(mark);
      }
    }
  }
}

/// Returns a bound on the error of every result in a cell: the stored points are rounded once; then each of three
/// blends rounds a difference of neighbours and a sum, and carries the fraction's error. `largest` is the largest
/// magnitude of the cell's points, `steepest` the largest difference along its edges, which no difference of blends
/// exceeds, since it is a blend of such differences.
double CubeKernel::boundOfErrors(double largest, double steepest) const noexcept {
  const double storedError = roundingErrorUpTo(largest);
  const double stepError = roundingErrorUpTo(1.5 * steepest + 16 * storedError) + fractionError_ * steepest;
  // No point is beyond the power of two that `largest` is or is followed by, and a blend exceeds it by the step's error
  // alone. Where that is less than half the distance to the next number there, rounding takes it back to the power of
  // two, nearer to the true sum. Tetrahedral blends go on from sums that have an error already.
  const bool endsAtPower = definition.interpolation == LutInterpolation::trilinear && stepError <= 2 * storedError;
  const double sumError = endsAtPower ? storedError : roundingErrorUpTo(1.01 * largest + 8 * stepError);
  return (storedError + 3 * (sumError + stepError)) * 1.01 + definitionError_;
}

/// Returns the bound of the cell above each point; 0 for points that begin no cell.
std::vector<float> CubeKernel::boundsOfCells() const {
  const auto face = static_cast<std::size_t>(definition.faceSize);
  std::vector<float> bounds(face * face * face);
  /// Four points with the same place on the blue axis.
  struct Side {
    std::array<std::array<float, 3>, 4> points;
    float largest = 0;
    float steepest = 0;
  };
  static constexpr std::array<std::pair<std::size_t, std::size_t>, 4> edges{{{0, 1}, {0, 2}, {1, 3}, {2, 3}}};
  const auto sideAt = [this](const float* point) {
    Side side;
    const std::array corners{point, point + greenStride, point + redStride, point + redStride + greenStride};
    for (std::size_t channel = 0; channel < 3; ++channel) {
      for (std::size_t corner = 0; corner < 4; ++corner) {
        side.points[corner][channel] = corners[corner][channel];
        side.largest = std::max(side.largest, std::fabs(corners[corner][channel]));
      }
      for (const auto& [one, other] : edges) {
        side.steepest = std::max(side.steepest, std::fabs(corners[other][channel] - corners[one][channel]));
      }
    }
    return side;
  };
  for (std::size_t red = 0; red + 1 < face; ++red) {
    for (std::size_t green = 0; green + 1 < face; ++green) {
      const float* const row = lattice.data() + red * redStride + green * greenStride;
      float* const into = bounds.data() + (red * face + green) * face;
      Side lower = sideAt(row);
      for (std::size_t blue = 0; blue + 1 < face; ++blue) {
        const Side upper = sideAt(row + (blue + 1) * 4);
        float steepest = std::max(lower.steepest, upper.steepest);
        for (std::size_t corner = 0; corner < 4; ++corner) {
          for (std::size_t channel = 0; channel < 3; ++channel) {
            steepest = std::max(steepest, std::fabs(upper.points[corner][channel] - lower.points[corner][channel]));
          }
        }
        // What is stored is rounded, and so are the differences.
        const double largest = std::max(lower.largest, upper.largest) * (1 + 0x1p-22);
        into[blue] = roundedUp(boundOfErrors(largest, steepest * (1 + 0x1p-22) + 2 * roundingErrorUpTo(largest)));
        lower = upper;
      }
    }
  }
  return bounds;
}

/// Stores at each point the largest bound of the cells around it, which covers a place that the definition puts into
/// the next cell as well.
void CubeKernel::storeBounds() {
  const auto face = static_cast<std::size_t>(definition.faceSize);
  std::vector<float> bounds = boundsOfCells();
  // What blending the bounds themselves may lose: a fraction's error, also beyond the cell, and the roundings.
  const double lost = (16 * fractionError_ + 0x1p-20) * std::ranges::max(bounds);
  double sum = 0;
  for (const float bound : bounds) sum += std::min(bound + lost, 0.5);
  const auto cells = static_cast<double>((face - 1) * (face - 1) * (face - 1));
  constexpr double tooWide = 0.125;  // a quarter of all results would be uncertain
  filterApplies = filterApplies && sum / cells <= tooWide;

  for (const std::size_t stride : {std::size_t{1}, face, face * face}) {
    for (std::size_t place = bounds.size(); place-- > stride;) {
      // At the beginning of an axis this is the end of another row, where there is no cell and thus no bound.
      bounds[place] = std::max(bounds[place], bounds[place - stride]);
    }
  }
  for (std::size_t place = 0; place < bounds.size(); ++place) {
    float& mark = lattice[place * 4 + 3];
    const auto flat = std::bit_cast<std::uint32_t>(mark);
    mark = std::bit_cast<float>(((std::bit_cast<std::uint32_t>(roundedUp(bounds[place] + lost)) + 7) & ~7U) | flat);
  }
}

/// Returns whether blends of points with this value yield exactly the value, by the definition's arithmetic. Trilinear
/// blends multiply it by two weights whose rounded sum is 1 and add the products; that leaves zeros as they are, and
/// powers of two, since scaling by them changes no rounding. Tetrahedral ones add multiples of differences, which
/// are 0.
bool CubeKernel::isSteady(double value) const noexcept {
  return definition.interpolation == LutInterpolation::tetrahedral || value == 0 ||
         (std::bit_cast<std::uint64_t>(value) & mantissaBits) == 0;
}

/// Returns whether a channel has the same steady value at all eight points of the cell above a point, and truncating it
/// in single precision gives what truncating it in double precision gives.
bool CubeKernel::isFlat(const LutColor& point, double LutColor::* value, float stored) const noexcept {
  if (!isSteady(point.*value)) return false;
  if (formats && std::floor(double{stored}) + center != std::floor(toResult(point.*value))) return false;
  const LatticeStrides& strides = definition.strides;
  for (unsigned corner = 1; corner < 8; ++corner) {
    const std::size_t distance = ((corner & 1U) != 0 ? strides.red : 0) + ((corner & 2U) != 0 ? strides.green : 0) +
                                 ((corner & 4U) != 0 ? strides.blue : 0);
    if ((&point)[distance].*value != point.*value) return false;
  }
  return true;
}

}  // namespace meridian::inline v0_2::detail
