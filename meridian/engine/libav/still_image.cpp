#include "meridian/engine/libav/still_image.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "meridian/engine/libav/color_matrices.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/libav/planar_rgb_view.h"

namespace meridian::inline v0_2::libav {
namespace {

/// The largest side of a JPEG.
constexpr double largestSide = 65'500;

/// The planar RGB of a bit depth.
struct RgbFormat {
  int bitDepth;
  AVPixelFormat format;
};
constexpr auto rgbFormats = std::to_array<RgbFormat>(
    {{8, AV_PIX_FMT_GBRP}, {10, AV_PIX_FMT_GBRP10}, {12, AV_PIX_FMT_GBRP12}, {16, AV_PIX_FMT_GBRP16}});

RgbFormat rgbFormatFor(int bitDepth) noexcept {
  const auto* const found =
      std::ranges::find_if(rgbFormats, [&](const RgbFormat& each) { return each.bitDepth >= bitDepth; });
  return found == rgbFormats.end() ? rgbFormats.back() : *found;
}

/// A matrix, as swscale has it, and a range.
struct Coding {
  const int* matrix;
  bool isFullRange;
};

/// Returns what the code values of a frame mean; the error names a matrix that swscale would replace by another.
Expected<Coding, std::string> codingOf(const AVFrame& frame, const AVPixFmtDescriptor& format) {
  constexpr int linesOfHighDefinition = 720;
  AVColorSpace matrix = frame.colorspace;
  if (matrix == AVCOL_SPC_UNSPECIFIED || matrix == AVCOL_SPC_RESERVED || matrix == AVCOL_SPC_RGB) {
    matrix = frame.height >= linesOfHighDefinition ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
  }
  // Luma without a range tag is full range, as in image files, and so is RGB.
  const bool isColorDifference = format.nb_components >= 3 && (format.flags & AV_PIX_FMT_FLAG_RGB) == 0;
  if (isColorDifference && !lumaWeights(matrix)) {
    const char* const name = av_color_space_name(matrix);
    return Unexpected("its matrix " + (name != nullptr ? std::string(name) : std::to_string(matrix)) +
                      " is not supported");
  }
  const bool isPicture = !isColorDifference || std::string_view(format.name).starts_with("yuvj");
  const bool isFullRange =
      frame.color_range == AVCOL_RANGE_UNSPECIFIED ? isPicture : frame.color_range == AVCOL_RANGE_JPEG;
  return Coding{sws_getCoefficients(matrix), isFullRange || std::string_view(format.name).starts_with("yuvj")};
}

FramePointer newFrame(AVPixelFormat format, int width, int height) {
  FramePointer frame(av_frame_alloc());
  if (!frame) return nullptr;
  frame->format = format;
  frame->width = width;
  frame->height = height;
  return av_frame_get_buffer(frame.get(), 0) < 0 ? nullptr : std::move(frame);
}

/// Scales and converts.
bool convert(const AVFrame& from, const Coding& fromCoding, AVFrame& to, const Coding& toCoding) {
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flags.
  constexpr int flags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
  constexpr int unchanged = 1 << 16;
  const ScalerPointer scaler(sws_getContext(from.width, from.height, static_cast<AVPixelFormat>(from.format), to.width,
                                            to.height, static_cast<AVPixelFormat>(to.format), flags, nullptr, nullptr,
                                            nullptr));
  if (!scaler) return false;
  // Fails where there is nothing to set, as between RGB and RGB.
  static_cast<void>(sws_setColorspaceDetails(scaler.get(), fromCoding.matrix, fromCoding.isFullRange ? 1 : 0,
                                             toCoding.matrix, toCoding.isFullRange ? 1 : 0, 0, unchanged, unchanged));
  return sws_scale(scaler.get(), from.data, from.linesize, 0, from.height, to.data, to.linesize) == to.height;
}

/// Copies the samples of a plane to where they are after a turn clockwise and a mirroring from left to right.
template <typename Sample>
void turnPlane(const AVFrame& from, AVFrame& to, int plane, int rotation, bool isMirrored) noexcept {
  const int quarter = rotation / 90;
  for (int y = 0; y < to.height; ++y) {
    auto* const row = reinterpret_cast<Sample*>(to.data[plane] + static_cast<std::ptrdiff_t>(to.linesize[plane]) * y);
    for (int x = 0; x < to.width; ++x) {
      const int shownX = isMirrored ? to.width - 1 - x : x;
      const std::array<std::array<int, 2>, 4> sources{{{shownX, y},
                                                       {y, from.height - 1 - shownX},
                                                       {from.width - 1 - shownX, from.height - 1 - y},
                                                       {from.width - 1 - y, shownX}}};
      const auto [sourceX, sourceY] = sources[static_cast<std::size_t>(quarter)];
      row[x] = reinterpret_cast<const Sample*>(from.data[plane] +
                                               static_cast<std::ptrdiff_t>(from.linesize[plane]) * sourceY)[sourceX];
    }
  }
}

/// Returns the scale of mjpeg's quantisers, 2 to 31, in FFmpeg's unit.
int quality(double compressionFactor) noexcept {
  constexpr double best = 2;
  constexpr double worst = 31;
  const double factor = std::isnan(compressionFactor) ? 1 : std::clamp(compressionFactor, 0.0, 1.0);
  return static_cast<int>(std::lround((worst - factor * (worst - best)) * FF_QP2LAMBDA));
}

Expected<std::string, std::string> encoded(AVFrame& image, double compressionFactor) {
  const LogCollector log;
  const auto failure = [&] { return Unexpected(log.firstError()); };
  const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
  if (codec == nullptr) return Unexpected(std::string("there is no encoder \"mjpeg\""));
  const CodecPointer encoder(avcodec_alloc_context3(codec));
  const PacketPointer packet(av_packet_alloc());
  if (!encoder || !packet) return failure();
  encoder->width = image.width;
  encoder->height = image.height;
  encoder->pix_fmt = static_cast<AVPixelFormat>(image.format);
  encoder->color_range = AVCOL_RANGE_JPEG;
  encoder->sample_aspect_ratio = {1, 1};
  encoder->time_base = {1, 1};
  encoder->thread_count = 1;
  encoder->global_quality = quality(compressionFactor);
  // NOLINTBEGIN(hicpp-signed-bitwise): FFmpeg's own flags. The second keeps FFmpeg's version out of the file.
  encoder->flags |= AV_CODEC_FLAG_QSCALE | AV_CODEC_FLAG_BITEXACT;
  // NOLINTEND(hicpp-signed-bitwise)
  image.quality = encoder->global_quality;
  image.pts = 0;
  if (avcodec_open2(encoder.get(), codec, nullptr) < 0 || avcodec_send_frame(encoder.get(), &image) < 0 ||
      avcodec_send_frame(encoder.get(), nullptr) < 0 || avcodec_receive_packet(encoder.get(), packet.get()) < 0) {
    return failure();
  }
  return std::string(reinterpret_cast<const char*>(packet->data), static_cast<std::size_t>(packet->size));
}

}  // namespace

StillImages::StillImages(const VideoStreamDescription& video, const SnapshotOptions& options)
    : pixelAspectRatio_(video.pixelAspectRatio), orientation_{video.rotation, video.isMirrored}, options_(options) {}

Orientation StillImages::orientationIn(const AVFrame& frame) const {
  const AVFrameSideData* const data = av_frame_get_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX);
  Orientation orientation = orientation_;
  if (data != nullptr) orientation = orientationOf({data->data, data->size}).value_or(orientation_);
  orientation.rotation = nearestQuarterTurn(orientation.rotation);
  return orientation;
}

