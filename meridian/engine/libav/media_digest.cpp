#include "meridian/engine/libav/media_digest.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
}

#include <array>
#include <cstddef>
#include <cstring>
#include <new>

namespace meridian::inline v0_2::libav {

MediaDigest::MediaDigest() : md5_(av_md5_alloc()) {
  if (!md5_) throw std::bad_alloc();
  av_md5_init(md5_.get());
}

void MediaDigest::addImage(const AVFrame& image) {
  const auto format = static_cast<AVPixelFormat>(image.format);
  const AVPixFmtDescriptor* const layout = av_pix_fmt_desc_get(format);
  if (layout == nullptr) return;
  std::array<int, 4> widths{};
  if (av_image_fill_linesizes(widths.data(), format, image.width) < 0) return;
  for (std::size_t plane = 0; plane < widths.size() && image.data[plane] != nullptr && widths[plane] > 0; ++plane) {
    const bool isChroma = plane == 1 || plane == 2;
    const int rows = isChroma ? AV_CEIL_RSHIFT(image.height, layout->log2_chroma_h) : image.height;
    for (int row = 0; row < rows; ++row) {
      av_md5_update(md5_.get(), image.data[plane] + static_cast<std::ptrdiff_t>(image.linesize[plane]) * row,
                    static_cast<std::size_t>(widths[plane]));
    }
  }
  // The palette follows the indices.
  constexpr std::size_t paletteSize = 1024;
  if (format == AV_PIX_FMT_PAL8) av_md5_update(md5_.get(), image.data[1], paletteSize);
}

void MediaDigest::addSound(const AVFrame& sound) {
  const auto format = static_cast<AVSampleFormat>(sound.format);
  const auto size = static_cast<std::size_t>(av_get_bytes_per_sample(format));
  const auto channels = static_cast<std::size_t>(sound.ch_layout.nb_channels);
  const auto count = static_cast<std::size_t>(sound.nb_samples);
  if (av_sample_fmt_is_planar(format) == 0) {
    av_md5_update(md5_.get(), sound.extended_data[0], size * channels * count);
    return;
  }
  samples_.resize(size * channels * count);
  for (std::size_t channel = 0; channel < channels; ++channel) {
    for (std::size_t sample = 0; sample < count; ++sample) {
      std::memcpy(samples_.data() + (sample * channels + channel) * size, sound.extended_data[channel] + sample * size,
                  size);
    }
  }
  av_md5_update(md5_.get(), samples_.data(), samples_.size());
}

std::string MediaDigest::text() {
  std::array<std::uint8_t, 16> digest{};
  av_md5_final(md5_.get(), digest.data());
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const unsigned byte : digest) {
    text += digits[byte >> 4U];
    text += digits[byte & 15U];
  }
  return text;
}

}  // namespace meridian::inline v0_2::libav
