/// \file
/// The driver: blocks of an image's rows go through the filter, and uncertain pixels are collected for the exact
/// fallback, whose results replace the filter's.
#if defined(MERIDIAN_LUT_CUBE_KERNEL_DRIVER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef MERIDIAN_LUT_CUBE_KERNEL_DRIVER_INL_H_
#undef MERIDIAN_LUT_CUBE_KERNEL_DRIVER_INL_H_
#else
#define MERIDIAN_LUT_CUBE_KERNEL_DRIVER_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "meridian/lut/cube_kernel.h"
#include "meridian/lut/cube_kernel_exact-inl.h"
#include "meridian/lut/cube_kernel_filter-inl.h"
#include "meridian/lut/cube_kernel_planes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace meridian::inline v0_2::detail::HWY_NAMESPACE {
namespace {

// Plain arrays are laid out as vector instructions need them, and the functions below pass their addresses.
// NOLINTBEGIN(modernize-avoid-c-arrays)

/// Converts a block one pixel after the other by the definition.
inline void convertPlainly(const CubeKernel& kernel, const Planes<std::uint16_t>& source, std::size_t count,
                           Planes<std::uint16_t>& results) {
  const auto& [red, green, blue] = source.channels;
  for (std::size_t i = 0; i < count; ++i) {
    const PixelCodes codes = kernel.definition.codeValues({red[i], green[i], blue[i]}, *kernel.formats);
    for (std::size_t channel = 0; channel < 3; ++channel) results.channels[channel][i] = codes[channel];
  }
}

inline void convertPlainly(const CubeKernel& kernel, const Planes<float>& source, std::size_t count,
                           Planes<float>& results) {
  const auto& [red, green, blue] = source.channels;
  for (std::size_t i = 0; i < count; ++i) {
    const LutColor color = kernel.definition.color({red[i], green[i], blue[i]});
    results.channels[0][i] = static_cast<float>(color.red);
    results.channels[1][i] = static_cast<float>(color.green);
    results.channels[2][i] = static_cast<float>(color.blue);
  }
}

#if MERIDIAN_HAS_VECTORS

/// Separates four samples of each pixel into planes.
template <typename Sample>
HWY_NOINLINE void separate(const Sample* samples, std::size_t count, Planes<Sample>& planes) {
  const hn::ScalableTag<Sample> d;
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
    hn::Vec<hn::ScalableTag<Sample>> red, green, blue, unused;
    hn::LoadInterleaved4(d, samples + i * 4, red, green, blue, unused);
    hn::Store(red, d, planes.channels[0] + i);
    hn::Store(green, d, planes.channels[1] + i);
    hn::Store(blue, d, planes.channels[2] + i);
  }
}

/// Stores the first three of four samples of each pixel, and nothing beyond the last one.
HWY_NOINLINE void storeColors(const float* colors, std::size_t count, float* into) {
  std::size_t i = 0;
#if HWY_TARGET <= HWY_AVX3
  const FloatTag d;
  alignas(64) constexpr std::int32_t lanes[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14};
  const auto colorsOfFour = hn::SetTableIndices(d, lanes);
  const auto stored = hn::FirstN(d, 12);
  for (; i + 4 <= count; i += 4) {
    hn::BlendedStore(hn::TableLookupLanes(hn::Load(d, colors + i * 4), colorsOfFour), stored, d, into + i * 3);
  }
#else
  const PointTag d;
  for (; i + 1 < count; ++i) hn::StoreU(hn::Load(d, colors + i * 4), d, into + i * 3);
#endif
  for (; i < count; ++i) std::memcpy(into + i * 3, colors + i * 4, 3 * sizeof(float));
}

/// Stores the colours of a block of floating point, four numbers each.
HWY_INLINE void blendFloats(const CubeKernel& kernel, const CubeCells* cells, const Planes<float>& source,
                            std::size_t count, float* colors) {
  Places places;
  if (cells != nullptr) {
    findPlaces<LutInterpolation::trilinear>(kernel, source, count, places);
    blendCells(*cells, places, count, colors);
  } else {
    blendColors<ColorOrder::pixels>(kernel, source, count, places, colors);
  }
}

