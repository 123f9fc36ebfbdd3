#include "meridian/lut/cube_kernel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "meridian/lut/cube_error_bounds.h"

namespace meridian::inline v0_2::detail {
namespace {

constexpr std::uint64_t mantissaBits = 0x000FFFFFFFFFFFFF;

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
  cells_->prepare(*this);
}

void CubeKernel::prepareCodeValues() {
  if (formats->areRounded()) {
    const CodeValueFormat& source = formats->source;
    input = {.black = static_cast<std::int32_t>(source.black()),
             .divisor = source.white() - source.black(),
             .unit = definition.unit()};
  } else if (definition.integerDepth) {
    const int shift = shiftBetween(formats->source.bitDepth, *definition.integerDepth);
    input = {.shiftRight = std::max(-shift, 0), .factor = std::ldexp(1.0, std::max(shift, 0))};
  } else {
    input = {.divisor = formats->source.white()};
  }
  const CodeValueFormat& destination = formats->destination;
  resultScale = definition.resultScale(*formats);
  highest = static_cast<std::int32_t>(destination.highest());
  const int shift = shiftBetween(definition.resultDepth(*formats), destination.bitDepth);
  if (shift > 0) {
    // From 16 bits on, everything but 0 exceeds the highest code value.
    shiftLeft = std::min(shift, 16);
    highestBefore = (highest >> shiftLeft) + 1;  // just enough to exceed it
  } else {
    depthScale = std::ldexp(1.0, shift);
    lowestBefore = static_cast<std::int32_t>(destination.lowest());
    highestBefore = highest;
  }
  center = (highestBefore + 1) / 2;
}

void CubeKernel::prepareAxes() {
  const double last = static_cast<double>(definition.faceSize - 1);
  lastPoint = static_cast<float>(last);
  // What 1 becomes on the axes' scale: as a sample of floating point, or as a code value after shift and black.
  const double unit = formats ? input.scale() : definition.unit();
  axisForm = formats ? AxisForm::checked : AxisForm::floats;
  double largestOffset = 0;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const AxisRule& rule = definition.axes[channel];
    FastAxis& axis = axes[channel];
    const double scale = unit / rule.span * last;
    axis.scaleHigh = withEightBits(scale);
    axis.scaleLow = static_cast<float>(scale - axis.scaleHigh);
    axis.pointScale = static_cast<float>(scale);
    const double offset = -rule.offset / rule.span * last;
    axis.offset = static_cast<float>(offset);
    largestOffset = std::max(largestOffset, std::fabs(offset));
    axis.low = roundedUp(rule.low / unit);
    axis.high = roundedDown(rule.high / unit);
    const AxisPosition lowestPlace = placeOnAxis(rule.position(rule.low, definition.faceSize), definition.faceSize);
    const AxisPosition inside = lowestPlace.lower == static_cast<std::size_t>(definition.faceSize - 1)
                                    ? AxisPosition{lowestPlace.lower - 1, lowestPlace.lower, 1}  // in the last cell
                                    : lowestPlace;
    // Before the first point results are not between those of a cell's points, and the bound does not hold.
    filterApplies = filterApplies && (!formats || input.black == 0 || lowestPlace.fraction >= 0);
    axis.lowPoint = static_cast<float>(inside.lower);
    axis.lowFraction = static_cast<float>(inside.fraction);
    filterApplies =
        filterApplies && std::isnormal(axis.scaleHigh) && std::isfinite(axis.offset) && rule.high >= rule.low;
  }
  // The product with scaleHigh is exact, for values of at most 16 bits. What is rounded: scaleLow, its product and the
  // sum with the offset, all at most 2^-7 of the place's number; the offset; and the last sum, which is about 1.
  fractionError_ = roundingError * (1 + 4 * (last + largestOffset) * 0x1p-7 + 4 * largestOffset);
  // Floating point has no bound that would tell, and a domain far from 0 may be shorter than its places are exact.
  constexpr double mostError = 0x1p-14;
  filterApplies = filterApplies && (formats || fractionError_ < mostError);
  flatMargin = roundedUp(2 * fractionError_ + 0x1p-40 * (last + largestOffset));
  if (axisForm != AxisForm::checked) return;
  codesAvoidPoints = true;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    if (channel > 0 && definition.axes[channel] == definition.axes[channel - 1]) {
      axes[channel] = axes[channel - 1];
    } else if (!findPointScale(definition.axes[channel], unit / definition.axes[channel].span * last, axes[channel])) {
      axisForm = AxisForm::any;
      codesAvoidPoints = false;
      return;
    }
  }
  // Then only scaleLow, its product and the last sum are rounded, which is about 1.
  fractionError_ = roundingError * (1 + 2 * last * 0x1p-7);
}

