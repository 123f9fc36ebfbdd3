/// \file
/// The second half of the floating-point filter: colours in single precision, and which of their code values are
/// uncertain.
///
/// Every result is within a bound of the definition's that is blended with it (see CubeKernel). Truncating both gives
/// the same integer unless an integer lies between them, so a result is certain if its distance from the nearest
/// integer is at least the bound. That distance is exact: the nearest integer is found by adding and subtracting 1.5 *
/// 2^23, which leaves no bits for fractions, and the difference of two numbers this close is exact (Sterbenz).
#if defined(MERIDIAN_LUT_CUBE_KERNEL_FILTER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef MERIDIAN_LUT_CUBE_KERNEL_FILTER_INL_H_
#undef MERIDIAN_LUT_CUBE_KERNEL_FILTER_INL_H_
#else
#define MERIDIAN_LUT_CUBE_KERNEL_FILTER_INL_H_
#endif

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <hwy/highway.h>

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

template <typename Tag>
HWY_INLINE hn::Vec<Tag> blendedFast(Tag /*d*/, hn::Vec<Tag> first, hn::Vec<Tag> second, hn::Vec<Tag> fraction) {
  return hn::MulAdd(hn::Sub(second, first), fraction, first);
}

/// Stores the colours of a block, four floats each, for a count that is a multiple of four. The points are loaded pixel
/// by pixel, each with its neighbour along blue where registers are wide enough, which is cheaper than gathering.
HWY_INLINE void blendTrilinear(const CubeKernel& kernel, const Places& places, std::size_t count, float* colors) {
  const PointTag d;
  const float* const lattice = kernel.lattice.data();
  const float* const nextRed = lattice + kernel.redStride;
  const float* const nextGreen = lattice + kernel.greenStride;
  const float* const nextBoth = nextRed + kernel.greenStride;
#if HWY_TARGET <= HWY_AVX3
  // Four pixels at a time, two to a register.
  const FloatTag wide;
  const hn::FixedTag<float, 8> pair;
  const auto spread = [&](const float* fractions) HWY_ATTR { return hn::LoadDup128(wide, fractions); };
  alignas(64) static constexpr std::int32_t eachPixelOfFour[16] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
  alignas(64) static constexpr std::int32_t firstTwoOfFour[16] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1};
  alignas(64) static constexpr std::int32_t lastTwoOfFour[16] = {2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3};
  const auto eachPixel = hn::SetTableIndices(wide, eachPixelOfFour);
  const auto firstTwo = hn::SetTableIndices(wide, firstTwoOfFour);
  const auto lastTwo = hn::SetTableIndices(wide, lastTwoOfFour);
  for (std::size_t i = 0; i < count; i += 4) {
    const auto red = spread(places.fractions[0] + i);
    const auto green = spread(places.fractions[1] + i);
    const auto blue = spread(places.fractions[2] + i);
    const auto twoPixels = [&](std::size_t place, const auto& which) HWY_ATTR {
      const std::int32_t first = places.cell[place];
      const std::int32_t second = places.cell[place + 1];
      const auto load = [&](const float* points) HWY_ATTR {
        return hn::Combine(wide, hn::LoadU(pair, points + second), hn::LoadU(pair, points + first));
      };
      const auto redFraction = hn::TableLookupLanes(red, which);
      const auto lower = blendedFast(wide, load(lattice), load(nextRed), redFraction);
      const auto upper = blendedFast(wide, load(nextGreen), load(nextBoth), redFraction);
      return blendedFast(wide, lower, upper, hn::TableLookupLanes(green, which));
    };
    const auto former = twoPixels(i, firstTwo);
    const auto latter = twoPixels(i + 2, lastTwo);
    // The points of each pixel at the lower and at the upper end of the blue axis.
    const hn::Vec<FloatTag> lower{_mm512_shuffle_f32x4(former.raw, latter.raw, _MM_SHUFFLE(2, 0, 2, 0))};
    const hn::Vec<FloatTag> upper{_mm512_shuffle_f32x4(former.raw, latter.raw, _MM_SHUFFLE(3, 1, 3, 1))};
    hn::Store(blendedFast(wide, lower, upper, hn::TableLookupLanes(blue, eachPixel)), wide, colors + i * 4);
  }
