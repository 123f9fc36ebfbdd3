/// \file
/// Lays text and images over Y'CbCr images, at the images' own depth. For example:
///
///     const auto [x, y] = placeOf(SAVAnchorBottomCenter, {200, 30}, {960, 540}, 14);
///     Overlay::ofText(mask, style, form).blend(*frame, x, y);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "meridian/cli/transcode_values.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/transcode_plan.h"

namespace meridian::inline v0_2::libav {

/// How much of a text covers each pixel, from 0 to 255, in rows from the top.
struct TextMask {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> coverage;
};

/// A pixel of R'G'B' with alpha, each from 0 to 1.
struct OverlayPixel {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
};

/// A rectangle that is blended with images of one form.
class Overlay {
 public:
  /// Makes one of pixels in rows. The form is of Y'CbCr with at most 16 bits.
  [[nodiscard]] static Overlay ofPixels(ImageSize size, std::span<const OverlayPixel> pixels, const ImageForm& form);
  /// Makes one of a text with its box, which hides what is below it.
  [[nodiscard]] static Overlay ofText(const TextMask& mask, const TextStyle& style, const ImageForm& form);

  [[nodiscard]] const ImageSize& size() const noexcept { return size_; }

  /// Lays the rectangle over an image, with its upper left corner at a pixel whose column and line are a multiple of
  /// the chroma's. What lies beyond the image is left out. An image that is transparent there is not afterwards.
  void blend(AVFrame& image, int x, int y) const;

 private:
  template <typename Sample>
  void blendSamples(AVFrame& image, int x, int y) const;

  /// A plane: its values as code values that are not rounded, and their share of the result.
  struct Plane {
    int width = 0;
    int height = 0;
    std::vector<float> values;
    std::vector<float> shares;
  };

  ImageSize size_;
  int bitDepth_ = 8;
  int chromaWidth_ = 0;
  int chromaHeight_ = 0;
  std::array<Plane, 3> planes_;
};

/// The upper left corner of an overlay.
struct OverlayPlace {
  int x = 0;
  int y = 0;
};

/// Returns where an overlay lies: at the anchor, a margin away from the edges, rounded down to whole chroma samples.
[[nodiscard]] OverlayPlace placeOf(const SAVTranscodeArgumentOverlayAnchorValue& anchor, ImageSize overlay,
                                   const ImageForm& image, int margin);

}  // namespace meridian::inline v0_2::libav
