/// \file
/// The exact fallback: the definition in double precision, for a group of uncertain pixels at a time.
///
/// Every operation is the one that image_definition.cpp does, in the same order, so that every rounding is the same; a
/// sum or product in a vector rounds as a scalar one does, and nothing is fused. What the definition does for NaN, or
/// for axes without a length, is left out, since the filter does not apply to such cubes.
#if defined(MERIDIAN_LUT_CUBE_KERNEL_EXACT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef MERIDIAN_LUT_CUBE_KERNEL_EXACT_INL_H_
#undef MERIDIAN_LUT_CUBE_KERNEL_EXACT_INL_H_
#else
#define MERIDIAN_LUT_CUBE_KERNEL_EXACT_INL_H_
#endif

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <hwy/highway.h>

#include "meridian/lut/cube_kernel.h"
#include "meridian/lut/cube_kernel_planes-inl.h"

#if MERIDIAN_HAS_VECTORS

HWY_BEFORE_NAMESPACE();
namespace meridian::inline v0_2::detail::HWY_NAMESPACE {
namespace {

// Plain arrays are laid out as vector instructions need them, and the functions below pass their addresses.
// NOLINTBEGIN(modernize-avoid-c-arrays)

using DoubleTag = hn::ScalableTag<double>;
constexpr std::size_t doubleLanes = HWY_LANES(double);

/// Pixels that are converted together.
constexpr std::size_t exactGroup = 8;

/// Where a group is on one axis: the points around it, as distances in the lattice, and how far from them.
struct ExactPlaces {
  alignas(64) double lower[exactGroup];
  alignas(64) double upper[exactGroup];
  alignas(64) double fraction[exactGroup];
  alignas(64) double rest[exactGroup];  ///< 1 - fraction
};

/// Does, operation by operation, what the definition does from a code value to a place on an axis.
HWY_INLINE void findExactPlaces(const AxisRule& rule, double lastPoint, std::size_t stride, const InputScale& scale,
                                const double* values, ExactPlaces& places) {
  const DoubleTag d;
  const auto last = hn::Set(d, lastPoint);
  const auto one = hn::Set(d, 1.0);
  const auto distance = hn::Set(d, static_cast<double>(stride));
  for (std::size_t i = 0; i < exactGroup; i += doubleLanes) {
    const auto input = hn::Mul(hn::Div(hn::Load(d, values + i), hn::Set(d, scale.divisor)), hn::Set(d, scale.unit));
    const auto value = hn::Max(hn::Min(input, hn::Set(d, rule.high)), hn::Set(d, rule.low));
    const auto position = hn::Mul(hn::Div(hn::Sub(value, hn::Set(d, rule.offset)), hn::Set(d, rule.span)), last);
    const auto lower = hn::Min(hn::Max(hn::Floor(position), hn::Zero(d)), last);
    const auto fraction = hn::Sub(position, lower);
    hn::Store(hn::Mul(lower, distance), d, places.lower + i);
    hn::Store(hn::Mul(hn::Min(hn::Add(lower, one), last), distance), d, places.upper + i);
    hn::Store(fraction, d, places.fraction + i);
    hn::Store(hn::Sub(one, fraction), d, places.rest + i);
  }
}

/// A colour in registers: four lanes, of which the last is unused, or two and two.
struct ExactColor {
#if HWY_TARGET <= HWY_AVX2
  using Tag = hn::FixedTag<double, 4>;
  hn::Vec<Tag> all;

  static HWY_INLINE ExactColor load(const LutColor* color) {
    const Tag d;
    return {hn::MaskedLoad(hn::FirstN(d, 3), d, &color->red)};
  }
  HWY_INLINE ExactColor times(double factor) const { return {hn::Mul(all, hn::Set(Tag(), factor))}; }
  HWY_INLINE ExactColor plus(const ExactColor& other) const { return {hn::Add(all, other.all)}; }
  HWY_INLINE ExactColor minus(const ExactColor& other) const { return {hn::Sub(all, other.all)}; }
  HWY_INLINE void store(double* lanes) const { hn::StoreU(all, Tag(), lanes); }
#else
  using Tag = hn::FixedTag<double, 2>;
  hn::Vec<Tag> redGreen;
  hn::Vec<Tag> blue;

