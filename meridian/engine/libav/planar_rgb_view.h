/// \file
/// FFmpeg's planar R'G'B' as the images that LUTs are applied to.
#pragma once

#include <array>
#include <cstddef>

#include "meridian/engine/libav/handles.h"
#include "meridian/lut/image_view.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace meridian::inline v0_2::libav {

/// Returns a view of an image whose planes are green, blue and red; alpha is left out.
template <ImageSample Sample>
[[nodiscard]] ImageView<Sample> planarRgbView(AVFrame& image, int bitDepth) noexcept {
  constexpr std::array<std::size_t, 3> planeOfChannel{2, 0, 1};
  ImageView<Sample> view{.width = static_cast<std::size_t>(image.width),
                         .height = static_cast<std::size_t>(image.height),
                         .format = bitDepth};
  for (std::size_t channel = 0; channel < planeOfChannel.size(); ++channel) {
    const std::size_t plane = planeOfChannel[channel];
    view.planes[channel] = {.samples = reinterpret_cast<Sample*>(image.data[plane]),
                            .rowStride = image.linesize[plane]};
  }
  return view;
}

}  // namespace meridian::inline v0_2::libav
