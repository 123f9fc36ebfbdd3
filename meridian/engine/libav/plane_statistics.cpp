#include "meridian/engine/libav/plane_statistics.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <vector>

namespace meridian::inline v0_2::libav {
namespace {

template <typename Sample>
const Sample* rowOf(const PlaneView& plane, int row) noexcept {
  return reinterpret_cast<const Sample*>(plane.samples + plane.rowStride * row);
}

/// Equal samples in a row would wait for each other at one counter, so that neighbours count at different ones.
constexpr std::size_t lanes = 4;

template <typename Sample>
void countSamples(const PlaneView& plane, std::span<std::uint64_t> counts) {
  const std::size_t values = counts.size();
  const std::size_t greatest = values - 1;
  std::vector<std::uint32_t> lane(values * lanes);
  const auto width = static_cast<std::size_t>(plane.width);
  for (int row = 0; row < plane.height; ++row) {
    const Sample* const samples = rowOf<Sample>(plane, row);
    std::size_t column = 0;
    for (; column + lanes <= width; column += lanes) {
      for (std::size_t each = 0; each < lanes; ++each) {
        ++lane[std::min<std::size_t>(samples[column + each], greatest) * lanes + each];
      }
    }
    for (; column < width; ++column) ++lane[std::min<std::size_t>(samples[column], greatest) * lanes];
  }
  for (std::size_t value = 0; value < values; ++value) {
    for (std::size_t each = 0; each < lanes; ++each) counts[value] += lane[value * lanes + each];
  }
}

template <typename Sample>
std::uint64_t differencesOf(const PlaneView& left, const PlaneView& right) noexcept {
  std::uint64_t sum = 0;
  for (int row = 0; row < left.height; ++row) {
    const Sample* const leftRow = rowOf<Sample>(left, row);
    const Sample* const rightRow = rowOf<Sample>(right, row);
    // A row of 65,535 samples of 16 bits fits into 32 bits.
    std::uint32_t part = 0;
    for (int column = 0; column < left.width; ++column) {
      part += static_cast<std::uint32_t>(std::abs(int{leftRow[column]} - int{rightRow[column]}));
    }
    sum += part;
  }
  return sum;
}

}  // namespace

bool hasLumaPlanes(AVPixelFormat format) noexcept {
  const AVPixFmtDescriptor* const layout = av_pix_fmt_desc_get(format);
  if (layout == nullptr) return false;
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flags.
  constexpr auto others = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                          AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_FLOAT;
  if ((layout->flags & others) != 0) return false;
  for (int each = 0; each < layout->nb_components; ++each) {
    const AVComponentDescriptor& component = layout->comp[each];
    const int bytes = component.depth > 8 ? 2 : 1;
    if (component.plane != each || component.step != bytes || component.shift != 0 || component.depth > 16)
      return false;
  }
  const bool isBigEndian = (layout->flags & AV_PIX_FMT_FLAG_BE) != 0;
  return layout->comp[0].depth <= 8 || isBigEndian == (std::endian::native == std::endian::big);
}

PlaneView planeOf(const AVFrame& image, std::size_t plane) noexcept {
  const AVPixFmtDescriptor* const layout = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(image.format));
  if (layout == nullptr || plane >= layout->nb_components) return {};
  const bool isChroma = layout->nb_components >= 3 && (plane == 1 || plane == 2);
  return {image.data[plane], image.linesize[plane],
          isChroma ? AV_CEIL_RSHIFT(image.width, layout->log2_chroma_w) : image.width,
          isChroma ? AV_CEIL_RSHIFT(image.height, layout->log2_chroma_h) : image.height, layout->comp[plane].depth};
}

void addToHistogram(const PlaneView& plane, std::span<std::uint64_t> counts) {
  if (plane.bitDepth > 8) {
    countSamples<std::uint16_t>(plane, counts);
  } else {
    countSamples<std::uint8_t>(plane, counts);
  }
}

std::uint64_t sumOfDifferences(const PlaneView& left, const PlaneView& right) noexcept {
  return left.bitDepth > 8 ? differencesOf<std::uint16_t>(left, right) : differencesOf<std::uint8_t>(left, right);
}

}  // namespace meridian::inline v0_2::libav
