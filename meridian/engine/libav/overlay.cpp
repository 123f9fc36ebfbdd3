#include "meridian/engine/libav/overlay.h"

#include <algorithm>
#include <cmath>

#include "meridian/engine/libav/color_matrices.h"

namespace meridian::inline v0_2::libav {
namespace {

/// How many columns and lines share a sample of chroma, as powers of two.
struct ChromaShift {
  int width = 0;
  int height = 0;
};

ChromaShift chromaShift(ChromaSubsampling chroma) noexcept {
  switch (chroma) {
    case ChromaSubsampling::yuv420:
      return {1, 1};
    case ChromaSubsampling::yuv422:
      return {1, 0};
    case ChromaSubsampling::yuv411:
      return {2, 0};
    case ChromaSubsampling::yuv440:
      return {0, 1};
    default:
      return {};
  }
}

int dividedUp(int number, int shift) noexcept { return (number + (1 << shift) - 1) >> shift; }

/// Converts R'G'B' to code values of a form.
class CodeValues {
 public:
  explicit CodeValues(const ImageForm& form)
      : weights_(lumaWeights(form.color.matrix).value_or(LumaWeights{0.2126, 0.0722})) {
    const double unit = std::exp2(form.bitDepth - 8);
    const double greatest = std::exp2(form.bitDepth) - 1;
    const bool isFull = form.range == ColorRange::full;
    black_ = isFull ? 0 : 16 * unit;
    lumaScale_ = isFull ? greatest : 219 * unit;
    chromaScale_ = isFull ? greatest : 224 * unit;
    middle_ = 128 * unit;
  }

  [[nodiscard]] std::array<double, 3> of(const OverlayPixel& pixel) const noexcept {
    const double luma =
        weights_.red * pixel.red + (1 - weights_.red - weights_.blue) * pixel.green + weights_.blue * pixel.blue;
    const double blueDifference = (pixel.blue - luma) / (2 * (1 - weights_.blue));
    const double redDifference = (pixel.red - luma) / (2 * (1 - weights_.red));
    return {black_ + luma * lumaScale_, middle_ + blueDifference * chromaScale_,
            middle_ + redDifference * chromaScale_};
  }

 private:
  LumaWeights weights_;
  double black_ = 0;
  double lumaScale_ = 0;
  double chromaScale_ = 0;
  double middle_ = 0;
};

/// Changes the shares of an overlay into those of the colours, as they are beside a straight alpha: all of the overlay
/// where nothing was there ("over", Porter and Duff, 1984).
template <typename Sample>
void shareColors(const Sample* alpha, std::vector<float>& shares, int step, float greatest) noexcept {
  for (float& share : shares) {
    const float covered = share + static_cast<float>(*alpha) / greatest * (1 - share);
    share = covered > 0 ? share / covered : 0;
    alpha += step;
  }
}

template <typename Sample>
void blendRow(Sample* row, const float* values, const float* shares, int count, float greatest) noexcept {
  for (int column = 0; column < count; ++column) {
    const auto old = static_cast<float>(row[column]);
    const float mixed = old + (values[column] - old) * shares[column];
    row[column] = static_cast<Sample>(std::clamp(mixed + 0.5F, 0.0F, greatest));
  }
}

}  // namespace

Overlay Overlay::ofPixels(ImageSize size, std::span<const OverlayPixel> pixels, const ImageForm& form) {
  const CodeValues codes(form);
  const ChromaShift shift = chromaShift(form.chroma);
  Overlay overlay;
  overlay.size_ = size;
  overlay.bitDepth_ = form.bitDepth;
  overlay.chromaWidth_ = shift.width;
  overlay.chromaHeight_ = shift.height;
  for (std::size_t place = 0; place < overlay.planes_.size(); ++place) {
    Plane& plane = overlay.planes_[place];
    const ChromaShift own = place == 0 ? ChromaShift() : shift;
    plane.width = dividedUp(size.width, own.width);
    plane.height = dividedUp(size.height, own.height);
    const auto count = static_cast<std::size_t>(plane.width) * static_cast<std::size_t>(plane.height);
    plane.values.assign(count, 0);
    plane.shares.assign(count, 0);
    // A sample of chroma is the mean of its pixels, weighted by their alpha.
    std::vector<double> sums(count, 0);
    std::vector<double> alphas(count, 0);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const OverlayPixel& pixel =
            pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(x)];
        const auto sample = static_cast<std::size_t>(y >> own.height) * static_cast<std::size_t>(plane.width) +
                            static_cast<std::size_t>(x >> own.width);
        sums[sample] += codes.of(pixel)[place] * pixel.alpha;
        alphas[sample] += pixel.alpha;
      }
    }
    const double pixelsOfSample = (1 << own.width) * (1 << own.height);
    for (std::size_t sample = 0; sample < count; ++sample) {
      if (alphas[sample] <= 0) continue;
      plane.values[sample] = static_cast<float>(sums[sample] / alphas[sample]);
      plane.shares[sample] = static_cast<float>(alphas[sample] / pixelsOfSample);
    }
  }
  return overlay;
}