  static HWY_INLINE ExactColor load(const LutColor* color) {
    const Tag d;
    return {hn::LoadU(d, &color->red), hn::Set(d, color->blue)};
  }
  HWY_INLINE ExactColor times(double factor) const {
    return {hn::Mul(redGreen, hn::Set(Tag(), factor)), hn::Mul(blue, hn::Set(Tag(), factor))};
  }
  HWY_INLINE ExactColor plus(const ExactColor& other) const {
    return {hn::Add(redGreen, other.redGreen), hn::Add(blue, other.blue)};
  }
  HWY_INLINE ExactColor minus(const ExactColor& other) const {
    return {hn::Sub(redGreen, other.redGreen), hn::Sub(blue, other.blue)};
  }
  HWY_INLINE void store(double* lanes) const {
    hn::StoreU(redGreen, Tag(), lanes);
    hn::StoreU(blue, Tag(), lanes + 2);
  }
#endif
};

using ExactAxes = std::array<ExactPlaces, 3>;

HWY_INLINE ExactColor trilinearExactly(const LutColor* lattice, const ExactAxes& axes, std::size_t pixel) {
  const auto& [red, green, blue] = axes;
  const auto distance = [pixel](const double* distances) { return static_cast<std::ptrdiff_t>(distances[pixel]); };
  const LutColor* const lowerRed = lattice + distance(red.lower);
  const LutColor* const upperRed = lattice + distance(red.upper);
  const auto alongRed = [&](std::ptrdiff_t offset) HWY_ATTR {
    return ExactColor::load(lowerRed + offset)
        .times(red.rest[pixel])
        .plus(ExactColor::load(upperRed + offset).times(red.fraction[pixel]));
  };
  const auto alongGreen = [&](std::ptrdiff_t offset) HWY_ATTR {
    return alongRed(offset + distance(green.lower))
        .times(green.rest[pixel])
        .plus(alongRed(offset + distance(green.upper)).times(green.fraction[pixel]));
  };
  return alongGreen(distance(blue.lower))
      .times(blue.rest[pixel])
      .plus(alongGreen(distance(blue.upper)).times(blue.fraction[pixel]));
}

HWY_INLINE ExactColor tetrahedralExactly(const LutColor* lattice, const ExactAxes& axes, std::size_t pixel) {
  struct Step {
    double fraction;
    double distance;
  };
  const auto stepOf = [&](const ExactPlaces& places) {
    return Step{places.fraction[pixel], places.upper[pixel] - places.lower[pixel]};
  };
  Step first = stepOf(axes[0]);
  Step second = stepOf(axes[1]);
  Step third = stepOf(axes[2]);
  // The same exchanges as in the definition, so that equal fractions stay in its order.
  if (second.fraction > first.fraction) std::swap(first, second);
  if (third.fraction > second.fraction) std::swap(second, third);
  if (second.fraction > first.fraction) std::swap(first, second);
  const auto point = [&](double distance)
                         HWY_ATTR { return ExactColor::load(lattice + static_cast<std::ptrdiff_t>(distance)); };
  const double start = axes[0].lower[pixel] + axes[1].lower[pixel] + axes[2].lower[pixel];
  const ExactColor color = point(start);
  const ExactColor afterFirst = point(start + first.distance);
  const ExactColor afterSecond = point(start + first.distance + second.distance);
  const ExactColor afterThird = point(start + first.distance + second.distance + third.distance);
  return color.plus(afterFirst.minus(color).times(first.fraction))
      .plus(afterSecond.minus(afterFirst).times(second.fraction))
      .plus(afterThird.minus(afterSecond).times(third.fraction));
}

/// Does what ResultScale and limitedCodeValue do.
HWY_INLINE void limitExactly(const CubeKernel& kernel, const double* results, std::uint16_t* codes) {
  const DoubleTag d;
  const hn::Rebind<std::int32_t, DoubleTag> di;
  const hn::Rebind<std::uint16_t, DoubleTag> dc;
  const ResultScale& scale = kernel.resultScale;
  const int left = std::max(kernel.shift, 0);
  const int right = std::max(-kernel.shift, 0);
  for (std::size_t i = 0; i < exactGroup * 4; i += doubleLanes) {
    const auto inUnits = hn::Div(hn::Load(d, results + i), hn::Set(d, scale.unit));
    const auto result = hn::Add(hn::Mul(inUnits, hn::Set(d, scale.factor)), hn::Set(d, scale.offset));
    const auto limited = hn::Min(hn::Max(result, hn::Zero(d)), hn::Set(d, static_cast<double>(kernel.limitBefore)));
    const auto code = hn::ShiftRightSame(hn::ShiftLeftSame(hn::DemoteTo(di, limited), left), right);
    const auto clamped = hn::Max(hn::Min(code, hn::Set(di, kernel.highest)), hn::Set(di, kernel.lowest));
    hn::Store(hn::DemoteTo(dc, clamped), dc, codes + i);
  }
}

/// Pixels whose results are uncertain, collected from as many blocks as it takes to fill it.
struct UncertainPixels {
  static constexpr std::size_t enough = 64;
  static constexpr std::size_t capacity = enough + blockSize;

  alignas(64) double values[3][capacity];  ///< code values as InputScale converts them before the division
  alignas(64) std::uint16_t codes[capacity * 4];
  std::size_t rows[capacity];
  std::size_t columns[capacity];
  std::size_t count = 0;
};

/// Evaluates the definition for the pixels. The axes must have a length.
HWY_INLINE void convertExactly(const CubeKernel& kernel, UncertainPixels& pixels) {
  const CubeDefinition& definition = kernel.definition;
  const LutColor* const lattice = definition.cube->lattice().data();
  const double lastPoint = static_cast<double>(definition.faceSize - 1);
  const std::array strides{definition.strides.red, definition.strides.green, definition.strides.blue};
  const std::size_t rounded = (pixels.count + exactGroup - 1) / exactGroup * exactGroup;
  for (auto& values : pixels.values) std::fill(values + pixels.count, values + rounded, 0.0);
  for (std::size_t begin = 0; begin < pixels.count; begin += exactGroup) {
    ExactAxes axes;
    for (std::size_t channel = 0; channel < 3; ++channel) {
      findExactPlaces(definition.axes[channel], lastPoint, strides[channel], kernel.input,
                      pixels.values[channel] + begin, axes[channel]);
    }
    alignas(64) double results[exactGroup * 4];
    for (std::size_t i = 0; i < exactGroup; ++i) {
      const ExactColor color = definition.interpolation == LutInterpolation::trilinear
                                   ? trilinearExactly(lattice, axes, i)
                                   : tetrahedralExactly(lattice, axes, i);
      color.store(results + i * 4);
    }
    limitExactly(kernel, results, pixels.codes + begin * 4);
  }
}

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // MERIDIAN_HAS_VECTORS
#endif  // include guard for each target
