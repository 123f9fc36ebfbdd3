/// \file
/// The third step of the floating-point filter: the code values of colours, and which of them are uncertain.
///
/// Every result comes with a bound on its distance from the definition's (see CubeKernel). Truncating both gives
/// the same integer unless an integer lies between them. Results are fixed-point numbers with 16 bits for the fraction,
/// which as a signed number is the distance from the nearest integer: a result is certain if that exceeds the bound.
/// Results below the lowest code value or above the highest are moved so far into it that they are certain.
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

#include <hwy/highway.h>

#include "meridian/lut/cube_kernel.h"
#include "meridian/lut/cube_kernel_blend-inl.h"
#include "meridian/lut/cube_kernel_places-inl.h"
#include "meridian/lut/cube_kernel_planes-inl.h"

#if MERIDIAN_HAS_VECTORS

HWY_BEFORE_NAMESPACE();
namespace meridian::inline v0_2::detail::HWY_NAMESPACE {
namespace {

// Plain arrays are laid out as vector instructions need them, and the functions below pass their addresses.
// NOLINTBEGIN(modernize-avoid-c-arrays)

/// Two vectors of colours as code values less the center, and what is left of them, as signed parts of 65536 of a code
/// value: [r0 r1 g0 g1 b0 b1 x x] for each two neighbours, if the first vector has the even pixels and the second the
/// odd ones. In the last place of `fractions` are the pixels' bounds.
struct TruncatedColors {
  hn::Vec<hn::RebindToSigned<CodesTag>> codes;
  hn::Vec<hn::RebindToSigned<CodesTag>> fractions;
};

HWY_INLINE TruncatedColors truncatedColors(hn::Vec<IntTag> even, hn::Vec<IntTag> odd) {
  const hn::RebindToSigned<CodesTag> d;
  return {hn::OddEven(hn::BitCast(d, odd), hn::BitCast(d, hn::ShiftRight<16>(even))),
          hn::OddEven(hn::BitCast(d, hn::ShiftLeft<16>(odd)), hn::BitCast(d, even))};
}

/// Colours of the lattice or of CubeCells, as fixed-point numbers with 16 bits for the fraction.
struct LatticeColors {
  using Number = float;

  explicit LatticeColors(const CubeKernel& kernel) {
    const float least = kernel.least();
    const float most = kernel.most();
    // The fourth lane has the bound, which is at least 0.
    alignas(16) const float limits[8] = {least, least, least, 0, most, most, most, 0x7FFF};
    lowest = hn::LoadDup128(FloatTag(), limits);
    highest = hn::LoadDup128(FloatTag(), limits + 4);
  }
  HWY_INLINE hn::Vec<IntTag> load(const float* colors) const {
    return nearestInteger(hn::Min(hn::Max(hn::Load(FloatTag(), colors), lowest), highest));
  }

  hn::Vec<FloatTag> lowest;
  hn::Vec<FloatTag> highest;
};

struct CellColors {
  using Number = std::int32_t;

  explicit CellColors(const CubeKernel& kernel) {
    constexpr float scale = CubeCells::one / CubeKernel::one;
    const auto least = static_cast<std::int32_t>(kernel.least() * scale);
    const auto most = static_cast<std::int32_t>(kernel.most() * scale);
    alignas(16) const std::int32_t limits[8] = {least, least, least, 0, most, most, most, CubeCells::one / 2 - 1};
    lowest = hn::LoadDup128(IntTag(), limits);
    highest = hn::LoadDup128(IntTag(), limits + 4);
  }
  HWY_INLINE hn::Vec<IntTag> load(const std::int32_t* colors) const {
    return hn::ShiftLeft<2>(hn::Min(hn::Max(hn::Load(IntTag(), colors), lowest), highest));
  }

