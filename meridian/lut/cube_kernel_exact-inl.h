/// \file
/// The exact fallback: the definition in double precision, for a group of uncertain pixels at a time.
///
/// Every operation is the one that image_definition.cpp does, in the same order, so that every rounding is the same; a
/// sum or product in a vector rounds as a scalar one does. One quotient is found in another way that rounds the same
/// (wholeQuotient); nothing else is fused. What the definition does for NaN, or for axes without a length, is left out,
/// since the filter does not apply to such cubes.
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

/// At most as wide as a colour: wider instructions beside these slow both down.
using DoubleTag = hn::CappedTag<double, 4>;
constexpr std::size_t doubleLanes = std::min<std::size_t>(HWY_LANES(double), 4);

/// Pixels that are converted together: so many that processors need not wait between the steps.
constexpr std::size_t exactGroup = 32;
static_assert(pixelStep<std::uint8_t>() % exactGroup == 0 && pixelStep<std::uint16_t>() % exactGroup == 0);

/// The code values of some pixels, a plane for each channel.
using CodePlanes = std::array<const std::uint16_t*, 3>;

/// Where a group is in the lattice: each pixel's cell, how far it is from the cell's first point on each axis, and how
/// far the next point on the axis is in the lattice.
struct ExactPlaces {
  alignas(64) std::int32_t cells[exactGroup];
  alignas(64) double fractions[3][exactGroup];
  alignas(64) double rests[3][exactGroup];  ///< 1 - fraction
  alignas(64) double steps[3][exactGroup];  ///< for tetrahedra
};

/// Divides, which takes long; every number is itself divided by 1.
HWY_INLINE hn::Vec<DoubleTag> quotient(hn::Vec<DoubleTag> number, double divisor) {
  return divisor == 1 ? number : hn::Div(number, hn::Set(DoubleTag(), divisor));
}

/// Divides whole numbers of at most 16 bits without a division, which takes long. The product with the reciprocal is
/// within two units in the last place of the quotient, so what it leaves of the number has few bits and is exact. Its
/// share is added with an error of 2^-104 of the quotient before the only rounding that counts. That rounds to the
/// double that the quotient itself rounds to, because the quotient is never that near to a middle between two doubles:
/// the distance of n / d from a middle m / 2^k is a whole number of 1 / (d * 2^k), which is at least 2^-70 of the
/// quotient, and not 0, since a quotient of so few bits is a double itself.
HWY_INLINE hn::Vec<DoubleTag> wholeQuotient(hn::Vec<DoubleTag> number, double divisor) {
#if HWY_NATIVE_FMA
  const DoubleTag d;
  const auto reciprocal = hn::Set(d, 1 / divisor);
  const auto near = hn::Mul(number, reciprocal);
  return hn::MulAdd(hn::NegMulAdd(near, hn::Set(d, divisor), number), reciprocal, near);
#else
  return hn::Div(number, hn::Set(DoubleTag(), divisor));
#endif
}

