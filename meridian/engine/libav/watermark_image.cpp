#include "meridian/engine/libav/watermark_image.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "meridian/engine/libav/frame_conversion.h"
#include "meridian/engine/libav/image_decoding.h"
#include "meridian/engine/video_encoders.h"

namespace meridian::inline v0_2::libav {
namespace {

/// Pixels whose colours are multiplied by their alpha, so that transparent ones weigh nothing when they are mixed.
struct Pixels {
  ImageSize size;
  std::vector<OverlayPixel> all;
};

/// Returns what the code values of the decoded image mean.
ImageForm formOf(const AVFrame& frame) {
  const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  ImageForm form;
  form.width = frame.width;
  form.height = frame.height;
  form.pixelFormat = format.name;
  form.bitDepth = format.comp[0].depth;
  const bool isRgb = (format.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
  form.chroma = isRgb ? ChromaSubsampling::rgb : ChromaSubsampling::yuv444;
  // Still images are full range, and Y'CbCr is that of JPEG files, unless they say otherwise.
  form.range = frame.color_range == AVCOL_RANGE_MPEG ? ColorRange::limited : ColorRange::full;
  const bool isStated = frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RGB;
  form.color.matrix = isStated ? static_cast<int>(frame.colorspace) : jfifMatrix;
  if (isRgb) form.color.matrix = ColorSpaceCodes::rgbMatrix;
  return form;
}

Pixels pixelsOf(const AVFrame& image) {
  Pixels pixels{{image.width, image.height}, {}};
  pixels.all.reserve(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
  constexpr double greatest = 65535;
  const auto row = [&image](std::size_t plane, int y) {
    return reinterpret_cast<const std::uint16_t*>(image.data[plane] +
                                                  static_cast<std::ptrdiff_t>(image.linesize[plane]) * y);
  };
  for (int y = 0; y < image.height; ++y) {
    const std::uint16_t* const green = row(0, y);
    const std::uint16_t* const blue = row(1, y);
    const std::uint16_t* const red = row(2, y);
    const std::uint16_t* const alphas = row(3, y);
    for (int x = 0; x < image.width; ++x) {
      const double alpha = alphas[x] / greatest;
      pixels.all.push_back({red[x] / greatest * alpha, green[x] / greatest * alpha, blue[x] / greatest * alpha, alpha});
    }
  }
  return pixels;
}

/// Adds a part of a pixel.
void add(OverlayPixel& sum, const OverlayPixel& pixel, double part) noexcept {
  sum.red += pixel.red * part;
  sum.green += pixel.green * part;
  sum.blue += pixel.blue * part;
  sum.alpha += pixel.alpha * part;
}

/// Scales rows of `count` pixels to `wanted`: each is the mean of those below a triangle around its place, which is as
/// wide as two pixels of the coarser grid.
std::vector<OverlayPixel> scaledRows(const std::vector<OverlayPixel>& rows, int count, int wanted) {
  const std::size_t rowCount = rows.size() / static_cast<std::size_t>(count);
  std::vector<OverlayPixel> scaled(rowCount * static_cast<std::size_t>(wanted), OverlayPixel{0, 0, 0, 0});
  const double step = static_cast<double>(count) / wanted;
  const double radius = std::max(step, 1.0);
  for (int x = 0; x < wanted; ++x) {
    const double center = (x + 0.5) * step - 0.5;
    const int first = std::max(static_cast<int>(std::ceil(center - radius)), 0);
    const int last = std::min(static_cast<int>(std::floor(center + radius)), count - 1);
    double total = 0;
    for (int each = first; each <= last; ++each) total += 1 - std::abs(each - center) / radius;
    for (std::size_t y = 0; y < rowCount; ++y) {
      OverlayPixel& sum = scaled[y * static_cast<std::size_t>(wanted) + static_cast<std::size_t>(x)];
      for (int each = first; each <= last && total > 0; ++each) {
        add(sum, rows[y * static_cast<std::size_t>(count) + static_cast<std::size_t>(each)],
            (1 - std::abs(each - center) / radius) / total);
      }
    }
  }
  return scaled;
}

/// Exchanges rows and columns.
std::vector<OverlayPixel> transposed(const std::vector<OverlayPixel>& pixels, ImageSize size) {
  std::vector<OverlayPixel> result(pixels.size());
  const auto width = static_cast<std::size_t>(size.width);
  const auto height = static_cast<std::size_t>(size.height);
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) result[x * height + y] = pixels[y * width + x];
  }
  return result;
}

Pixels scaled(Pixels pixels, ImageSize size) {
  if (pixels.size == size) return pixels;
  auto wide = scaledRows(pixels.all, pixels.size.width, size.width);
  auto turned = transposed(wide, {size.width, pixels.size.height});
  turned = scaledRows(turned, pixels.size.height, size.height);
  return {size, transposed(turned, {size.height, size.width})};
}

}  // namespace

Expected<Overlay, std::string> readWatermark(const WatermarkStep& step, const ImageForm& form) {
  const auto image = decodeImage(step.path, 1);
  if (!image) return Unexpected(std::string(image.error().text()) + ": " + image.error().detail);
  const AVFrame& frame = **image;
  const ImageForm from = formOf(frame);
  ImageForm to = from;
  to.pixelFormat = "gbrap16le";
  to.bitDepth = 16;
  to.chroma = ChromaSubsampling::rgb;
  to.hasAlpha = true;
  to.range = ColorRange::full;
  to.color.matrix = ColorSpaceCodes::rgbMatrix;
  auto converter = FrameConverter::open(from, to);
  if (!converter) return Unexpected(std::move(converter).error());
  const FramePointer rgb = (*converter)->converted(frame);
  if (!rgb) return Unexpected(std::string("there is no memory for it"));
  ImageSize size = step.size;
  if (size == ImageSize{}) {
    const auto scaledSide = [&step](int side) { return std::max(static_cast<int>(std::lround(side * step.scale)), 1); };
    size = {scaledSide(frame.width), scaledSide(frame.height)};
  }
  if (size.width > form.width || size.height > form.height)
    return Unexpected(std::string("it is larger than the frame"));
  Pixels pixels = scaled(pixelsOf(*rgb), size);
  for (OverlayPixel& pixel : pixels.all) {
    if (pixel.alpha <= 0) continue;
    pixel.red /= pixel.alpha;
    pixel.green /= pixel.alpha;
    pixel.blue /= pixel.alpha;
  }
  return Overlay::ofPixels(size, pixels.all, form);
}

}  // namespace meridian::inline v0_2::libav