#elif HWY_TARGET <= HWY_AVX2
  const hn::FixedTag<float, 8> pair;
  for (std::size_t i = 0; i < count; ++i) {
    const std::int32_t cell = places.cell[i];
    const auto redFraction = hn::Set(pair, places.fractions[0][i]);
    const auto lower = blendedFast(pair, hn::LoadU(pair, lattice + cell), hn::LoadU(pair, nextRed + cell), redFraction);
    const auto upper =
        blendedFast(pair, hn::LoadU(pair, nextGreen + cell), hn::LoadU(pair, nextBoth + cell), redFraction);
    const auto both = blendedFast(pair, lower, upper, hn::Set(pair, places.fractions[1][i]));
    const auto color = blendedFast(d, hn::LowerHalf(both), hn::UpperHalf(d, both), hn::Set(d, places.fractions[2][i]));
    hn::Store(color, d, colors + i * 4);
  }
#else
  for (std::size_t i = 0; i < count; ++i) {
    const std::int32_t cell = places.cell[i];
    const auto redFraction = hn::Set(d, places.fractions[0][i]);
    const auto greenFraction = hn::Set(d, places.fractions[1][i]);
    const auto alongRed = [&](std::size_t from) HWY_ATTR {
      return blendedFast(d, hn::Load(d, lattice + from + cell), hn::Load(d, nextRed + from + cell), redFraction);
    };
    const auto lower = blendedFast(d, alongRed(0), alongRed(kernel.greenStride), greenFraction);
    const auto upper = blendedFast(d, alongRed(4), alongRed(kernel.greenStride + 4), greenFraction);
    hn::Store(blendedFast(d, lower, upper, hn::Set(d, places.fractions[2][i])), d, colors + i * 4);
  }
#endif
}

HWY_INLINE void blendTetrahedral(const CubeKernel& kernel, const Places& places, std::size_t count, float* colors) {
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
    hn::Store(color, d, colors + i * 4);
  }
}

template <typename Sample>
HWY_INLINE void blendColors(const CubeKernel& kernel, const Planes<Sample>& planes, std::size_t count, Places& places,
                            float* colors) {
  if (kernel.definition.interpolation == LutInterpolation::trilinear) {
    findPlaces<LutInterpolation::trilinear>(kernel, planes, count, places);
    blendTrilinear(kernel, places, count, colors);
  } else {
    findPlaces<LutInterpolation::tetrahedral>(kernel, planes, count, places);
    blendTetrahedral(kernel, places, count, colors);
  }
}

/// How truncated results become code values of the destination.
enum class Truncation : std::uint8_t {
  plain,    ///< clamped to the largest
  shifted,  ///< brought to another bit depth first
  limited,  ///< clamped to the smallest of limited range too
};