/// Finds a scale with which single precision puts every code value into its cell. A value on a point may be at the end
/// of the cell before it; one on the last point has to be. Returns false if no scale does. Clears codesAvoidPoints if a
/// code value is on or next to a point between two cells.
bool CubeKernel::findPointScale(const AxisRule& rule, double scale, FastAxis& axis) noexcept {
  const double unit = input.scale();
  // An end that takes part in the arithmetic has to be as short as the code values are.
  const bool endsExactly = static_cast<double>(axis.high) == rule.high / unit && hasSixteenBits(axis.high);
  constexpr float mostCode = 65535;
  const bool needsNoClamping = axis.offset == 0 && axis.low <= 0 && (endsExactly || axis.high >= mostCode);
  if (input.black != 0 || !needsNoClamping) return false;
  axis.high = std::min(axis.high, mostCode);
  for (int steps = 0; steps < 8 && axis.high * axis.pointScale >= lastPoint; ++steps) {
    axis.pointScale = std::nextafter(axis.pointScale, 0.0F);
  }
  const auto isRight = [&](double code) {
    const float value = std::min(static_cast<float>(std::max(code, 0.0)), axis.high);
    const double point = std::floor(value * axis.pointScale);
    const double fraction = static_cast<double>(value) * scale - point;
    return point < lastPoint && fraction >= 0 && fraction <= 1 + 0x1p-50 * static_cast<double>(lastPoint);
  };
  // Points never fall as code values rise, so if those around each point are right, all are.
  for (std::int64_t point = 0; point < definition.faceSize; ++point) {
    const double code = std::floor(static_cast<double>(point) / scale);
    for (const double near : {code - 1, code, code + 1, code + 2}) {
      if (!isRight(near)) return false;
      const bool isBetweenCells = point > 0 && point + 1 < definition.faceSize;
      if (isBetweenCells && std::fabs(near * scale - static_cast<double>(point)) <= flatMargin)
        codesAvoidPoints = false;
    }
  }
  return true;
}

/// Returns a point's value on the scale of the results.
double CubeKernel::toResult(double value) const noexcept {
  return formats ? resultScale(value) * depthScale : value / definition.unit();
}

/// Returns what single precision truncates a number in the lattice to, before it is shifted to the left.
std::int32_t CubeKernel::truncated(float stored) const noexcept {
  return (static_cast<std::int32_t>(std::lrint(std::clamp(stored, least(), most()))) >> 16) + center;
}

void CubeKernel::prepareLattice() {
  const auto face = static_cast<std::size_t>(definition.faceSize);
  double lowestValue = std::numeric_limits<double>::infinity();
  double highestValue = -lowestValue;
  bool hasNan = false;
  for (const LutColor& color : std::span(definition.cube->lattice().data(), face * face * face)) {
    lowestValue = std::min({lowestValue, color.red, color.green, color.blue});
    highestValue = std::max({highestValue, color.red, color.green, color.blue});
    hasNan = hasNan || std::isnan(color.red + color.green + color.blue);
  }
  const double lowestResult = toResult(lowestValue);
  const double highestResult = toResult(highestValue);
  constexpr double largest = 0x1p40;  // far more than a result that is not uncertain
  const bool isSmall = std::fabs(lowestResult) < largest && std::fabs(highestResult) < largest;
  const bool isFinite = std::isfinite(static_cast<float>(std::max(highestResult, -lowestResult)));
  // The definition yields 0 for NaN, which single precision would not.
  if (hasNan || (formats ? !isSmall : !isFinite)) {
    filterApplies = false;
    return;
  }
  fillLattice();
  if (!formats) return;  // floating-point results are used as they are
  definitionError_ = 0x1p-40 * (std::fabs(lowestResult) + std::fabs(highestResult)) * (1 + lastPoint);
  storeBounds();
}

