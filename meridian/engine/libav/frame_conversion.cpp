#include "meridian/engine/libav/frame_conversion.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "meridian/engine/libav/color_matrices.h"
#include "meridian/engine/libav/log_collector.h"

namespace meridian::inline v0_2::libav {
namespace {

bool isRgb(const ImageForm& form) noexcept { return form.color.matrix == ColorSpaceCodes::rgbMatrix; }

AVPixelFormat formatOf(const ImageForm& form) noexcept { return av_get_pix_fmt(form.pixelFormat.c_str()); }

std::string matrixName(int code) {
  const char* const name = av_color_space_name(static_cast<AVColorSpace>(code));
  return name != nullptr ? name : std::to_string(code);
}

/// Returns the planes of one of several fields: each of its lines is followed by those of the others.
struct FieldPlanes {
  std::array<std::uint8_t*, 4> data{};
  std::array<int, 4> strides{};

  FieldPlanes(const AVFrame& image, int field, int fields) noexcept {
    for (std::size_t plane = 0; plane < data.size(); ++plane) {
      if (image.data[plane] == nullptr) continue;
      data[plane] = image.data[plane] + static_cast<std::ptrdiff_t>(image.linesize[plane]) * field;
      strides[plane] = image.linesize[plane] * fields;
    }
  }
};

}  // namespace

FramePointer newImage(const ImageForm& form) {
  FramePointer frame(av_frame_alloc());
  if (!frame) return nullptr;
  frame->format = formatOf(form);
  frame->width = form.width;
  frame->height = form.height;
  return av_frame_get_buffer(frame.get(), 0) < 0 ? nullptr : std::move(frame);
}

void tagImage(AVFrame& frame, const ImageForm& form) {
  frame.color_primaries = static_cast<AVColorPrimaries>(form.color.primaries);
  frame.color_trc = static_cast<AVColorTransferCharacteristic>(form.color.transfer);
  frame.colorspace = static_cast<AVColorSpace>(form.color.matrix);
  frame.color_range = form.range == ColorRange::full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  frame.sample_aspect_ratio = {static_cast<int>(form.pixelAspectRatio.numerator),
                               static_cast<int>(form.pixelAspectRatio.denominator)};
  frame.pict_type = AV_PICTURE_TYPE_NONE;
  frame.quality = 0;
  frame.key_frame = 0;
  frame.repeat_pict = 0;
  if (!form.isInterlaced) {
    frame.interlaced_frame = 0;
    frame.top_field_first = 0;
  } else {
    frame.interlaced_frame = 1;
  }
  while (frame.nb_side_data > 0) av_frame_remove_side_data(&frame, frame.side_data[0]->type);
}

Expected<std::unique_ptr<FrameConverter>, std::string> FrameConverter::open(const ImageForm& from,
                                                                            const ImageForm& to) {
  std::unique_ptr<FrameConverter> converter(new FrameConverter(to));
  // Between two kinds of Y'CbCr swscale changes the range alone, so that another matrix needs R'G'B' between.
  const bool changesMatrix = !isRgb(from) && !isRgb(to) &&
                             lumaWeights(from.color.matrix).value_or(LumaWeights()).red !=
                                 lumaWeights(to.color.matrix).value_or(LumaWeights()).red;
  const bool isKnownMatrix = lumaWeights(from.color.matrix) && lumaWeights(to.color.matrix);
  ImageForm retagged = from;
  retagged.color = to.color;
  if (!changesMatrix && retagged == to && (isKnownMatrix || from.color.matrix == to.color.matrix)) return converter;
  if (!changesMatrix) {
    if (auto error = converter->addPass(from, to)) return Unexpected(*std::move(error));
    return converter;
  }
  const PixelFormatRow& format =
      tableRow(planarRgb(std::max(from.bitDepth, to.bitDepth), from.hasAlpha && to.hasAlpha));
  ImageForm between = to;
  between.pixelFormat = format.rawValue;
  between.bitDepth = format.bitDepth;
  between.chroma = format.chroma;
  between.hasAlpha = format.hasAlpha;
  between.range = ColorRange::full;
  between.color.matrix = ColorSpaceCodes::rgbMatrix;
  if (auto error = converter->addPass(from, between)) return Unexpected(*std::move(error));
  if (auto error = converter->addPass(between, to)) return Unexpected(*std::move(error));
  return converter;
}

std::optional<std::string> FrameConverter::addPass(const ImageForm& from, const ImageForm& to) {
  for (const ImageForm* const form : {&from, &to}) {
    if (!isRgb(*form) && form->chroma != ChromaSubsampling::yuv400 && !lumaWeights(form->color.matrix)) {
      return "FFmpeg's scaler does not have the matrix " + matrixName(form->color.matrix);
    }
  }
  const AVPixelFormat source = formatOf(from);
  const AVPixelFormat destination = formatOf(to);
  if (sws_isSupportedInput(source) == 0) return "FFmpeg's scaler does not read " + from.pixelFormat;
  if (sws_isSupportedOutput(destination) == 0) return "FFmpeg's scaler does not write " + to.pixelFormat;
  Pass pass{from, to, 1, nullptr};
  if (from.isInterlaced && to.isInterlaced) pass.fields = 2;
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flags.
  constexpr int flags = SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
  constexpr int unchanged = 1 << 16;
  const LogCollector log;
  pass.scaler.reset(sws_alloc_context());
  SwsContext* const scaler = pass.scaler.get();
  if (scaler == nullptr) return "there is no memory for FFmpeg's scaler";
  const auto isFull = [](const ImageForm& form) { return form.range == ColorRange::full ? 1 : 0; };
  const auto set = [scaler](const char* name, int number) { av_opt_set_int(scaler, name, number, 0); };
  set("srcw", from.width);
  set("srch", from.height / pass.fields);
  set("src_format", source);
  set("dstw", to.width);
  set("dsth", to.height / pass.fields);
  set("dst_format", destination);
  set("sws_flags", flags);
  // Before it is initialised: later, swscale leaves out the conversion of the range between equal formats.
  set("src_range", isFull(from));
  set("dst_range", isFull(to));
  if (sws_init_context(scaler, nullptr, nullptr) < 0) {
    return log.firstError().empty() ? "FFmpeg's scaler cannot convert it" : log.firstError();
  }
  const int sourceMatrix = isRgb(from) ? to.color.matrix : from.color.matrix;
  const int destinationMatrix = isRgb(to) ? from.color.matrix : to.color.matrix;
  // Fails where there is nothing to set, as between R'G'B' and R'G'B'.
  static_cast<void>(sws_setColorspaceDetails(scaler, sws_getCoefficients(sourceMatrix), isFull(from),
                                             sws_getCoefficients(destinationMatrix), isFull(to), 0, unchanged,
                                             unchanged));
  passes_.push_back(std::move(pass));
  return std::nullopt;
}

FramePointer FrameConverter::converted(const AVFrame& image) {
  const AVFrame* current = &image;
  FramePointer result(passes_.empty() ? av_frame_clone(&image) : nullptr);
  for (const Pass& pass : passes_) {
    FramePointer next = newImage(pass.to);
    if (!next) return nullptr;
    for (int field = 0; field < pass.fields; ++field) {
      const FieldPlanes from(*current, field, pass.fields);
      const FieldPlanes to(*next, field, pass.fields);
      if (sws_scale(pass.scaler.get(), from.data.data(), from.strides.data(), 0, pass.from.height / pass.fields,
                    to.data.data(), to.strides.data()) < 0) {
        return nullptr;
      }
    }
    result = std::move(next);
    current = result.get();
  }
  if (!result || (!passes_.empty() && av_frame_copy_props(result.get(), &image) < 0)) return nullptr;
  tagImage(*result, to_);
  return result;
}

}  // namespace meridian::inline v0_2::libav