/// Truncates the colours of a block to code values of the destination, four each. Marks the uncertain ones: four bits
/// for each pixel, of which the last says nothing, 16 pixels to a word. A result that is certainly below 1 is certain:
/// it becomes 0.
template <Truncation truncation>
HWY_INLINE void truncateColors(const CubeKernel& kernel, const float* colors, std::size_t count, std::uint16_t* codes,
                               std::uint64_t* uncertain) {
  const FloatTag d;
  const IntTag di;
  const CodeTag dc;
  // The sum with this has the nearest integer in its lowest bits.
  constexpr float toInteger = 0x1.8p23F;
  const auto magic = hn::Set(d, toInteger);
  const auto one = hn::Set(d, static_cast<float>(1 - kernel.center));
  const auto offset = hn::Set(di, kernel.center - std::bit_cast<std::int32_t>(toInteger));
  const auto limitBefore = hn::Set(di, kernel.limitBefore);
  const auto lowest = hn::Set(dc, static_cast<std::uint16_t>(kernel.lowest));
  const auto highest = hn::Set(dc, static_cast<std::uint16_t>(kernel.highest));
  const int left = std::max(kernel.shift, 0);
  const int right = std::max(-kernel.shift, 0);
  const std::size_t lanes = hn::Lanes(d);
  std::memset(uncertain, 0, (count + 15) / 16 * sizeof(*uncertain));
  for (std::size_t i = 0; i < count * 4; i += lanes) {
    const auto color = hn::Load(d, colors + i);
    const auto sum = hn::Add(color, magic);
    const auto difference = hn::Sub(color, hn::Sub(sum, magic));  // from the nearest integer, exact
    const auto bound = hn::Broadcast<3>(color);
    const auto isUncertain = hn::And(hn::Lt(hn::Abs(difference), bound), hn::Ge(hn::Add(color, bound), one));
    alignas(8) std::uint8_t bits[8] = {};
    hn::StoreMaskBits(d, isUncertain, bits);
    std::uint16_t word = 0;
    std::memcpy(&word, bits, sizeof(word));
    uncertain[i / 64] |= std::uint64_t{word} << (i % 64);
    // A difference below 0 has its sign bit set, which makes one less of the nearest integer.
    auto code = hn::Add(hn::Add(hn::BitCast(di, sum), offset), hn::ShiftRight<31>(hn::BitCast(di, difference)));
    if constexpr (truncation == Truncation::shifted) {
      code = hn::Min(hn::Max(code, hn::Zero(di)), limitBefore);
      code = hn::ShiftRightSame(hn::ShiftLeftSame(code, left), right);
    }
    auto limited = hn::Min(hn::DemoteTo(dc, code), highest);  // below 0 becomes 0
    if constexpr (truncation == Truncation::limited) limited = hn::Max(limited, lowest);
    hn::Store(limited, dc, codes + i);
  }
}

/// Returns whether a pixel's cell is certain: whether the place is so far from the cell's borders that the definition
/// cannot put it into the next one. The two ends of an axis are not such borders, except for tetrahedra, whose
/// fractions are sorted.
HWY_INLINE bool isWithinCell(const CubeKernel& kernel, const Places& places, std::size_t pixel) {
  const float margin = kernel.flatMargin;
  const auto& [red, green, blue] = places.fractions;
  const float least = std::min({red[pixel], green[pixel], blue[pixel]});
  const float most = std::max({red[pixel], green[pixel], blue[pixel]});
  if (least > margin && most < 1 - margin) return true;
  if (kernel.definition.interpolation == LutInterpolation::tetrahedral) return false;
  const auto cell = static_cast<std::size_t>(places.cell[pixel]);
  const auto lastCell = static_cast<std::size_t>(kernel.definition.faceSize - 2);
  const auto isWithinOrEnds = [&](float fraction, std::size_t point) {
    return (fraction > margin || point == 0) && (fraction < 1 - margin || point == lastCell);
  };
  return isWithinOrEnds(red[pixel], cell / kernel.redStride) &&
         isWithinOrEnds(green[pixel], cell % kernel.redStride / kernel.greenStride) &&
         isWithinOrEnds(blue[pixel], cell % kernel.greenStride / 4);
}

/// Calls `report` with the index of every uncertain pixel. Pixels in flat cells are certain: clipped black and white
/// would be uncertain all over otherwise.
template <typename Report>
HWY_INLINE void forEachUncertainPixel(const CubeKernel& kernel, const Places& places, std::size_t count,
                                      const std::uint64_t* uncertain, const Report& report) {
  const float* const marks = kernel.lattice.data() + 3;
  for (std::size_t word = 0; word < (count + 15) / 16; ++word) {
    constexpr std::uint64_t channelsOfEach = 0x7777777777777777;
    for (std::uint64_t left = uncertain[word] & channelsOfEach; left != 0;) {
      const auto shift = static_cast<unsigned>(std::countr_zero(left)) & ~3U;
      const std::size_t pixel = word * 16 + shift / 4;
      const auto channels = static_cast<unsigned>(left >> shift) & 7U;
      left &= ~(std::uint64_t{7} << shift);
      const bool isFlat = (channels & ~CubeKernel::flatChannels(marks[places.cell[pixel]])) == 0;
      if (!isFlat || !isWithinCell(kernel, places, pixel)) report(pixel);
    }
  }
}

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // MERIDIAN_HAS_VECTORS
#endif  // include guard for each target
