// Images through a cube, compiled once for each instruction set.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "meridian/lut/cube_kernel.h"

// The sets that are not worth their size: SSSE3, and the extensions of AVX-512 beyond those of servers.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "meridian/lut/cube_kernel_simd.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace meridian::inline v0_2::detail::HWY_NAMESPACE {
namespace {

// Plain arrays lie as vector instructions need them, and the functions below take their addresses.
// NOLINTBEGIN(modernize-avoid-c-arrays)

/// Pixels that go through all steps together, so that everything between the steps stays in the nearest cache.
constexpr std::size_t blockSize = 128;

/// Samples of a block in planes of their own.
template <typename Sample>
struct Planes {
  alignas(64) Sample channels[3][blockSize];
  alignas(64) Sample alpha[blockSize];
};

/// Converts a block one pixel after the other, as the definition stands.
inline void convertPlainly(const CubeKernel& kernel, Planes<std::uint16_t>& planes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const PixelCodes codes = kernel.definition.codeValues(
        {planes.channels[0][i], planes.channels[1][i], planes.channels[2][i]}, *kernel.depths);
    for (std::size_t channel = 0; channel < 3; ++channel) planes.channels[channel][i] = codes[channel];
  }
}

inline void convertPlainly(const CubeKernel& kernel, Planes<float>& planes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const LutColor color =
        kernel.definition.color({planes.channels[0][i], planes.channels[1][i], planes.channels[2][i]});
    planes.channels[0][i] = static_cast<float>(color.red);
    planes.channels[1][i] = static_cast<float>(color.green);
    planes.channels[2][i] = static_cast<float>(color.blue);
  }
}

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// A machine without vector instructions computes by the definition and has no doubts.

template <typename Sample, typename Plane>
void loadPlanes(const Sample* source, std::size_t channelCount, std::size_t count, Planes<Plane>& planes) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t channel = 0; channel < 3; ++channel)
      planes.channels[channel][i] = source[i * channelCount + channel];
    if (channelCount == 4) planes.alpha[i] = source[i * channelCount + 3];
  }
}

template <typename Sample, typename Plane>
void storePlanes(const Planes<Plane>& planes, std::size_t channelCount, std::size_t count, Sample* destination) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
      destination[i * channelCount + channel] = static_cast<Sample>(planes.channels[channel][i]);
    }
    if (channelCount == 4) destination[i * channelCount + 3] = static_cast<Sample>(planes.alpha[i]);
  }
}

template <typename Plane>
void convertPlanes(const CubeKernel& kernel, Planes<Plane>& planes, std::size_t count, const auto& /*report*/) {
  convertPlainly(kernel, planes, count);
}

/// Pixels that these functions take at a time.
template <typename Sample>
constexpr std::size_t pixelStep() {
  return 1;
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::ScalableTag<float>;
using IntTag = hn::Rebind<std::int32_t, FloatTag>;
/// As many 16-bit samples as a vector has floats, and a whole vector of them.
using CodeTag = hn::Rebind<std::uint16_t, FloatTag>;
using CodesTag = hn::ScalableTag<std::uint16_t>;
using BytesTag = hn::ScalableTag<std::uint8_t>;

template <typename Sample>
constexpr std::size_t pixelStep() {
  return std::max<std::size_t>(HWY_LANES(Sample), 4);
}

// ---- Between images and planes ----------------------------------------------------------------------------------

/// Samples that are the same in planes as in images: 16-bit code values and floating point.
template <typename Sample>
HWY_INLINE void loadPlanes(const Sample* source, std::size_t channelCount, std::size_t count, Planes<Sample>& planes) {
  const hn::ScalableTag<Sample> d;
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    hn::Vec<hn::ScalableTag<Sample>> red, green, blue, alpha;
    if (channelCount == 4) {
      hn::LoadInterleaved4(d, source + i * 4, red, green, blue, alpha);
      hn::Store(alpha, d, planes.alpha + i);
    } else {
      hn::LoadInterleaved3(d, source + i * 3, red, green, blue);
    }
    hn::Store(red, d, planes.channels[0] + i);
    hn::Store(green, d, planes.channels[1] + i);
    hn::Store(blue, d, planes.channels[2] + i);
  }
}