Overlay Overlay::ofText(const TextMask& mask, const TextStyle& style, const ImageForm& form) {
  const auto part = [](std::uint8_t value) { return value / 255.0; };
  std::vector<OverlayPixel> pixels;
  pixels.reserve(mask.coverage.size());
  for (const std::uint8_t coverage : mask.coverage) {
    const auto mixed = [&](std::uint8_t font, std::uint8_t box) {
      return part(box) + (part(font) - part(box)) * part(coverage);
    };
    pixels.push_back({mixed(style.fontColor.red, style.boxColor.red),
                      mixed(style.fontColor.green, style.boxColor.green),
                      mixed(style.fontColor.blue, style.boxColor.blue), 1});
  }
  return ofPixels({mask.width, mask.height}, pixels, form);
}

template <typename Sample>
void Overlay::blendSamples(AVFrame& image, int x, int y) const {
  const float greatest = static_cast<float>((1U << static_cast<unsigned>(bitDepth_)) - 1);
  const auto rowOf = [&image](std::size_t place, int line) {
    return reinterpret_cast<Sample*>(image.data[place] + static_cast<std::ptrdiff_t>(image.linesize[place]) * line);
  };
  constexpr std::size_t alphaPlane = 3;
  const bool hasAlpha = image.data[alphaPlane] != nullptr;
  std::vector<float> shares;
  for (std::size_t place = 0; place < planes_.size(); ++place) {
    const Plane& plane = planes_[place];
    const int shiftX = place == 0 ? 0 : chromaWidth_;
    const int shiftY = place == 0 ? 0 : chromaHeight_;
    const int left = x >> shiftX;
    const int top = y >> shiftY;
    const int columns = std::min(plane.width, dividedUp(image.width, shiftX) - left);
    const int lines = std::min(plane.height, dividedUp(image.height, shiftY) - top);
    for (int line = 0; line < lines; ++line) {
      const std::size_t first = static_cast<std::size_t>(line) * static_cast<std::size_t>(plane.width);
      const float* rowShares = &plane.shares[first];
      if (hasAlpha) {
        shares.assign(rowShares, rowShares + columns);
        const Sample* const alpha = rowOf(alphaPlane, (top + line) << shiftY) + (left << shiftX);
        shareColors(alpha, shares, 1 << shiftX, greatest);
        rowShares = shares.data();
      }
      blendRow(rowOf(place, top + line) + left, &plane.values[first], rowShares, columns, greatest);
    }
  }
  if (!hasAlpha) return;
  const Plane& plane = planes_.front();
  const int columns = std::min(plane.width, image.width - x);
  const std::vector<float> opaque(static_cast<std::size_t>(plane.width), greatest);
  for (int line = 0; line < std::min(plane.height, image.height - y); ++line) {
    const std::size_t first = static_cast<std::size_t>(line) * static_cast<std::size_t>(plane.width);
    blendRow(rowOf(alphaPlane, y + line) + x, opaque.data(), &plane.shares[first], columns, greatest);
  }
}

void Overlay::blend(AVFrame& image, int x, int y) const {
  if (bitDepth_ == 8) {
    blendSamples<std::uint8_t>(image, x, y);
  } else {
    blendSamples<std::uint16_t>(image, x, y);
  }
}

OverlayPlace placeOf(const SAVTranscodeArgumentOverlayAnchorValue& anchor, ImageSize overlay, const ImageForm& image,
                     int margin) {
  const auto cases = SAVTranscodeArgumentOverlayAnchorValue::allCases();
  const auto number = std::ranges::find(cases, anchor) - cases.begin();
  const auto along = [margin](std::ptrdiff_t third, int space) {
    const std::array<int, 3> places{margin, space / 2, space - margin};
    return std::max(places[static_cast<std::size_t>(third)], 0);
  };
  const ChromaShift shift = chromaShift(image.chroma);
  return {along(number % 3, image.width - overlay.width) >> shift.width << shift.width,
          along(number / 3, image.height - overlay.height) >> shift.height << shift.height};
}

}  // namespace meridian::inline v0_2::libav