StillImages::Size StillImages::sizeOf(const AVFrame& frame, Orientation orientation) const noexcept {
  double width = frame.width * pixelAspectRatio_.rawValue();
  double height = frame.height;
  const bool liesOnItsSide = orientation.rotation % 180 != 0;
  if (liesOnItsSide) std::swap(width, height);
  double scale = std::min({1.0, largestSide / width, largestSide / height});
  if (options_.maxWidth) scale = std::min(scale, *options_.maxWidth / width);
  if (options_.height) scale = std::min(scale, *options_.height / height);
  const auto pixels = [&](double side) { return std::max(static_cast<int>(std::lround(side * scale)), 1); };
  Size size{pixels(width), pixels(height)};
  if (liesOnItsSide) std::swap(size.width, size.height);
  return size;
}

Expected<FramePointer, std::string> StillImages::rgbOf(const AVFrame& frame, Size size) const {
  const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  if (format == nullptr) return nullptr;
  const auto coding = codingOf(frame, *format);
  if (!coding) return Unexpected(coding.error());
  const int bitDepth = options_.lut == nullptr ? 8 : format->comp[0].depth;
  FramePointer rgb = newFrame(rgbFormatFor(bitDepth).format, size.width, size.height);
  const Coding full{sws_getCoefficients(SWS_CS_DEFAULT), true};
  return rgb && convert(frame, *coding, *rgb, full) ? std::move(rgb) : nullptr;
}