  hn::Vec<IntTag> lowest;
  hn::Vec<IntTag> highest;
};

/// Truncates the colours of a block to code values of the destination, in planes. Marks the certain ones, eight bits
/// for each two neighbours in the order of TruncatedColors; the last two bits say nothing.
template <typename Colors>
HWY_NOINLINE void truncateColors(const CubeKernel& kernel, const typename Colors::Number* colors, std::size_t count,
                                 Planes<std::uint16_t>& planes, std::uint64_t* certain) {
  const CodesTag dc;
  const hn::RebindToSigned<CodesTag> di;
  const hn::Rebind<std::uint32_t, FloatTag> dp;
  const Colors fixed(kernel);
  const auto center = hn::Set(di, static_cast<std::int16_t>(kernel.center));
  alignas(64) std::uint16_t codes[blockSize * 4];
  auto* bits = reinterpret_cast<std::uint8_t*>(certain);
  constexpr std::size_t lanes = HWY_LANES(float);
  for (std::size_t i = 0; i < count * 4; i += 2 * lanes) {
    const TruncatedColors both = truncatedColors(fixed.load(colors + i), fixed.load(colors + i + lanes));
    const auto bounds = hn::BitCast(di, hn::Broadcast<3>(hn::BitCast(IntTag(), both.fractions)));
    // A half is 32768, which as a magnitude has to stay above all bounds.
    const auto distances = hn::Max(both.fractions, hn::SaturatedSub(hn::Zero(di), both.fractions));
    bits += hn::StoreMaskBits(di, hn::Gt(distances, bounds), bits);
    hn::Store(hn::BitCast(dc, hn::Add(both.codes, center)), dc, codes + i);
  }
  // Two neighbours together.
  const auto* pairs = reinterpret_cast<const std::uint32_t*>(codes);
  for (std::size_t i = 0; i < count; i += 2 * lanes) {
    hn::Vec<decltype(dp)> red, green, blue, unused;
    hn::LoadInterleaved4(dp, pairs + i * 2, red, green, blue, unused);
    hn::Store(hn::BitCast(dc, red), dc, planes.channels[0] + i);
    hn::Store(hn::BitCast(dc, green), dc, planes.channels[1] + i);
    hn::Store(hn::BitCast(dc, blue), dc, planes.channels[2] + i);
  }
}

/// Shifts code values of a LUT of fewer bits than the destination's to the left, up to the highest of the destination.
HWY_NOINLINE void shiftCodes(const CubeKernel& kernel, std::size_t count, Planes<std::uint16_t>& planes) {
  const CodesTag d;
  const auto beyond = hn::Set(d, static_cast<std::uint16_t>(kernel.highestBefore));
  const auto highest = hn::Set(d, static_cast<std::uint16_t>(kernel.highest));
  for (auto& plane : planes.channels) {
    for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
      const auto codes = hn::Load(d, plane + i);
      const auto shifted = hn::ShiftLeftSame(codes, std::min(kernel.shiftLeft, 15));
      hn::Store(hn::IfThenElse(hn::Eq(codes, beyond), highest, shifted), d, plane + i);
    }
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

/// The uncertain pixels of a block, and how many blocks to convert by the definition before the filter is tried again.
struct UncertainOfBlock {
  std::uint8_t pixels[blockSize];
  std::size_t count = 0;
  std::size_t exactBlocks = 0;
  /// The last such number; 0 once the filter was useful.
  std::size_t streak = 0;
};
static_assert(blockSize <= 256);

/// Lists the uncertain pixels. Pixels in flat cells are certain: clipped black and white would be uncertain all over
/// otherwise.
HWY_INLINE void listUncertainPixels(const CubeKernel& kernel, const Places& places, std::size_t count,
                                    const std::uint64_t* certain, UncertainOfBlock& uncertain) {
  const float* const marks = kernel.lattice.data() + 3;
  std::size_t found = 0;
  for (std::size_t word = 0; word < (count + 15) / 16; ++word) {
    constexpr std::uint64_t channelsOfEach = 0x3F3F3F3F3F3F3F3F;
    for (std::uint64_t left = ~certain[word] & channelsOfEach; left != 0;) {
      const auto bit = static_cast<unsigned>(std::countr_zero(left));
      const unsigned shift = (bit & ~7U) | (bit & 1U);
      const std::size_t pixel = word * 16 + shift / 8 * 2 + (bit & 1U);
      const auto channels = static_cast<unsigned>(left >> shift) & 0x15U;
      left &= ~(std::uint64_t{0x15} << shift);
      const bool isFlat = (channels & ~CubeKernel::flatChannels(marks[places.cell[pixel]])) == 0;
      if (!isFlat || !isWithinCell(kernel, places, pixel)) uncertain.pixels[found++] = static_cast<std::uint8_t>(pixel);
    }
  }
  uncertain.count = found;
}

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // MERIDIAN_HAS_VECTORS
#endif  // include guard for each target