template <typename Sample>
HWY_INLINE void storePlanes(const Planes<Sample>& planes, std::size_t channelCount, std::size_t count,
                            Sample* destination) {
  const hn::ScalableTag<Sample> d;
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    const auto red = hn::Load(d, planes.channels[0] + i);
    const auto green = hn::Load(d, planes.channels[1] + i);
    const auto blue = hn::Load(d, planes.channels[2] + i);
    if (channelCount == 4) {
      hn::StoreInterleaved4(red, green, blue, hn::Load(d, planes.alpha + i), d, destination + i * 4);
    } else {
      hn::StoreInterleaved3(red, green, blue, d, destination + i * 3);
    }
  }
}

HWY_INLINE void storeWidened(hn::Vec<BytesTag> bytes, std::uint16_t* plane) {
  const CodesTag d;
  hn::Store(hn::PromoteTo(d, hn::LowerHalf(bytes)), d, plane);
  hn::Store(hn::PromoteTo(d, hn::UpperHalf(hn::Half<BytesTag>(), bytes)), d, plane + hn::Lanes(d));
}

/// Code values that fit into bytes.
HWY_INLINE hn::Vec<BytesTag> loadNarrowed(const std::uint16_t* plane) {
  const CodesTag d;
  const hn::RebindToSigned<CodesTag> wide;
  const hn::Half<BytesTag> half;
  const auto lower = hn::BitCast(wide, hn::Load(d, plane));
  const auto upper = hn::BitCast(wide, hn::Load(d, plane + hn::Lanes(d)));
  return hn::Combine(BytesTag(), hn::DemoteTo(half, upper), hn::DemoteTo(half, lower));
}

HWY_INLINE void loadPlanes(const std::uint8_t* source, std::size_t channelCount, std::size_t count,
                           Planes<std::uint16_t>& planes) {
  const BytesTag d;
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    hn::Vec<BytesTag> red, green, blue, alpha;
    if (channelCount == 4) {
      hn::LoadInterleaved4(d, source + i * 4, red, green, blue, alpha);
      storeWidened(alpha, planes.alpha + i);
    } else {
      hn::LoadInterleaved3(d, source + i * 3, red, green, blue);
    }
    storeWidened(red, planes.channels[0] + i);
    storeWidened(green, planes.channels[1] + i);
    storeWidened(blue, planes.channels[2] + i);
  }
}

HWY_INLINE void storePlanes(const Planes<std::uint16_t>& planes, std::size_t channelCount, std::size_t count,
                            std::uint8_t* destination) {
  const BytesTag d;
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    const auto red = loadNarrowed(planes.channels[0] + i);
    const auto green = loadNarrowed(planes.channels[1] + i);
    const auto blue = loadNarrowed(planes.channels[2] + i);
    if (channelCount == 4) {
      hn::StoreInterleaved4(red, green, blue, loadNarrowed(planes.alpha + i), d, destination + i * 4);
    } else {
      hn::StoreInterleaved3(red, green, blue, d, destination + i * 3);
    }
  }
}

// ---- Single precision ---------------------------------------------------------------------------------------------

/// Where the pixels of a block lie in the lattice: the cell's first point, in floats, and the fractions on the way from
/// it. For tetrahedra the fractions from the largest to the smallest, and the two points on the way.
struct Places {
  alignas(64) std::int32_t cell[blockSize];
  alignas(64) float fractions[3][blockSize];
  alignas(64) std::int32_t second[blockSize];
  alignas(64) std::int32_t third[blockSize];
};

struct PlaceOnAxis {
  hn::Vec<FloatTag> point;
  hn::Vec<FloatTag> fraction;
};