bool StillImages::applyLut(AVFrame& rgb) {
  if (options_.lut == nullptr) return true;
  const auto* const format = std::ranges::find(rgbFormats, static_cast<AVPixelFormat>(rgb.format), &RgbFormat::format);
  const int bitDepth = format->bitDepth;
  auto lut = luts_.find(bitDepth);
  if (lut == luts_.end()) lut = luts_.emplace(bitDepth, options_.lut->forBitDepth(bitDepth)).first;
  if (bitDepth == 8) {
    const auto view = planarRgbView<std::uint8_t>(rgb, bitDepth);
    return lut->second.apply(view, view).has_value();
  }
  const auto view = planarRgbView<std::uint16_t>(rgb, bitDepth);
  return lut->second.apply(view, view).has_value();
}

FramePointer StillImages::turned(FramePointer rgb, Orientation orientation) {
  const auto [rotation, isMirrored] = orientation;
  if (rotation == 0 && !isMirrored) return rgb;
  const bool liesOnItsSide = rotation % 180 != 0;
  FramePointer result = newFrame(static_cast<AVPixelFormat>(rgb->format), liesOnItsSide ? rgb->height : rgb->width,
                                 liesOnItsSide ? rgb->width : rgb->height);
  if (!result) return nullptr;
  for (int plane = 0; plane < 3; ++plane) {
    if (rgb->format == AV_PIX_FMT_GBRP) {
      turnPlane<std::uint8_t>(*rgb, *result, plane, rotation, isMirrored);
    } else {
      turnPlane<std::uint16_t>(*rgb, *result, plane, rotation, isMirrored);
    }
  }
  return result;
}

Expected<FilmstripImage, std::string> StillImages::samples(const AVFrame& frame) {
  const LogCollector log;
  const Orientation orientation = orientationIn(frame);
  auto converted = rgbOf(frame, sizeOf(frame, orientation));
  if (!converted) return Unexpected(std::move(converted).error());
  FramePointer rgb = *std::move(converted);
  if (rgb) rgb = turned(std::move(rgb), orientation);
  if (!rgb) return Unexpected(log.firstError());
  FilmstripImage image{0, rgb->width, rgb->height, {}};
  const auto view = planarRgbView<std::uint8_t>(*rgb, 8);
  image.samples.reserve(3 * view.width * view.height);
  for (std::size_t y = 0; y < view.height; ++y) {
    for (std::size_t x = 0; x < view.width; ++x) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        const auto& plane = view.planes[channel];
        image.samples.push_back(
            plane.samples[static_cast<std::ptrdiff_t>(y) * plane.rowStride + static_cast<std::ptrdiff_t>(x)]);
      }
    }
  }
  return image;
}

Expected<MediaSnapshot, std::string> StillImages::image(const AVFrame& frame) {
  const LogCollector log;
  const Orientation orientation = orientationIn(frame);
  auto converted = rgbOf(frame, sizeOf(frame, orientation));
  if (!converted) return Unexpected(std::move(converted).error());
  FramePointer rgb = *std::move(converted);
  if (!rgb || !applyLut(*rgb)) return Unexpected(log.firstError());
  rgb = turned(std::move(rgb), orientation);
  if (!rgb) return Unexpected(log.firstError());
  const FramePointer jpeg = newFrame(AV_PIX_FMT_YUVJ420P, rgb->width, rgb->height);
  const Coding full{sws_getCoefficients(SWS_CS_DEFAULT), true};
  const Coding jfif{sws_getCoefficients(SWS_CS_ITU601), true};
  if (!jpeg || !convert(*rgb, full, *jpeg, jfif)) return Unexpected(log.firstError());
  auto bytes = encoded(*jpeg, options_.compressionFactor);
  if (!bytes) return Unexpected(std::move(bytes).error());
  MediaSnapshot snapshot;
  snapshot.width = jpeg->width;
  snapshot.height = jpeg->height;
  snapshot.jpeg = *std::move(bytes);
  return snapshot;
}

}  // namespace meridian::inline v0_2::libav