HWY_INLINE void convertPlanes(const CubeKernel& kernel, const CubeCells* cells, const Planes<float>& source,
                              std::size_t count, Planes<float>& results, UncertainOfBlock& /*uncertain*/) {
  if (!kernel.filterApplies) return convertPlainly(kernel, source, count, results);
  alignas(64) float colors[blockSize * 4];
  blendFloats(kernel, cells, source, count, colors);
  separate(colors, count, results);
}

/// Converts a block by the definition.
HWY_NOINLINE void convertWholeBlock(const CubeKernel& kernel, const Planes<std::uint16_t>& source, std::size_t count,
                                    Planes<std::uint16_t>& results) {
  alignas(64) std::uint16_t codes[blockSize * 4];
  convertExactly(kernel, {source.channels[0], source.channels[1], source.channels[2]}, count, codes);
  separate(codes, count, results);
}

/// Lists the pixels whose results are uncertain.
HWY_INLINE void convertPlanes(const CubeKernel& kernel, const CubeCells* cells, const Planes<std::uint16_t>& source,
                              std::size_t count, Planes<std::uint16_t>& results, UncertainOfBlock& uncertain) {
  if (!kernel.filterApplies) return convertPlainly(kernel, source, count, results);
  if (uncertain.exactBlocks > 0) {
    --uncertain.exactBlocks;
    return convertWholeBlock(kernel, source, count, results);
  }
  Places places;
  std::uint64_t certain[blockSize / 16];
  std::memset(certain, 0xFF, sizeof(certain));
  if (cells != nullptr) {
    alignas(64) std::int32_t colors[blockSize * 4];
    findPlaces<LutInterpolation::trilinear>(kernel, source, count, places);
    blendCells(*cells, places, count, colors);
    truncateColors<CellColors>(kernel, colors, count, results, certain);
  } else {
    alignas(64) float colors[blockSize * 4];
    blendColors<ColorOrder::evenThenOdd>(kernel, source, count, places, colors);
    truncateColors<LatticeColors>(kernel, colors, count, results, certain);
  }
  if (kernel.shiftLeft > 0) shiftCodes(kernel, count, results);
  listUncertainPixels(kernel, places, count, certain, uncertain);
  // Where a cube is nearly an identity, most results are next to an integer, and probably those of the next blocks too.
  if (uncertain.count > count / 2) {
    convertWholeBlock(kernel, source, count, results);
    uncertain.count = 0;
    constexpr std::size_t mostAtOnce = 15;
    uncertain.streak = std::min(2 * uncertain.streak + 1, mostAtOnce);
    uncertain.exactBlocks = uncertain.streak;
  } else {
    uncertain.streak = 0;
  }
}

#else

struct UncertainOfBlock {};

template <typename Plane>
void convertPlanes(const CubeKernel& kernel, const CubeCells* /*cells*/, const Planes<Plane>& source, std::size_t count,
                   Planes<Plane>& results, UncertainOfBlock& /*uncertain*/) {
  convertPlainly(kernel, source, count, results);
}

#endif  // MERIDIAN_HAS_VECTORS

inline void rescaleAlpha(const CubeKernel& kernel, const std::uint16_t* alpha, std::size_t count,
                         std::uint16_t* results) {
  if (kernel.formats->source.bitDepth == kernel.formats->destination.bitDepth) {
    std::copy_n(alpha, count, results);
  } else {
    for (std::size_t i = 0; i < count; ++i) results[i] = rescaledAlpha(alpha[i], *kernel.formats);
  }
}
inline void rescaleAlpha(const CubeKernel& /*kernel*/, const float* alpha, std::size_t count, float* results) {
  std::copy_n(alpha, count, results);
}