/// The cell and the fraction of values that lie within the axis' range.
HWY_INLINE PlaceOnAxis placeOnFastAxis(const CubeKernel& kernel, const FastAxis& axis, hn::Vec<FloatTag> value) {
  const FloatTag d;
  const auto zero = hn::Zero(d);
  const auto lastCell = hn::Set(d, kernel.lastPoint - 1);
  // Exact for code values: the product, the point below it, and what is left.
  const auto leading = hn::Mul(value, hn::Set(d, axis.scaleHigh));
  const auto leadingPoint = hn::Floor(leading);
  const auto rest =
      hn::Add(hn::Sub(leading, leadingPoint), hn::MulAdd(value, hn::Set(d, axis.scaleLow), hn::Set(d, axis.offset)));
  const auto point = hn::Min(hn::Max(hn::Add(leadingPoint, hn::Floor(rest)), zero), lastCell);
  return {point, hn::Sub(rest, hn::Sub(point, leadingPoint))};
}

/// The same for values that may lie beyond the axis' end, at which they then lie.
HWY_INLINE PlaceOnAxis placeOnEndingAxis(const CubeKernel& kernel, const FastAxis& axis, hn::Vec<FloatTag> value) {
  const FloatTag d;
  const PlaceOnAxis inside = placeOnFastAxis(kernel, axis, value);
  const auto isBeyond = hn::Gt(value, hn::Set(d, axis.high));
  return {hn::IfThenElse(isBeyond, hn::Set(d, kernel.lastPoint - 1), inside.point),
          hn::IfThenElse(isBeyond, hn::Set(d, 1.0F), inside.fraction)};
}

/// The same for any value: those before the axis' beginning lie there, and so does what is not a number.
HWY_INLINE PlaceOnAxis placeOnAnyAxis(const CubeKernel& kernel, const FastAxis& axis, hn::Vec<FloatTag> value) {
  const FloatTag d;
  const auto isBehind = hn::Ge(value, hn::Set(d, axis.low));
  const PlaceOnAxis behind = placeOnEndingAxis(kernel, axis, hn::IfThenElseZero(isBehind, value));
  return {hn::IfThenElse(isBehind, behind.point, hn::Set(d, axis.lowPoint)),
          hn::IfThenElse(isBehind, behind.fraction, hn::Set(d, axis.lowFraction))};
}

template <AxisLimits limits>
HWY_INLINE PlaceOnAxis placeWithin(const CubeKernel& kernel, const FastAxis& axis, hn::Vec<FloatTag> value) {
  if constexpr (limits == AxisLimits::exactEnd) {
    return placeOnFastAxis(kernel, axis, hn::Min(value, hn::Set(FloatTag(), axis.high)));
  } else if constexpr (limits == AxisLimits::end) {
    return placeOnEndingAxis(kernel, axis, value);
  } else {
    return placeOnAnyAxis(kernel, axis, value);
  }
}

/// The values of a plane on the scale of the axes.
HWY_INLINE hn::Vec<FloatTag> axisValues(const CubeKernel& /*kernel*/, const float* plane) {
  return hn::Load(FloatTag(), plane);
}

HWY_INLINE hn::Vec<FloatTag> axisValues(const CubeKernel& kernel, const std::uint16_t* plane) {
  const hn::Rebind<std::uint32_t, FloatTag> d;
  auto codes = hn::PromoteTo(d, hn::Load(CodeTag(), plane));
  if (kernel.inputShiftRight > 0) codes = hn::ShiftRightSame(codes, kernel.inputShiftRight);
  return hn::ConvertTo(FloatTag(), hn::BitCast(IntTag(), codes));
}

HWY_INLINE hn::Vec<IntTag> asDistance(hn::Vec<FloatTag> points) {
  return hn::ShiftLeft<2>(hn::ConvertTo(IntTag(), points));
}