void CubeKernel::fillLattice() {
  const auto face = static_cast<std::size_t>(definition.faceSize);
  const LutColor* const colors = definition.cube->lattice().data();
  greenStride = face * 4;
  redStride = face * greenStride;
  lattice.resize(face * redStride);
  // As toResult has it but for the last bits, of which a bound has room for more.
  const double scale = storedScale(one);
  const double offset = storedOffset(one);
  // Either the red or the blue index runs fastest in the cube.
  for (std::size_t green = 0; green < face; ++green) {
    for (std::size_t red = 0; red < face; ++red) {
      const LutColor* const line = colors + red * definition.strides.red + green * definition.strides.green;
      float* entry = lattice.data() + red * redStride + green * greenStride;
      for (std::size_t blue = 0; blue < face; ++blue) {
        const LutColor& point = line[blue * definition.strides.blue];
        const bool beginsCell = formats && std::max({red, green, blue}) + 1 < face;
        std::uint32_t mark = 0;
        std::uint32_t bit = 1;
        for (const auto value : channelValues) {
          *entry = static_cast<float>(point.*value * scale + offset);
          if (beginsCell && isSteady(point.*value) && isFlat(point, value, *entry)) mark |= bit;
          ++entry;
          bit *= 4;
        }
        *entry++ = std::bit_cast<float>(mark);
      }
    }
  }
}

/// Stores at each point the largest bound of the cells around it, which covers a place that the definition puts into
/// the next cell as well.
void CubeKernel::storeBounds() {
  // The constant is the definition's own error, and one rounding each of a result and of its bound to integers.
  const BlendErrors errors{.interpolation = definition.interpolation,
                           .fraction = roundedUp(fractionError_),
                           .constant = roundedUp(definitionError_ * one + 1.5)};
  const std::vector<float> bounds =
      errorBoundsAroundPoints(lattice.data(), static_cast<std::size_t>(definition.faceSize), errors);
  // What blending the bounds themselves may lose: a fraction's error, also beyond the cell, and the roundings.
  const auto raised = [](float bound) { return bound > clampedFraction / 2 ? alwaysUncertain : bound; };
  const float lost = roundedUp((16 * fractionError_ + 0x1p-20) * raised(std::ranges::max(bounds)));
  float* mark = lattice.data() + 3;
  double sum = 0;
  for (const float each : bounds) {
    const float bound = (raised(each) + lost) * (1 + 0x1p-18F);
    sum += std::min(bound, one / 2);
    // The lowest bits say which channels are flat.
    *mark = std::bit_cast<float>(((std::bit_cast<std::uint32_t>(bound) + flatBits) & ~flatBits) |
                                 std::bit_cast<std::uint32_t>(*mark));
    mark += 4;
  }
  constexpr double tooWide = one / 8;  // a quarter of all results would be uncertain
  filterApplies = filterApplies && sum / static_cast<double>(bounds.size()) <= tooWide;
}

/// Returns whether blends of points with this value yield exactly the value, by the definition's arithmetic. Trilinear
/// blends multiply it by two weights whose rounded sum is 1 and add the products; that leaves zeros as they are, and
/// powers of two, since scaling by them changes no rounding. Tetrahedral ones add multiples of differences, which
/// are 0.
bool CubeKernel::isSteady(double value) const noexcept {
  return definition.interpolation == LutInterpolation::tetrahedral || value == 0 ||
         (std::bit_cast<std::uint64_t>(value) & mantissaBits) == 0;
}

/// Returns whether a channel with a steady value has it at all eight points of the cell above a point, and truncating
/// it as it is stored in the lattice and in CubeCells gives what truncating it in double precision gives.
bool CubeKernel::isFlat(const LutColor& point, double LutColor::* value, float stored) const noexcept {
  const LatticeStrides& strides = definition.strides;
  for (unsigned corner = 1; corner < 8; ++corner) {
    const std::size_t distance = ((corner & 1U) != 0 ? strides.red : 0) + ((corner & 2U) != 0 ? strides.green : 0) +
                                 ((corner & 4U) != 0 ? strides.blue : 0);
    if ((&point)[distance].*value != point.*value) return false;
  }
  const double result = toResult(point.*value);
  const auto limited = [this](double number) { return std::clamp<double>(number, lowestBefore, highestBefore); };
  // Operation by operation what CubeCells stores.
  const double scaled = point.*value * storedScale(CubeCells::one) + storedOffset(CubeCells::one);
  const double inCells = std::floor(scaled + 0.5) / CubeCells::one + center;
  const double code = limited(std::floor(result));
  return truncated(stored) == code && limited(std::floor(inCells)) == code;
}

}  // namespace meridian::inline v0_2::detail
