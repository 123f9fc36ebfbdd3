/// \file
/// The second step of the floating-point filter: colours between the points of the lattice, in single precision.
#if defined(MERIDIAN_LUT_CUBE_KERNEL_BLEND_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef MERIDIAN_LUT_CUBE_KERNEL_BLEND_INL_H_
#undef MERIDIAN_LUT_CUBE_KERNEL_BLEND_INL_H_
#else
#define MERIDIAN_LUT_CUBE_KERNEL_BLEND_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <hwy/highway.h>

#include "meridian/lut/cube_cells.h"
#include "meridian/lut/cube_kernel.h"
#include "meridian/lut/cube_kernel_places-inl.h"
#include "meridian/lut/cube_kernel_planes-inl.h"

#if MERIDIAN_HAS_VECTORS

HWY_BEFORE_NAMESPACE();
namespace meridian::inline v0_2::detail::HWY_NAMESPACE {
namespace {

// Plain arrays are laid out as vector instructions need them, and the functions below pass their addresses.
// NOLINTBEGIN(modernize-avoid-c-arrays)

using PointTag = hn::FixedTag<float, 4>;

/// The pixels whose colours fill one vector.
constexpr std::size_t pixelsOfVector = HWY_LANES(float) / 4;

/// The order in which the colours of a block are stored.
enum class ColorOrder : std::uint8_t {
  pixels,
  /// One vector of pixels with even numbers and then one with odd numbers: halves of the two make pairs of neighbours.
  evenThenOdd,
};

/// Returns where the colour of a pixel is stored.
template <ColorOrder order>
constexpr std::size_t placeOfColor(std::size_t pixel) {
  if constexpr (order == ColorOrder::pixels) return pixel;
  constexpr std::size_t pair = pixelsOfVector * 2;
  return pixel / pair * pair + pixel % 2 * pixelsOfVector + pixel % pair / 2;
}

template <typename Tag>
HWY_INLINE hn::Vec<Tag> blendedFast(Tag /*d*/, hn::Vec<Tag> first, hn::Vec<Tag> second, hn::Vec<Tag> fraction) {
  return hn::MulAdd(hn::Sub(second, first), fraction, first);
}

#if HWY_TARGET <= HWY_AVX3

/// Lanes of a vector that holds eight fractions: copies of those of four pixels, which are every one or every second of
/// the eight.
template <ColorOrder order>
struct FourPixelLanes {
  using Lanes = decltype(hn::SetTableIndices(FloatTag(), static_cast<const std::int32_t*>(nullptr)));

  static constexpr std::int32_t step = order == ColorOrder::pixels ? 1 : 2;
  static constexpr std::int32_t start = order == ColorOrder::pixels ? 4 : 1;  ///< of the latter four

  HWY_INLINE explicit FourPixelLanes(std::int32_t from)
      : each(lanesOf(from, 4)), firstTwo(lanesOf(from, 8)), lastTwo(lanesOf(from + 2 * step, 8)) {}

  Lanes each;
  Lanes firstTwo;
  Lanes lastTwo;