template <LutInterpolation interpolation, AxisLimits limits, typename Sample>
HWY_INLINE void findPlaces(const CubeKernel& kernel, const Planes<Sample>& planes, std::size_t count, Places& places) {
  const FloatTag d;
  const IntTag di;
  const auto redStride = hn::Set(d, static_cast<float>(kernel.redStride / 4));
  const auto greenStride = hn::Set(d, static_cast<float>(kernel.greenStride / 4));
  const auto blueStride = hn::Set(d, 1.0F);
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    const auto placeOf = [&](std::size_t channel) HWY_ATTR {
      return placeWithin<limits>(kernel, kernel.axes[channel], axisValues(kernel, planes.channels[channel] + i));
    };
    const PlaceOnAxis red = placeOf(0);
    const PlaceOnAxis green = placeOf(1);
    const PlaceOnAxis blue = placeOf(2);
    // All exact: the numbers of the points are below 2^24.
    const auto cell = hn::MulAdd(red.point, redStride, hn::MulAdd(green.point, greenStride, blue.point));
    hn::Store(asDistance(cell), di, places.cell + i);
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

using PointTag = hn::FixedTag<float, 4>;

template <typename Tag>
HWY_INLINE hn::Vec<Tag> blendedFast(Tag /*d*/, hn::Vec<Tag> first, hn::Vec<Tag> second, hn::Vec<Tag> fraction) {
  return hn::MulAdd(hn::Sub(second, first), fraction, first);
}

/// The colours of a block, four floats each, for a count that is a multiple of four. The points are loaded pixel by
/// pixel, each with its neighbour along blue where registers are wide enough, which is cheaper than gathering.
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

template <LutInterpolation interpolation, typename Sample>
HWY_INLINE void findPlaces(const CubeKernel& kernel, const Planes<Sample>& planes, std::size_t count, Places& places) {
  if constexpr (!std::is_same_v<Sample, float>) {
    if (kernel.limits == AxisLimits::exactEnd) {
      return findPlaces<interpolation, AxisLimits::exactEnd>(kernel, planes, count, places);
    }
    if (kernel.limits == AxisLimits::end) {
      return findPlaces<interpolation, AxisLimits::end>(kernel, planes, count, places);
    }
  }
  return findPlaces<interpolation, AxisLimits::both>(kernel, planes, count, places);
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

/// Truncates the colours of a block to code values of the destination, four each. Marks those in doubt: four bits for
/// each pixel, 16 pixels to a word. What is about 0 or below becomes 0 beyond doubt.
template <bool isShifted>
HWY_INLINE void truncateColors(const CubeKernel& kernel, const float* colors, std::size_t count, std::uint16_t* codes,
                               std::uint64_t* doubts) {
  const FloatTag d;
  const IntTag di;
  const CodeTag dc;
  // The sum with this has the nearest integer in its lowest bits.
  constexpr float toInteger = 0x1.8p23F;
  const auto magic = hn::Set(d, toInteger);
  const auto bound = hn::Set(d, kernel.errorBound);
  const auto zero = hn::Set(d, toInteger - static_cast<float>(kernel.center));
  const auto offset = hn::Set(di, kernel.center - std::bit_cast<std::int32_t>(toInteger));
  const auto limitBefore = hn::Set(di, kernel.limitBefore);
  const auto limitAfter = hn::Set(dc, static_cast<std::uint16_t>(kernel.limitAfter));
  const int left = std::max(kernel.shift, 0);
  const int right = std::max(-kernel.shift, 0);
  const std::size_t lanes = hn::Lanes(d);
  std::memset(doubts, 0, (count + 15) / 16 * sizeof(*doubts));
  for (std::size_t i = 0; i < count * 4; i += lanes) {
    const auto color = hn::Load(d, colors + i);
    const auto sum = hn::Add(color, magic);
    const auto difference = hn::Sub(color, hn::Sub(sum, magic));  // from the nearest integer, exact
    const auto inDoubt = hn::And(hn::Lt(hn::Abs(difference), bound), hn::Gt(sum, zero));
    alignas(8) std::uint8_t bits[8] = {};
    hn::StoreMaskBits(d, inDoubt, bits);
    std::uint16_t word = 0;
    std::memcpy(&word, bits, sizeof(word));
    doubts[i / 64] |= std::uint64_t{word} << (i % 64);
    // A difference below 0 has its sign bit set, which makes one less of the nearest integer.
    auto code = hn::Add(hn::Add(hn::BitCast(di, sum), offset), hn::ShiftRight<31>(hn::BitCast(di, difference)));
    if constexpr (isShifted) {
      code = hn::Min(hn::Max(code, hn::Zero(di)), limitBefore);
      code = hn::ShiftRightSame(hn::ShiftLeftSame(code, left), right);
    }
    hn::Store(hn::Min(hn::DemoteTo(dc, code), limitAfter), dc, codes + i);  // below 0 becomes 0
  }
}

/// Whether a pixel's cell is beyond doubt: whether it lies so far from the cell's borders that the definition cannot
/// see it in the next one. An axis' two ends are no such borders; for tetrahedra, whose fractions are sorted, they
/// count.
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

/// Calls `report` with the number of every pixel that is in doubt. Where nothing is blended there is no doubt: flat
/// regions, clipped black and white above all, would be all doubts otherwise.
template <typename Report>
HWY_INLINE void forEachDoubt(const CubeKernel& kernel, const Places& places, std::size_t count,
                             const std::uint64_t* doubts, const Report& report) {
  const float* const marks = kernel.lattice.data() + 3;
  for (std::size_t word = 0; word < (count + 15) / 16; ++word) {
    for (std::uint64_t left = doubts[word]; left != 0;) {
      const auto shift = static_cast<unsigned>(std::countr_zero(left)) & ~3U;
      const std::size_t pixel = word * 16 + shift / 4;
      const auto channels = static_cast<unsigned>(left >> shift) & 15U;
      left &= ~(std::uint64_t{15} << shift);
      const bool isFlat = (channels & ~CubeKernel::flatChannels(marks[places.cell[pixel]])) == 0;
      if (!isFlat || !isWithinCell(kernel, places, pixel)) report(pixel);
    }
  }
}

// ---- Double precision, by the definition ----------------------------------------------------------------------------

using DoubleTag = hn::ScalableTag<double>;
constexpr std::size_t doubleLanes = HWY_LANES(double);

/// Pixels that are converted together.
constexpr std::size_t exactGroup = 8;

/// Where a group lies on one axis: the points around it, as distances in the lattice, and how far from them.
struct ExactPlaces {
  alignas(64) double lower[exactGroup];
  alignas(64) double upper[exactGroup];
  alignas(64) double fraction[exactGroup];
  alignas(64) double rest[exactGroup];  ///< 1 - fraction
};

/// Operation by operation what AxisRule::position and placeOnAxis do.
HWY_INLINE void findExactPlaces(const AxisRule& rule, double lastPoint, std::size_t stride, double divisor,
                                const double* values, ExactPlaces& places) {
  const DoubleTag d;
  const auto last = hn::Set(d, lastPoint);
  const auto one = hn::Set(d, 1.0);
  const auto distance = hn::Set(d, static_cast<double>(stride));
  for (std::size_t i = 0; i < exactGroup; i += doubleLanes) {
    const auto input = hn::Div(hn::Load(d, values + i), hn::Set(d, divisor));
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

/// A colour in registers: four lanes, of which the last is of no use, or two and two.
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
  const ExactColor behindFirst = point(start + first.distance);
  const ExactColor behindSecond = point(start + first.distance + second.distance);
  const ExactColor behindThird = point(start + first.distance + second.distance + third.distance);
  return color.plus(behindFirst.minus(color).times(first.fraction))
      .plus(behindSecond.minus(behindFirst).times(second.fraction))
      .plus(behindThird.minus(behindSecond).times(third.fraction));
}

/// Truncates and limits results as limitedCodeValue does.
HWY_INLINE void limitExactly(const CubeKernel& kernel, double scale, const double* results, std::uint16_t* codes) {
  const DoubleTag d;
  const hn::Rebind<std::int32_t, DoubleTag> di;
  const hn::Rebind<std::uint16_t, DoubleTag> dc;
  const int left = std::max(kernel.shift, 0);
  const int right = std::max(-kernel.shift, 0);
  for (std::size_t i = 0; i < exactGroup * 4; i += doubleLanes) {
    const auto result = hn::Mul(hn::Load(d, results + i), hn::Set(d, scale));
    const auto limited = hn::Min(hn::Max(result, hn::Zero(d)), hn::Set(d, static_cast<double>(kernel.limitBefore)));
    const auto code = hn::ShiftRightSame(hn::ShiftLeftSame(hn::DemoteTo(di, limited), left), right);
    hn::Store(hn::DemoteTo(dc, hn::Min(code, hn::Set(di, kernel.limitAfter))), dc, codes + i);
  }
}

/// Pixels whose results single precision leaves open, from as many blocks as it takes to fill it.
struct DoubtfulPixels {
  static constexpr std::size_t enough = 64;
  static constexpr std::size_t capacity = enough + blockSize;

  alignas(64) double values[3][capacity];  ///< on the axes' scale, before the division by the divisor
  alignas(64) std::uint16_t codes[capacity * 4];
  std::size_t rows[capacity];
  std::size_t columns[capacity];
  std::size_t count = 0;
};

/// Finds the results of the pixels by the definition. For axes that have a length.
HWY_INLINE void convertExactly(const CubeKernel& kernel, DoubtfulPixels& pixels) {
  const CubeDefinition& definition = kernel.definition;
  const LutColor* const lattice = definition.cube->lattice().data();
  const double lastPoint = static_cast<double>(definition.faceSize - 1);
  const double scale = definition.resultScale(kernel.depths->destination);
  const double divisor = definition.integerDepth ? 1 : static_cast<double>(largestCodeValue(kernel.depths->source));
  const std::array strides{definition.strides.red, definition.strides.green, definition.strides.blue};
  const std::size_t rounded = (pixels.count + exactGroup - 1) / exactGroup * exactGroup;
  for (auto& values : pixels.values) std::fill(values + pixels.count, values + rounded, 0.0);
  for (std::size_t begin = 0; begin < pixels.count; begin += exactGroup) {
    ExactAxes axes;
    for (std::size_t channel = 0; channel < 3; ++channel) {
      findExactPlaces(definition.axes[channel], lastPoint, strides[channel], divisor, pixels.values[channel] + begin,
                      axes[channel]);
    }
    alignas(64) double results[exactGroup * 4];
    for (std::size_t i = 0; i < exactGroup; ++i) {
      const ExactColor color = definition.interpolation == LutInterpolation::trilinear
                                   ? trilinearExactly(lattice, axes, i)
                                   : tetrahedralExactly(lattice, axes, i);
      color.store(results + i * 4);
    }
    limitExactly(kernel, scale, results, pixels.codes + begin * 4);
  }
}

// ---- Blocks ---------------------------------------------------------------------------------------------------------

/// Takes four samples of each pixel apart.
template <typename Tag, typename Sample>
HWY_INLINE void separate(Tag d, const Sample* samples, std::size_t count, Planes<Sample>& planes) {
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    hn::Vec<Tag> red, green, blue, unused;
    hn::LoadInterleaved4(d, samples + i * 4, red, green, blue, unused);
    hn::Store(red, d, planes.channels[0] + i);
    hn::Store(green, d, planes.channels[1] + i);
    hn::Store(blue, d, planes.channels[2] + i);
  }
}

HWY_INLINE void convertPlanes(const CubeKernel& kernel, Planes<float>& planes, std::size_t count,
                              const auto& /*report*/) {
  if (!kernel.isFast) return convertPlainly(kernel, planes, count);
  Places places;
  alignas(64) float colors[blockSize * 4];
  blendColors(kernel, planes, count, places, colors);
  separate(FloatTag(), colors, count, planes);
}

/// Calls `report` with the number and the code values of every pixel whose result is still in doubt.
template <typename Report>
HWY_INLINE void convertPlanes(const CubeKernel& kernel, Planes<std::uint16_t>& planes, std::size_t count,
                              const Report& report) {
  if (!kernel.isFast) return convertPlainly(kernel, planes, count);
  Places places;
  alignas(64) float colors[blockSize * 4];
  alignas(64) std::uint16_t codes[blockSize * 4];
  std::uint64_t doubts[blockSize / 16];
  blendColors(kernel, planes, count, places, colors);
  kernel.shift == 0 ? truncateColors<false>(kernel, colors, count, codes, doubts)
                    : truncateColors<true>(kernel, colors, count, codes, doubts);
  forEachDoubt(kernel, places, count, doubts, [&](std::size_t pixel) HWY_ATTR {
    report(pixel, planes.channels[0][pixel], planes.channels[1][pixel], planes.channels[2][pixel]);
  });
  separate(CodesTag(), codes, count, planes);
}

#endif  // vector instructions

/// Samples as they are between the steps.
template <typename Sample>
using PlaneSample = std::conditional_t<std::is_same_v<Sample, float>, float, std::uint16_t>;

void rescaleAlpha(const CubeKernel& kernel, std::uint16_t* alpha, std::size_t count) {
  const ImageDepths& depths = *kernel.depths;
  if (depths.source == depths.destination) return;
  for (std::size_t i = 0; i < count; ++i) alpha[i] = limitedCodeValue(alpha[i], depths.source, depths.destination);
}
void rescaleAlpha(const CubeKernel& /*kernel*/, float* /*alpha*/, std::size_t /*count*/) {}

template <typename Plane>
Plane opaque(const CubeKernel& kernel) {
  if constexpr (std::is_same_v<Plane, float>) {
    return 1;
  } else {
    return static_cast<Plane>(largestCodeValue(kernel.depths->destination));
  }
}

template <typename Sample, typename View>
HWY_INLINE Sample* rowOf(const View& view, std::size_t plane, std::size_t row) {
  return view.planes[plane] + view.rowDistance() * static_cast<std::ptrdiff_t>(row);
}

template <typename Sample>
class RowConverter {
 public:
  RowConverter(const CubeKernel& kernel, const PixelRows<Sample>& rows) : kernel_(kernel), rows_(rows) {}

  HWY_INLINE void run() {
    for (std::size_t row = 0; row < rows_.source.height; ++row) {
      for (std::size_t column = 0; column < rows_.source.width; column += blockSize) {
        convertBlock(row, column, std::min(blockSize, rows_.source.width - column));
      }
    }
    settleDoubts();
  }

 private:
  using Plane = PlaneSample<Sample>;
  static constexpr std::size_t step = pixelStep<Sample>();
  static_assert(blockSize % step == 0);

  /// Converts up to a block of pixels of a row. Whole steps are read and written in place; what is left over goes by
  /// way of memory of its own.
  HWY_INLINE void convertBlock(std::size_t row, std::size_t column, std::size_t count) {
    const std::size_t rounded = (count + step - 1) / step * step;
    load(row, column, count, rounded);
    convertPlanes(kernel_, planes_, rounded,
                  [&](std::size_t pixel, std::uint16_t red, std::uint16_t green, std::uint16_t blue) HWY_ATTR {
                    if (pixel < count) doubt(row, column + pixel, {red, green, blue});
                  });
    store(row, column, count, rounded);
    if (hasManyDoubts()) settleDoubts();
  }

  HWY_INLINE void load(std::size_t row, std::size_t column, std::size_t count, std::size_t rounded) {
    if (rows_.source.layout == ImageLayout::planar) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        const Sample* const from = rowOf<const Sample>(rows_.source, channel, row) + column;
        Plane* const into = planes_.channels[channel];
        for (std::size_t i = 0; i < count; ++i) into[i] = from[i];
        std::fill(into + count, into + rounded, Plane{0});
      }
      return;
    }
    const std::size_t channelCount = rows_.source.samplesPerPixel(rows_.source.layout);
    const Sample* from = rowOf<const Sample>(rows_.source, 0, row) + column * channelCount;
    if (rounded != count) {
      std::memcpy(aside_, from, count * channelCount * sizeof(Sample));
      std::fill(aside_ + count * channelCount, aside_ + rounded * channelCount, Sample{0});
      from = aside_;
    }
    loadPlanes(from, channelCount, rounded, planes_);
  }

  HWY_INLINE void store(std::size_t row, std::size_t column, std::size_t count, std::size_t rounded) {
    const ImageLayout layout = rows_.destination.layout;
    if (layout == ImageLayout::planar) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        Sample* const into = rowOf<Sample>(rows_.destination, channel, row) + column;
        for (std::size_t i = 0; i < count; ++i) into[i] = static_cast<Sample>(planes_.channels[channel][i]);
      }
      return;
    }
    if (layout == ImageLayout::rgba) {
      if (rows_.source.layout == ImageLayout::rgba) {
        rescaleAlpha(kernel_, planes_.alpha, rounded);
      } else {
        std::fill_n(planes_.alpha, rounded, opaque<Plane>(kernel_));
      }
    }
    const std::size_t channelCount = rows_.destination.samplesPerPixel(layout);
    Sample* const into = rowOf<Sample>(rows_.destination, 0, row) + column * channelCount;
    storePlanes(planes_, channelCount, rounded, rounded != count ? aside_ : into);
    if (rounded != count) std::memcpy(into, aside_, count * channelCount * sizeof(Sample));
  }

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
  static bool hasManyDoubts() { return false; }
  void settleDoubts() {}
  void doubt(std::size_t /*row*/, std::size_t /*column*/, const PixelCodes& /*codes*/) {}