template <typename Plane>
Plane opaque(const CubeKernel& kernel) {
  if constexpr (std::is_same_v<Plane, float>) {
    return 1;
  } else {
    return static_cast<Plane>(largestCodeValue(kernel.formats->destination.bitDepth));
  }
}

/// Converts rows of pixels block by block.
template <typename Sample>
class RowConverter {
 public:
  RowConverter(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<Sample>& rows)
      : kernel_(kernel),
        rows_(rows),
        cells_(cells),
        sourceChannels_(interleavedChannels(rows.source)),
        destinationChannels_(interleavedChannels(rows.destination)) {}

  HWY_INLINE void run() {
    for (std::size_t row = 0; row < rows_.source.height; ++row) {
      for (std::size_t column = 0; column < rows_.source.width; column += blockSize) {
        convertBlock(row, column, std::min(blockSize, rows_.source.width - column));
      }
    }
    settleUncertainPixels();
  }

 private:
  using Plane = PlaneSample<Sample>;
  static constexpr std::size_t step = pixelStep<Sample>();
  static_assert(blockSize % step == 0);

  /// Converts up to a block of pixels of a row. Whole steps are read and written in place; the remainder goes by way of
  /// a buffer.
  HWY_INLINE void convertBlock(std::size_t row, std::size_t column, std::size_t count) {
    const std::size_t rounded = (count + step - 1) / step * step;
    prefetch(row, column);
    load(row, column, count, rounded);
#if MERIDIAN_HAS_VECTORS
    if constexpr (std::is_same_v<Sample, float>) {
      if (kernel_.filterApplies && destinationChannels_ == 3) {
        alignas(64) float colors[blockSize * 4];
        blendFloats(kernel_, cells_, source_, rounded, colors);
        storeColors(colors, count, rows_.destination.red().at(row, column));
        return;
      }
    }
#endif
    convertPlanes(kernel_, cells_, source_, rounded, results_, uncertainOfBlock_);
    store(row, column, count, rounded);
    collect(row, column, count);
  }

  /// Asks for the samples two blocks on, so that they come from memory while this block and the next are converted.
  HWY_INLINE void prefetch(std::size_t row, std::size_t column) const {
    const ImageView<const Sample>& source = rows_.source;
    column += 2 * blockSize;
    if (column >= source.width) return;
    const std::size_t count = std::min(blockSize, source.width - column);
    constexpr std::size_t cacheLine = 64;
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const ImagePlane<const Sample>& plane = source.planes[channel];
      const auto stride = static_cast<std::size_t>(std::max<std::ptrdiff_t>(plane.pixelStride, 0));
      if (stride > 4 * sizeof(Sample)) return;
      const auto* const from = reinterpret_cast<const std::byte*>(plane.at(row, column));
      for (std::size_t i = 0; i < count * stride; i += cacheLine) hwy::Prefetch(from + i);
      if (stride > sizeof(Sample)) return;  // interleaved, so that these are the other channels too
    }
  }

  HWY_NOINLINE void load(std::size_t row, std::size_t column, std::size_t count, std::size_t rounded) {
    if (sourceChannels_ == 0) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        loadPlane(rows_.source.planes[channel], row, column, count, rounded, source_.channels[channel]);
      }
      if (rows_.source.hasAlpha()) loadPlane(rows_.source.alpha(), row, column, count, rounded, source_.alpha);
      return;
    }
    const Sample* from = rows_.source.red().at(row, column);
    if (rounded != count) {
      std::memcpy(buffer_, from, count * sourceChannels_ * sizeof(Sample));
      std::fill(buffer_ + count * sourceChannels_, buffer_ + rounded * sourceChannels_, Sample{0});
      from = buffer_;
    }
    loadPlanes(from, sourceChannels_, rounded, source_);
  }

  HWY_NOINLINE void store(std::size_t row, std::size_t column, std::size_t count, std::size_t rounded) {
    if (rows_.destination.hasAlpha()) {
      if (rows_.source.hasAlpha()) {
        rescaleAlpha(kernel_, source_.alpha, rounded, results_.alpha);
      } else {
        std::fill_n(results_.alpha, rounded, opaque<Plane>(kernel_));
      }
    }
    if (destinationChannels_ == 0) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        storePlane(results_.channels[channel], rows_.destination.planes[channel], row, column, count);
      }
      if (rows_.destination.hasAlpha()) storePlane(results_.alpha, rows_.destination.alpha(), row, column, count);
      return;
    }
    Sample* const into = rows_.destination.red().at(row, column);
    storePlanes(results_, destinationChannels_, rounded, rounded != count ? buffer_ : into);
    if (rounded != count) std::memcpy(into, buffer_, count * destinationChannels_ * sizeof(Sample));
  }