 private:
  static HWY_INLINE Lanes lanesOf(std::int32_t from, std::int32_t copies) {
    alignas(64) std::int32_t lanes[16];
    for (std::int32_t i = 0; i < 16; ++i) lanes[i] = from + i / copies * step;
    return hn::SetTableIndices(FloatTag(), lanes);
  }
};

/// Stores the colours of a block, four floats each, for a count that is a multiple of eight. The points are loaded
/// pixel by pixel, each with its neighbour along blue, which is cheaper than gathering; four pixels at a time.
template <ColorOrder order>
HWY_NOINLINE void blendTrilinear(const CubeKernel& kernel, const Places& places, std::size_t count, float* colors) {
  const float* const lattice = kernel.lattice.data();
  const float* const nextRed = lattice + kernel.redStride;
  const float* const nextGreen = lattice + kernel.greenStride;
  const float* const nextBoth = nextRed + kernel.greenStride;
  const FloatTag wide;
  const hn::FixedTag<float, 8> pair;
  using Lanes = FourPixelLanes<order>;
  constexpr std::int32_t step = Lanes::step;
  constexpr std::int32_t start = Lanes::start;
  const Lanes former(0);
  const Lanes latter(start);
  for (std::size_t i = 0; i < count; i += 8) {
    const auto red = hn::LoadU(wide, places.fractions[0] + i);
    const auto green = hn::LoadU(wide, places.fractions[1] + i);
    const auto blue = hn::LoadU(wide, places.fractions[2] + i);
    const auto twoPixels = [&](std::int32_t first, std::int32_t second, const auto& which) HWY_ATTR {
      const auto load = [&](const float* points) HWY_ATTR {
        return hn::Combine(wide, hn::LoadU(pair, points + second), hn::LoadU(pair, points + first));
      };
      const auto redFraction = hn::TableLookupLanes(red, which);
      const auto lower = blendedFast(wide, load(lattice), load(nextRed), redFraction);
      const auto upper = blendedFast(wide, load(nextGreen), load(nextBoth), redFraction);
      return blendedFast(wide, lower, upper, hn::TableLookupLanes(green, which));
    };
    const auto fourPixels = [&](const std::int32_t* cells, const Lanes& lanes, float* into) HWY_ATTR {
      const auto first = twoPixels(cells[0], cells[step], lanes.firstTwo);
      const auto last = twoPixels(cells[2 * step], cells[3 * step], lanes.lastTwo);
      // The points of each pixel at the lower and at the upper end of the blue axis.
      const hn::Vec<FloatTag> lower{_mm512_shuffle_f32x4(first.raw, last.raw, _MM_SHUFFLE(2, 0, 2, 0))};
      const hn::Vec<FloatTag> upper{_mm512_shuffle_f32x4(first.raw, last.raw, _MM_SHUFFLE(3, 1, 3, 1))};
      hn::Store(blendedFast(wide, lower, upper, hn::TableLookupLanes(blue, lanes.each)), wide, into);
    };
    const std::int32_t* const cells = places.cell + i;
    fourPixels(cells, former, colors + i * 4);
    fourPixels(cells + start, latter, colors + i * 4 + 16);
  }
}

#else

/// Stores the colours of a block, four floats each. The points are loaded pixel by pixel, each with its neighbour along
/// blue where registers are wide enough, which is cheaper than gathering.
template <ColorOrder order>
HWY_NOINLINE void blendTrilinear(const CubeKernel& kernel, const Places& places, std::size_t count, float* colors) {
  const PointTag d;
  const float* const lattice = kernel.lattice.data();
  const float* const nextRed = lattice + kernel.redStride;
  const float* const nextGreen = lattice + kernel.greenStride;
  const float* const nextBoth = nextRed + kernel.greenStride;
  for (std::size_t i = 0; i < count; ++i) {
    const std::int32_t cell = places.cell[i];
#if HWY_TARGET <= HWY_AVX2
    const hn::FixedTag<float, 8> pair;
    const auto redFraction = hn::Set(pair, places.fractions[0][i]);
    const auto lower = blendedFast(pair, hn::LoadU(pair, lattice + cell), hn::LoadU(pair, nextRed + cell), redFraction);
    const auto upper =
        blendedFast(pair, hn::LoadU(pair, nextGreen + cell), hn::LoadU(pair, nextBoth + cell), redFraction);
    const auto both = blendedFast(pair, lower, upper, hn::Set(pair, places.fractions[1][i]));
    const auto color = blendedFast(d, hn::LowerHalf(both), hn::UpperHalf(d, both), hn::Set(d, places.fractions[2][i]));
#else
    const auto redFraction = hn::Set(d, places.fractions[0][i]);
    const auto greenFraction = hn::Set(d, places.fractions[1][i]);
    const auto atBlue = [&](std::size_t from) HWY_ATTR {
      const auto load = [&](const float* points) HWY_ATTR { return hn::Load(d, points + from + cell); };
      const auto lower = blendedFast(d, load(lattice), load(nextRed), redFraction);
      return blendedFast(d, lower, blendedFast(d, load(nextGreen), load(nextBoth), redFraction), greenFraction);
    };
    const auto color = blendedFast(d, atBlue(0), atBlue(4), hn::Set(d, places.fractions[2][i]));
#endif
    hn::Store(color, d, colors + placeOfColor<order>(i) * 4);
  }
}

#endif

/// Stores the colours of a block as CubeCells has them: for code values integers, in the order evenThenOdd, and
/// floating point in the order of pixels.
template <typename Number>
HWY_NOINLINE void blendCells(const CubeCells& cells, const Places& places, std::size_t count, Number* colors) {
  constexpr bool areFloats = std::is_same_v<Number, float>;
  const float* const data = cells.data();
#if HWY_TARGET <= HWY_AVX3
  const FloatTag wide;
  const IntTag integers;
  const hn::FixedTag<std::int32_t, 4> point;
  const auto steps = hn::Not(hn::FirstN(wide, 4));
  using Lanes = FourPixelLanes<areFloats ? ColorOrder::pixels : ColorOrder::evenThenOdd>;
  constexpr std::int32_t step = Lanes::step;
  constexpr std::int32_t start = Lanes::start;
  const Lanes former(0);
  const Lanes latter(start);
  for (std::size_t i = 0; i < count; i += 8) {
    const auto red = hn::LoadU(wide, places.fractions[0] + i);
    const auto blue = hn::LoadU(wide, places.fractions[2] + i);
    const auto cellOf = [&](std::size_t pixel) { return data + places.polynomial[i + pixel]; };
    const auto alongGreen = [&](std::size_t pixel) HWY_ATTR {
      const float* const cell = cellOf(pixel);
      const auto green = hn::Set(wide, places.fractions[1][i + pixel]);
      if constexpr (areFloats) {
        return hn::MulAdd(hn::Load(wide, cell + 16), green, hn::Load(wide, cell));
      } else {
        return hn::MulAdd(hn::Load(wide, cell + 16), green, hn::MaskedLoad(steps, wide, cell));
      }
    };
    const auto twoPixels = [&](std::size_t pixel, const auto& which) HWY_ATTR {
      const auto first = alongGreen(pixel);
      const auto second = alongGreen(pixel + step);
      const hn::Vec<FloatTag> lower{_mm512_shuffle_f32x4(first.raw, second.raw, _MM_SHUFFLE(1, 0, 1, 0))};
      const hn::Vec<FloatTag> upper{_mm512_shuffle_f32x4(first.raw, second.raw, _MM_SHUFFLE(3, 2, 3, 2))};
      return hn::MulAdd(upper, hn::TableLookupLanes(red, which), lower);
    };
    const auto fourPixels = [&](std::size_t pixel, const Lanes& lanes, Number* into) HWY_ATTR {
      const auto first = twoPixels(pixel, lanes.firstTwo);
      const auto last = twoPixels(pixel + 2 * step, lanes.lastTwo);
      const hn::Vec<FloatTag> lower{_mm512_shuffle_f32x4(first.raw, last.raw, _MM_SHUFFLE(2, 0, 2, 0))};
      const hn::Vec<FloatTag> upper{_mm512_shuffle_f32x4(first.raw, last.raw, _MM_SHUFFLE(3, 1, 3, 1))};
      const auto color = hn::MulAdd(upper, hn::TableLookupLanes(blue, lanes.each), lower);
      if constexpr (areFloats) {
        hn::Store(color, wide, into);
      } else {
        const auto pointOf = [&](std::size_t of) HWY_ATTR {
          return hn::Load(point, reinterpret_cast<const std::int32_t*>(cellOf(pixel + of * step)));
        };
        const hn::Half<IntTag> half;
        const auto points =
            hn::Combine(integers, hn::Combine(half, pointOf(3), pointOf(2)), hn::Combine(half, pointOf(1), pointOf(0)));
        hn::Store(hn::Add(points, nearestInteger(color)), integers, into);
      }
    };
    fourPixels(0, former, colors + i * 4);
    fourPixels(start, latter, colors + i * 4 + 16);
  }
#else
  const PointTag d;
  const hn::RebindToSigned<PointTag> di;
  for (std::size_t i = 0; i < count; ++i) {
    const float* const cell = data + places.polynomial[i];
#if HWY_TARGET <= HWY_AVX2
    const hn::FixedTag<float, 8> pair;
    const auto green = hn::Set(pair, places.fractions[1][i]);
    const auto red = hn::MulAdd(hn::Load(pair, cell + 24), green, hn::Load(pair, cell + 8));
    const auto both = hn::MulAdd(red, hn::Set(pair, places.fractions[0][i]), hn::Mul(hn::Load(pair, cell + 16), green));
    const auto low = hn::LowerHalf(both);
    const auto high = hn::Add(hn::UpperHalf(d, both), hn::Load(d, cell + 4));
#else
    const auto green = hn::Set(d, places.fractions[1][i]);
    const auto red = hn::Set(d, places.fractions[0][i]);
    const auto along = [&](const float* step)
                           HWY_ATTR { return hn::MulAdd(hn::Load(d, step + 16), green, hn::Load(d, step)); };
    const auto low = hn::MulAdd(along(cell + 8), red, hn::Mul(hn::Load(d, cell + 16), green));
    const auto high = hn::MulAdd(along(cell + 12), red, along(cell + 4));
#endif
    const auto beyondPoint = hn::MulAdd(high, hn::Set(d, places.fractions[2][i]), low);
    if constexpr (areFloats) {
      hn::Store(hn::Add(hn::Load(d, cell), beyondPoint), d, colors + i * 4);
    } else {
      const auto point = hn::Load(di, reinterpret_cast<const std::int32_t*>(cell));
      hn::Store(hn::Add(point, hn::NearestInt(beyondPoint)), di, colors + placeOfColor<ColorOrder::evenThenOdd>(i) * 4);
    }
  }
#endif
}

template <ColorOrder order>
HWY_NOINLINE void blendTetrahedral(const CubeKernel& kernel, const Places& places, std::size_t count, float* colors) {
  const PointTag d;
  const float* const lattice = kernel.lattice.data();
  const std::size_t opposite = kernel.redStride + kernel.greenStride + 4;
  for (std::size_t i = 0; i < count; ++i) {
    const auto first = hn::Load(d, lattice + places.cell[i]);
    const auto second = hn::Load(d, lattice + places.second[i]);
    const auto third = hn::Load(d, lattice + places.third[i]);
    const auto fourth = hn::Load(d, lattice + places.cell[i] + opposite);
    auto color = hn::MulAdd(hn::Sub(second, first), hn::Set(d, places.fractions[0][i]), first);
    color = hn::MulAdd(hn::Sub(third, second), hn::Set(d, places.fractions[1][i]), color);
    color = hn::MulAdd(hn::Sub(fourth, third), hn::Set(d, places.fractions[2][i]), color);
    hn::Store(color, d, colors + placeOfColor<order>(i) * 4);
  }
}

template <ColorOrder order, typename Sample>
HWY_INLINE void blendColors(const CubeKernel& kernel, const Planes<Sample>& planes, std::size_t count, Places& places,
                            float* colors) {
  if (kernel.definition.interpolation == LutInterpolation::trilinear) {
    findPlaces<LutInterpolation::trilinear>(kernel, planes, count, places);
    blendTrilinear<order>(kernel, places, count, colors);
  } else {
    findPlaces<LutInterpolation::tetrahedral>(kernel, planes, count, places);
    blendTetrahedral<order>(kernel, places, count, colors);
  }
}

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // MERIDIAN_HAS_VECTORS
#endif  // include guard for each target