#else
  bool hasManyDoubts() const { return doubtful_.count >= DoubtfulPixels::enough; }

  HWY_INLINE void doubt(std::size_t row, std::size_t column, const PixelCodes& codes) {
    const std::size_t place = doubtful_.count++;
    doubtful_.rows[place] = row;
    doubtful_.columns[place] = column;
    for (std::size_t channel = 0; channel < 3; ++channel) {
      doubtful_.values[channel][place] =
          static_cast<double>(codes[channel] >> kernel_.inputShiftRight) * kernel_.inputFactor;
    }
  }

  /// Writes what the definition says over what single precision said.
  HWY_NOINLINE void settleDoubts() {
    if constexpr (!std::is_same_v<Sample, float>) {
      if (doubtful_.count == 0) return;
      convertExactly(kernel_, doubtful_);
      const bool isPlanar = rows_.destination.layout == ImageLayout::planar;
      const std::size_t channelCount = rows_.destination.samplesPerPixel(rows_.destination.layout);
      for (std::size_t place = 0; place < doubtful_.count; ++place) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
          Sample* const row = rowOf<Sample>(rows_.destination, isPlanar ? channel : 0, doubtful_.rows[place]);
          row[doubtful_.columns[place] * channelCount + (isPlanar ? 0 : channel)] =
              static_cast<Sample>(doubtful_.codes[place * 4 + channel]);
        }
      }
      doubtful_.count = 0;
    }
  }

  DoubtfulPixels doubtful_;