/// Does, operation by operation, what the definition does from code values to places on the axes. It puts the last
/// point of an axis into a cell of its own; for trilinear blends it is the end of the cell before, where its weight is
/// 1 and that of the point before is 0, which yields the same.
template <LutInterpolation interpolation>
HWY_INLINE void findExactPlaces(const CubeKernel& kernel, const CodePlanes& codes, std::size_t begin,
                                ExactPlaces& places) {
  const DoubleTag d;
  const hn::Rebind<std::int32_t, DoubleTag> di;
  const hn::Rebind<std::uint16_t, DoubleTag> dc;
  constexpr bool isTrilinear = interpolation == LutInterpolation::trilinear;
  const CubeDefinition& definition = kernel.definition;
  const std::array strides{definition.strides.red, definition.strides.green, definition.strides.blue};
  const auto last = hn::Set(d, static_cast<double>(definition.faceSize - 1));
  const auto lastCell = hn::Set(d, static_cast<double>(definition.faceSize - (isTrilinear ? 2 : 1)));
  const auto one = hn::Set(d, 1.0);
  for (std::size_t i = 0; i < exactGroup; i += doubleLanes) {
    auto cells = hn::Zero(d);
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const AxisRule& rule = definition.axes[channel];
      const auto code =
          hn::ShiftRightSame(hn::PromoteTo(di, hn::LoadU(dc, codes[channel] + begin + i)), kernel.input.shiftRight);
      const auto number = hn::PromoteTo(d, hn::Sub(code, hn::Set(di, kernel.input.black)));
      const auto scaled = hn::Mul(wholeQuotient(number, kernel.input.divisor), hn::Set(d, kernel.input.factor));
      const auto input = hn::Mul(scaled, hn::Set(d, kernel.input.unit));
      const auto value = hn::Max(hn::Min(input, hn::Set(d, rule.high)), hn::Set(d, rule.low));
      const auto position = hn::Mul(quotient(hn::Sub(value, hn::Set(d, rule.offset)), rule.span), last);
      const auto lower = hn::Min(hn::Max(hn::Floor(position), hn::Zero(d)), lastCell);
      const auto fraction = hn::Sub(position, lower);
      const auto distance = hn::Set(d, static_cast<double>(strides[channel]));
      cells = hn::Add(cells, hn::Mul(lower, distance));  // exact, as all whole numbers here are
      hn::Store(fraction, d, places.fractions[channel] + i);
      hn::Store(hn::Sub(one, fraction), d, places.rests[channel] + i);
      if constexpr (!isTrilinear) {
        hn::Store(hn::IfThenElseZero(hn::Lt(lower, last), distance), d, places.steps[channel] + i);
      }
    }
    hn::StoreU(hn::DemoteTo(di, cells), di, places.cells + i);
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
  /// Loads a colour that another follows, which is faster.
  static HWY_INLINE ExactColor loadInner(const LutColor* color) { return {hn::LoadU(Tag(), &color->red)}; }
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
  static HWY_INLINE ExactColor loadInner(const LutColor* color) { return load(color); }
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

HWY_INLINE ExactColor trilinearExactly(const LutColor* lattice, const LatticeStrides& strides,
                                       const ExactPlaces& places, std::size_t pixel) {
  const LutColor* const first = lattice + places.cells[pixel];
  const auto blend = [&](const ExactColor& lower, const ExactColor& upper, std::size_t channel) HWY_ATTR {
    return lower.times(places.rests[channel][pixel]).plus(upper.times(places.fractions[channel][pixel]));
  };
  // Of the eight corners only the last can be the lattice's last point.
  const auto alongRed = [&](std::size_t from) HWY_ATTR {
    return blend(ExactColor::loadInner(first + from), ExactColor::loadInner(first + from + strides.red), 0);
  };
  const std::size_t last = strides.green + strides.blue;
  const ExactColor alongLastRed =
      blend(ExactColor::loadInner(first + last), ExactColor::load(first + last + strides.red), 0);
  const ExactColor lower = blend(alongRed(0), alongRed(strides.green), 1);
  const ExactColor upper = blend(alongRed(strides.blue), alongLastRed, 1);
  return blend(lower, upper, 2);
}

HWY_INLINE ExactColor tetrahedralExactly(const LutColor* lattice, const ExactPlaces& places, std::size_t pixel) {
  struct Step {
    double fraction;
    double distance;
  };
  const auto stepOf = [&](std::size_t channel) {
    return Step{places.fractions[channel][pixel], places.steps[channel][pixel]};
  };
  Step first = stepOf(0);
  Step second = stepOf(1);
  Step third = stepOf(2);
  // The same exchanges as in the definition, so that equal fractions stay in its order.
  if (second.fraction > first.fraction) std::swap(first, second);
  if (third.fraction > second.fraction) std::swap(second, third);
  if (second.fraction > first.fraction) std::swap(first, second);
  const LutColor* place = lattice + places.cells[pixel];
  const auto next = [&place](const Step& step) HWY_ATTR {
    place += static_cast<std::ptrdiff_t>(step.distance);
    return ExactColor::load(place);
  };
  const ExactColor color = ExactColor::load(place);
  const ExactColor afterFirst = next(first);
  const ExactColor afterSecond = next(second);
  const ExactColor afterThird = next(third);
  return color.plus(afterFirst.minus(color).times(first.fraction))
      .plus(afterSecond.minus(afterFirst).times(second.fraction))
      .plus(afterThird.minus(afterSecond).times(third.fraction));
}

/// Does what ResultScale and limitedCodeValue do; see CubeKernel for the shifts.
HWY_INLINE void limitExactly(const CubeKernel& kernel, const double* results, std::uint16_t* codes) {
  const DoubleTag d;
  const hn::Rebind<std::int32_t, DoubleTag> di;
  const hn::Rebind<std::uint16_t, DoubleTag> dc;
  const ResultScale& scale = kernel.resultScale;
  for (std::size_t i = 0; i < exactGroup * 4; i += doubleLanes) {
    const auto inUnits = quotient(hn::Load(d, results + i), scale.unit);
    const auto result = hn::Add(hn::Mul(inUnits, hn::Set(d, scale.factor)), hn::Set(d, scale.offset));
    const auto rescaled = hn::Mul(result, hn::Set(d, kernel.depthScale));
    const auto limited = hn::Min(hn::Max(rescaled, hn::Set(d, static_cast<double>(kernel.lowestBefore))),
                                 hn::Set(d, static_cast<double>(kernel.highestBefore)));
    const auto code = hn::ShiftLeftSame(hn::DemoteTo(di, limited), kernel.shiftLeft);
    hn::Store(hn::DemoteTo(dc, hn::Min(code, hn::Set(di, kernel.highest))), dc, codes + i);
  }
}

/// Evaluates the definition for pixels; four results each, of which the last has no meaning. The planes have whole
/// groups, and the axes a length.
template <LutInterpolation interpolation>
HWY_NOINLINE void convertExactly(const CubeKernel& kernel, const CodePlanes& codes, std::size_t count,
                                 std::uint16_t* results) {
  const CubeDefinition& definition = kernel.definition;
  const LutColor* const lattice = definition.cube->lattice().data();
  for (std::size_t begin = 0; begin < count; begin += exactGroup) {
    ExactPlaces places;
    findExactPlaces<interpolation>(kernel, codes, begin, places);
    alignas(64) double colors[exactGroup * 4];
    for (std::size_t i = 0; i < exactGroup; ++i) {
      ExactColor color;
      if constexpr (interpolation == LutInterpolation::trilinear) {
        color = trilinearExactly(lattice, definition.strides, places, i);
      } else {
        color = tetrahedralExactly(lattice, places, i);
      }
      color.store(colors + i * 4);
    }
    limitExactly(kernel, colors, results + begin * 4);
  }
}

HWY_INLINE void convertExactly(const CubeKernel& kernel, const CodePlanes& codes, std::size_t count,
                               std::uint16_t* results) {
  if (kernel.definition.interpolation == LutInterpolation::trilinear) {
    convertExactly<LutInterpolation::trilinear>(kernel, codes, count, results);
  } else {
    convertExactly<LutInterpolation::tetrahedral>(kernel, codes, count, results);
  }
}

/// Pixels whose results are uncertain, collected from as many blocks as it takes to fill it.
struct UncertainPixels {
  static constexpr std::size_t enough = 96;
  static constexpr std::size_t capacity = enough + blockSize;
  static_assert(capacity % exactGroup == 0);  // they are converted in whole groups

  alignas(64) std::uint16_t codes[3][capacity];
  std::size_t rows[capacity];
  std::size_t columns[capacity];
  std::size_t count = 0;
};

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // MERIDIAN_HAS_VECTORS
#endif  // include guard for each target