#if MERIDIAN_HAS_VECTORS
  /// Collects the uncertain pixels of a block, and settles them when there are enough.
  HWY_INLINE void collect(std::size_t row, std::size_t column, std::size_t count) {
    if constexpr (!std::is_same_v<Sample, float>) {
      for (std::size_t i = 0; i < uncertainOfBlock_.count; ++i) {
        const std::size_t pixel = uncertainOfBlock_.pixels[i];
        if (pixel >= count) continue;
        const std::size_t place = uncertain_.count++;
        uncertain_.rows[place] = row;
        uncertain_.columns[place] = column + pixel;
        for (std::size_t channel = 0; channel < 3; ++channel) {
          uncertain_.codes[channel][place] = source_.channels[channel][pixel];
        }
      }
      if (uncertain_.count >= UncertainPixels::enough) settleUncertainPixels();
    }
  }

  /// Replaces what single precision yielded for the uncertain pixels by what the definition yields.
  HWY_NOINLINE void settleUncertainPixels() {
    if constexpr (!std::is_same_v<Sample, float>) {
      const std::size_t rounded = (uncertain_.count + exactGroup - 1) / exactGroup * exactGroup;
      for (auto& codes : uncertain_.codes) std::fill(codes + uncertain_.count, codes + rounded, std::uint16_t{0});
      alignas(64) std::uint16_t results[UncertainPixels::capacity * 4];
      convertExactly(kernel_, {uncertain_.codes[0], uncertain_.codes[1], uncertain_.codes[2]}, rounded, results);
      for (std::size_t place = 0; place < uncertain_.count; ++place) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
          *rows_.destination.planes[channel].at(uncertain_.rows[place], uncertain_.columns[place]) =
              static_cast<Sample>(results[place * 4 + channel]);
        }
      }
      uncertain_.count = 0;
    }
  }

  UncertainPixels uncertain_;
#else
  void collect(std::size_t /*row*/, std::size_t /*column*/, std::size_t /*count*/) {}
  void settleUncertainPixels() {}
#endif

  Planes<Plane> source_;
  Planes<Plane> results_;
  alignas(64) Sample buffer_[blockSize * 4];
  const CubeKernel& kernel_;
  const PixelRows<Sample>& rows_;
  const CubeCells* cells_;
  /// The channels of interleaved samples, 3 or 4; 0 for planes of any other strides.
  std::size_t sourceChannels_;
  std::size_t destinationChannels_;
  UncertainOfBlock uncertainOfBlock_;
};

inline void applyBytes(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<std::uint8_t>& rows) {
  RowConverter<std::uint8_t>(kernel, cells, rows).run();
}
inline void applyWords(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<std::uint16_t>& rows) {
  RowConverter<std::uint16_t>(kernel, cells, rows).run();
}
inline void applyFloats(const CubeKernel& kernel, const CubeCells* cells, const PixelRows<float>& rows) {
  RowConverter<float>(kernel, cells, rows).run();
}

// NOLINTEND(modernize-avoid-c-arrays)

}  // namespace
}  // namespace meridian::inline v0_2::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard for each target