#endif

  const CubeKernel& kernel_;
  const PixelRows<Sample>& rows_;
  Planes<Plane> planes_;
  alignas(64) Sample aside_[blockSize * 4];
};

void applyBytes(const CubeKernel& kernel, const PixelRows<std::uint8_t>& rows) {
  RowConverter<std::uint8_t>(kernel, rows).run();
}
void applyWords(const CubeKernel& kernel, const PixelRows<std::uint16_t>& rows) {
  RowConverter<std::uint16_t>(kernel, rows).run();
}
void applyFloats(const CubeKernel& kernel, const PixelRows<float>& rows) { RowConverter<float>(kernel, rows).run(); }

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace meridian::inline v0_2::detail {

HWY_EXPORT(applyBytes);
HWY_EXPORT(applyWords);
HWY_EXPORT(applyFloats);

void applyCube(const CubeKernel& kernel, const PixelRows<std::uint8_t>& rows) {
  HWY_DYNAMIC_DISPATCH(applyBytes)(kernel, rows);
}
void applyCube(const CubeKernel& kernel, const PixelRows<std::uint16_t>& rows) {
  HWY_DYNAMIC_DISPATCH(applyWords)(kernel, rows);
}
void applyCube(const CubeKernel& kernel, const PixelRows<float>& rows) {
  HWY_DYNAMIC_DISPATCH(applyFloats)(kernel, rows);
}

}  // namespace meridian::inline v0_2::detail
#endif  // HWY_ONCE
