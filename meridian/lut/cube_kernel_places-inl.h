/// \file
/// The first step of the floating-point filter: where the pixels of a block are in the lattice, in single precision.
///
/// Of the three roundings on the way to a fraction only small ones are left: the product of a code value and
/// `scaleHigh` is exact (16 and 8 bits), and so are the point below it and the difference; `scaleLow` adds the rest,
/// which is at most 2^-7 of the place's number. CubeKernel::prepareAxes adds up what remains.
#if defined(MERIDIAN_LUT_CUBE_KERNEL_PLACES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef MERIDIAN_LUT_CUBE_KERNEL_PLACES_INL_H_
#undef MERIDIAN_LUT_CUBE_KERNEL_PLACES_INL_H_
#else
#define MERIDIAN_LUT_CUBE_KERNEL_PLACES_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <hwy/highway.h>

#include "meridian/lut/cube_kernel.h"
#include "meridian/lut/cube_kernel_planes-inl.h"

#if MERIDIAN_HAS_VECTORS

HWY_BEFORE_NAMESPACE();
namespace meridian::inline v0_2::detail::HWY_NAMESPACE {
namespace {

// Plain arrays are laid out as vector instructions need them, and the functions below pass their addresses.
// NOLINTBEGIN(modernize-avoid-c-arrays)

/// Where the pixels of a block are in the lattice: the cell's first point, in floats, and the fractions of the way from
/// it. For tetrahedra the fractions from the largest to the smallest, and the two points on the way.
struct Places {
  alignas(64) std::int32_t cell[blockSize];
  alignas(64) float fractions[3][blockSize + 16];  // 16 more, since they are loaded by 16; each row stays aligned
  /// The cell in CubeCells, in floats, if they are used.
  alignas(64) std::int32_t polynomial[blockSize];
  alignas(64) std::int32_t second[blockSize];
  alignas(64) std::int32_t third[blockSize];
};

struct PlaceOnAxis {
  hn::Vec<FloatTag> point;
  hn::Vec<FloatTag> fraction;
};

/// Returns the cell and the fraction of code values on an axis that CubeKernel::findPointScale has checked. The
/// difference of the product and the point is exact: both are multiples of the product's lowest bit, and it is smaller
/// than the product or, below the first point, the product itself.
HWY_INLINE PlaceOnAxis placeOnCheckedAxis(const FastAxis& axis, hn::Vec<FloatTag> value) {
  const FloatTag d;
  value = hn::Min(value, hn::Set(d, axis.high));
  const auto point = hn::Floor(hn::Mul(value, hn::Set(d, axis.pointScale)));
  return {point, hn::MulAdd(value, hn::Set(d, axis.scaleLow), hn::MulSub(value, hn::Set(d, axis.scaleHigh), point))};
}

/// Returns the cell and the fraction of code values on any axis, to whose ends they are clamped.
HWY_INLINE PlaceOnAxis placeOnAnyAxis(const CubeKernel& kernel, const FastAxis& axis, hn::Vec<FloatTag> value) {
  const FloatTag d;
  const auto zero = hn::Zero(d);
  const auto lastCell = hn::Set(d, kernel.lastPoint - 1);
  // Exact: the product, the point below it, and what is left.
  const auto leading = hn::Mul(value, hn::Set(d, axis.scaleHigh));
  const auto leadingPoint = hn::Floor(leading);
  const auto rest =
      hn::Add(hn::Sub(leading, leadingPoint), hn::MulAdd(value, hn::Set(d, axis.scaleLow), hn::Set(d, axis.offset)));
  auto point = hn::Min(hn::Max(hn::Add(leadingPoint, hn::Floor(rest)), zero), lastCell);
  auto fraction = hn::Sub(rest, hn::Sub(point, leadingPoint));
  const auto isAbove = hn::Gt(value, hn::Set(d, axis.high));
  point = hn::IfThenElse(isAbove, lastCell, point);
  fraction = hn::IfThenElse(isAbove, hn::Set(d, 1.0F), fraction);
  const auto isInside = hn::Ge(value, hn::Set(d, axis.low));
  return {hn::IfThenElse(isInside, point, hn::Set(d, axis.lowPoint)),
          hn::IfThenElse(isInside, fraction, hn::Set(d, axis.lowFraction))};
}

/// Returns the cell and the fraction of floating-point samples. Those below the axis are clamped to its beginning, and
/// so is NaN.
HWY_INLINE PlaceOnAxis placeOnFloatAxis(const CubeKernel& kernel, const FastAxis& axis, hn::Vec<FloatTag> value) {
  const FloatTag d;
  const auto low = hn::Set(d, axis.low);
  const auto offset = hn::Set(d, axis.offset);
  value = hn::Min(hn::IfThenElse(hn::Ge(value, low), value, low), hn::Set(d, axis.high));
  const auto place = hn::MulAdd(value, hn::Set(d, axis.pointScale), offset);
  const auto point = hn::Min(hn::Max(hn::Floor(place), hn::Zero(d)), hn::Set(d, kernel.lastPoint - 1));
  return {point, hn::MulAdd(value, hn::Set(d, axis.scaleLow),
                            hn::MulAdd(value, hn::Set(d, axis.scaleHigh), hn::Sub(offset, point)))};
}

template <AxisForm form>
HWY_INLINE PlaceOnAxis placeOn(const CubeKernel& kernel, const FastAxis& axis, hn::Vec<FloatTag> value) {
  if constexpr (form == AxisForm::checked) {
    return placeOnCheckedAxis(axis, value);
  } else if constexpr (form == AxisForm::any) {
    return placeOnAnyAxis(kernel, axis, value);
  } else {
    return placeOnFloatAxis(kernel, axis, value);
  }
}

/// Loads the values of a plane: floating point as it is, code values as `InputScale` converts them before `factor`.
HWY_INLINE hn::Vec<FloatTag> axisValues(const CubeKernel& /*kernel*/, const float* plane) {
  return hn::Load(FloatTag(), plane);
}

HWY_INLINE hn::Vec<FloatTag> axisValues(const CubeKernel& kernel, const std::uint16_t* plane) {
  const hn::Rebind<std::uint32_t, FloatTag> d;
  auto codes = hn::PromoteTo(d, hn::Load(CodeTag(), plane));
  if (kernel.input.shiftRight > 0) codes = hn::ShiftRightSame(codes, kernel.input.shiftRight);
  auto numbers = hn::BitCast(IntTag(), codes);
  if (kernel.input.black != 0) numbers = hn::Sub(numbers, hn::Set(IntTag(), kernel.input.black));
  return hn::ConvertTo(FloatTag(), numbers);
}

HWY_INLINE hn::Vec<IntTag> asDistance(hn::Vec<FloatTag> points) { return hn::ShiftLeft<2>(nearestInteger(points)); }

template <LutInterpolation interpolation, AxisForm form, typename Sample>
HWY_NOINLINE void findPlaces(const CubeKernel& kernel, const Planes<Sample>& planes, std::size_t count,
                             Places& places) {
  const FloatTag d;
  const IntTag di;
  const auto redStride = hn::Set(d, static_cast<float>(kernel.redStride / 4));
  const auto greenStride = hn::Set(d, static_cast<float>(kernel.greenStride / 4));
  const auto blueStride = hn::Set(d, 1.0F);
  [[maybe_unused]] const auto cellsOnAxis = hn::Set(d, kernel.lastPoint);
  static_assert(CubeCells::floatsPerCell == 1 << 5);
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    const auto placeOf = [&](std::size_t channel) HWY_ATTR {
      return placeOn<form>(kernel, kernel.axes[channel], axisValues(kernel, planes.channels[channel] + i));
    };
    const PlaceOnAxis red = placeOf(0);
    const PlaceOnAxis green = placeOf(1);
    const PlaceOnAxis blue = placeOf(2);
    // All exact: the numbers of the points are below 2^24.
    const auto cell = hn::MulAdd(red.point, redStride, hn::MulAdd(green.point, greenStride, blue.point));
    hn::Store(asDistance(cell), di, places.cell + i);
    if constexpr (form != AxisForm::any && interpolation == LutInterpolation::trilinear) {
      const auto number = hn::MulAdd(hn::MulAdd(red.point, cellsOnAxis, green.point), cellsOnAxis, blue.point);
      hn::Store(hn::ShiftLeft<5>(nearestInteger(number)), di, places.polynomial + i);
    }
    if constexpr (interpolation == LutInterpolation::trilinear) {
      hn::Store(red.fraction, d, places.fractions[0] + i);
      hn::Store(green.fraction, d, places.fractions[1] + i);
      hn::Store(blue.fraction, d, places.fractions[2] + i);
    } else {
      const auto larger = hn::Max(red.fraction, green.fraction);
      const auto smaller = hn::Min(red.fraction, green.fraction);
      const auto largest = hn::Max(larger, blue.fraction);
      const auto smallest = hn::Min(smaller, blue.fraction);
      const auto middle = hn::Max(smaller, hn::Min(larger, blue.fraction));
      const auto redBeforeGreen = hn::Ge(red.fraction, green.fraction);
      const auto first = hn::IfThenElse(hn::Ge(larger, blue.fraction),
                                        hn::IfThenElse(redBeforeGreen, redStride, greenStride), blueStride);
      const auto last = hn::IfThenElse(hn::Ge(smaller, blue.fraction), blueStride,
                                       hn::IfThenElse(redBeforeGreen, greenStride, redStride));
      const auto all = hn::Add(hn::Add(redStride, greenStride), blueStride);
      hn::Store(asDistance(hn::Add(cell, first)), di, places.second + i);
      hn::Store(asDistance(hn::Sub(hn::Add(cell, all), last)), di, places.third + i);
      hn::Store(largest, d, places.fractions[0] + i);
      hn::Store(middle, d, places.fractions[1] + i);
      hn::Store(smallest, d, places.fractions[2] + i);
    }
  }
}

template <LutInterpolation interpolation, typename Sample>
HWY_INLINE void findPlaces(const CubeKernel& kernel, const Planes<Sample>& planes, std::size_t count, Places& places) {
  if constexpr (std::is_same_v<Sample, float>) {
    findPlaces<interpolation, AxisForm::floats>(kernel, planes, count, places);
  } else if (kernel.axisForm == AxisForm::checked) {
    findPlaces<interpolation, AxisForm::checked>(kernel, planes, count, places);
  } else {
    findPlaces<interpolation, AxisForm::any>(kernel, planes, count, places);
  }
}

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // MERIDIAN_HAS_VECTORS
#endif  // include guard for each target
