/// \file
/// Between images and planes: samples of a block of pixels are separated by channel, code values widened to 16 bits, so
/// that the filter sees one form of every image. Compiled once for each instruction set.
#if defined(MERIDIAN_LUT_CUBE_KERNEL_PLANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef MERIDIAN_LUT_CUBE_KERNEL_PLANES_INL_H_
#undef MERIDIAN_LUT_CUBE_KERNEL_PLANES_INL_H_
#else
#define MERIDIAN_LUT_CUBE_KERNEL_PLANES_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <hwy/highway.h>

#include "meridian/lut/image_view.h"

// A machine without vector instructions evaluates the definition for every pixel.
#undef MERIDIAN_HAS_VECTORS
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
#define MERIDIAN_HAS_VECTORS 0
#else
#define MERIDIAN_HAS_VECTORS 1
#endif

HWY_BEFORE_NAMESPACE();
namespace meridian::inline v0_2::detail::HWY_NAMESPACE {
namespace {

// Plain arrays are laid out as vector instructions need them, and the functions below pass their addresses.
// NOLINTBEGIN(modernize-avoid-c-arrays)

/// Pixels that pass through all steps together, so that everything between the steps stays in the nearest cache.
constexpr std::size_t blockSize = 128;

/// Samples of a block, in planes.
template <typename Sample>
struct Planes {
  alignas(64) Sample channels[3][blockSize];
  alignas(64) Sample alpha[blockSize];
};

/// The type of a sample between the steps.
template <typename Sample>
using PlaneSample = std::conditional_t<std::is_same_v<Sample, float>, float, std::uint16_t>;

/// Returns the channels, 3 or 4, of an image whose samples are interleaved as red, green, blue and perhaps alpha; 0 for
/// every other arrangement.
template <typename Sample>
std::size_t interleavedChannels(const ImageView<Sample>& view) {
  const std::size_t channels = view.hasAlpha() ? 4 : 3;
  for (std::size_t channel = 0; channel < channels; ++channel) {
    const ImagePlane<Sample> expected{.samples = view.red().samples + channel,
                                      .rowStride = view.red().rowStride,
                                      .pixelStride = static_cast<std::ptrdiff_t>(channels * sizeof(Sample))};
    if (view.planes[channel] != expected) return 0;
  }
  return channels;
}

/// Loads samples of a channel with any strides; zeros follow them up to `rounded`.
template <typename Sample, typename Plane>
HWY_INLINE void loadPlane(const ImagePlane<const Sample>& plane, std::size_t row, std::size_t column, std::size_t count,
                          std::size_t rounded, Plane* into) {
  const Sample* const from = plane.at(row, column);
  const std::ptrdiff_t distance = plane.pixelStride / static_cast<std::ptrdiff_t>(sizeof(Sample));
  if (distance == 1) {
    for (std::size_t i = 0; i < count; ++i) into[i] = from[i];
  } else {
    for (std::size_t i = 0; i < count; ++i) into[i] = from[static_cast<std::ptrdiff_t>(i) * distance];
  }
  std::fill(into + count, into + rounded, Plane{0});
}

template <typename Sample, typename Plane>
HWY_INLINE void storePlane(const Plane* from, const ImagePlane<Sample>& plane, std::size_t row, std::size_t column,
                           std::size_t count) {
  Sample* const into = plane.at(row, column);
  const std::ptrdiff_t distance = plane.pixelStride / static_cast<std::ptrdiff_t>(sizeof(Sample));
  if (distance == 1) {
    for (std::size_t i = 0; i < count; ++i) into[i] = static_cast<Sample>(from[i]);
  } else {
    for (std::size_t i = 0; i < count; ++i)
      into[static_cast<std::ptrdiff_t>(i) * distance] = static_cast<Sample>(from[i]);
  }
}

#if MERIDIAN_HAS_VECTORS

namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::ScalableTag<float>;
using IntTag = hn::Rebind<std::int32_t, FloatTag>;
/// As many 16-bit samples as a vector has floats, and a whole vector of them.
using CodeTag = hn::Rebind<std::uint16_t, FloatTag>;
using CodesTag = hn::ScalableTag<std::uint16_t>;
using BytesTag = hn::ScalableTag<std::uint8_t>;

/// Returns the nearest integers of numbers that have them in 32 bits, which hn::NearestInt checks at some cost.
HWY_INLINE hn::Vec<IntTag> nearestInteger(hn::Vec<FloatTag> number) {
#if HWY_TARGET <= HWY_AVX3
  return hn::Vec<IntTag>{_mm512_cvtps_epi32(number.raw)};
#elif HWY_TARGET <= HWY_AVX2
  return hn::Vec<IntTag>{_mm256_cvtps_epi32(number.raw)};
#elif HWY_TARGET <= HWY_SSE4
  return hn::Vec<IntTag>{_mm_cvtps_epi32(number.raw)};
#else
  return hn::NearestInt(number);
#endif
}

/// Pixels of which every step processes a multiple.
template <typename Sample>
constexpr std::size_t pixelStep() {
  return std::max<std::size_t>(HWY_LANES(Sample), 32);
}

/// Separates interleaved samples of the type that planes have: 16-bit code values and floating point. `count` is a
/// multiple of the step here and below.
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

/// Loads code values that fit into bytes.
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

#else

template <typename Sample>
constexpr std::size_t pixelStep() {
  return 1;
}

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

#endif  // MERIDIAN_HAS_VECTORS

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard for each target
