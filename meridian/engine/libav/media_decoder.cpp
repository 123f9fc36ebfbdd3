#include "meridian/engine/libav/media_decoder.h"

extern "C" {
#include <libavutil/error.h>
#include <libavutil/hwcontext.h>
}

#include <algorithm>
#include <array>
#include <thread>
#include <utility>

#include "meridian/engine/libav/media_input.h"

namespace meridian::inline v0_2::libav {
namespace {

/// FFmpeg's decoders have at most 16 frame threads by themselves.
constexpr unsigned mostThreads = 16;
/// The kinds of devices that are tried, in this order.
constexpr std::array deviceKinds{AV_HWDEVICE_TYPE_VAAPI, AV_HWDEVICE_TYPE_CUDA};

std::string textOfStatus(int status) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  return av_strerror(status, text.data(), text.size()) == 0 ? std::string(text.data())
                                                            : "error " + std::to_string(status);
}

/// Returns true for the codecs whose decoders say nothing of damage unless they are told to stop at errors. Others then
/// refuse images with unusual tags or messages too.
bool stopsAtErrors(AVCodecID codec) noexcept { return codec == AV_CODEC_ID_MJPEG || codec == AV_CODEC_ID_AAC; }

}  // namespace

Expected<std::unique_ptr<MediaDecoder>, std::string> MediaDecoder::open(const AVStream& stream,
                                                                        const Options& options) {
  std::unique_ptr<MediaDecoder> decoder(new MediaDecoder);
  const AVCodecParameters& parameters = *stream.codecpar;
  const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
  if (codec == nullptr)
    return Unexpected("FFmpeg has no decoder for " + std::string(avcodec_get_name(parameters.codec_id)));
  decoder->codec_.reset(avcodec_alloc_context3(codec));
  AVCodecContext* const context = decoder->codec_.get();
  if (context == nullptr || avcodec_parameters_to_context(context, &parameters) < 0) {
    return Unexpected(std::string("there is no memory for its decoder"));
  }
  context->opaque = &decoder->messages_;
  context->pkt_timebase = stream.time_base;
  context->max_pixels = mostPixels;
  const unsigned cores = std::max(std::thread::hardware_concurrency(), 1U);
  context->thread_count = static_cast<int>(std::min(options.threads == 0 ? cores : options.threads, mostThreads));
  // Where every image stands alone, threads that share one keep fewer images in memory than threads with one each.
  const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(codec->id);
  const bool standsAlone = descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
  const bool sharesImages = standsAlone && (codec->capabilities & AV_CODEC_CAP_SLICE_THREADS) != 0;
  if (sharesImages || options.decodesInTurn) context->thread_type = FF_THREAD_SLICE;
  if (stopsAtErrors(codec->id)) context->err_recognition |= AV_EF_EXPLODE;
  if (options.triesGpu) decoder->openDevice(*codec);
  silence(*context);
  const LogCollector log;
  const int opened = avcodec_open2(context, codec, nullptr);
  if (opened < 0) return Unexpected(log.firstError().empty() ? textOfStatus(opened) : log.firstError());
  return decoder;
}

void MediaDecoder::openDevice(const AVCodec& codec) {
  const LogCollector log;
  for (const AVHWDeviceType kind : deviceKinds) {
    for (int place = 0; const AVCodecHWConfig* config = avcodec_get_hw_config(&codec, place); ++place) {
      if (config->device_type != kind || (config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX) == 0) continue;
      AVBufferRef* device = nullptr;
      if (av_hwdevice_ctx_create(&device, kind, nullptr, nullptr, 0) < 0) break;
      device_.reset(device);
      deviceFormat_ = config->pix_fmt;
      codec_->hw_device_ctx = av_buffer_ref(device);
      codec_->get_format = &MediaDecoder::chooseFormat;
      return;
    }
  }
}

AVPixelFormat MediaDecoder::chooseFormat(AVCodecContext* codec, const AVPixelFormat* formats) {
  const AVCodecHWConfig* config = nullptr;
  for (int place = 0; (config = avcodec_get_hw_config(codec->codec, place)) != nullptr; ++place) {
    for (const AVPixelFormat* each = formats; *each != AV_PIX_FMT_NONE; ++each) {
      const auto* const device = reinterpret_cast<const AVHWDeviceContext*>(codec->hw_device_ctx->data);
      if (*each == config->pix_fmt && config->device_type == device->type) return *each;
    }
  }
  return avcodec_default_get_format(codec, formats);
}

void MediaDecoder::noteDamage(int status) {
  if (damage_) return;
  std::string reason = messages_.takeError();
  damage_ = reason.empty() ? textOfStatus(status) : std::move(reason);
}

void MediaDecoder::send(const AVPacket* packet) {
  if (packet != nullptr && (packet->flags & AV_PKT_FLAG_CORRUPT) != 0) noteDamage(AVERROR_INVALIDDATA);
  const int status = avcodec_send_packet(codec_.get(), packet);
  if (status < 0 && status != AVERROR(EAGAIN) && status != AVERROR_EOF) noteDamage(status);
}

FramePointer MediaDecoder::receive() {
  // No decoder fails so often for one packet.
  constexpr int mostFailures = 64;
  for (int failures = 0; failures < mostFailures; ++failures) {
    FramePointer frame(av_frame_alloc());
    if (!frame) return nullptr;
    const int status = avcodec_receive_frame(codec_.get(), frame.get());
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return nullptr;
    if (status < 0) {
      noteDamage(status);
      continue;
    }
    if ((frame->flags & AV_FRAME_FLAG_CORRUPT) != 0 || frame->decode_error_flags != 0) noteDamage(AVERROR_INVALIDDATA);
    return inMemory(std::move(frame));
  }
  return nullptr;
}

FramePointer MediaDecoder::inMemory(FramePointer frame) {
  if (device_ == nullptr || frame->format != deviceFormat_) return frame;
  FramePointer copy(av_frame_alloc());
  if (!copy || av_hwframe_transfer_data(copy.get(), frame.get(), 0) < 0 ||
      av_frame_copy_props(copy.get(), frame.get()) < 0) {
    noteDamage(AVERROR(EIO));
    return nullptr;
  }
  return copy;
}

std::optional<std::string> MediaDecoder::takeDamage() {
  auto concealed = messages_.takeDamage();
  auto damage = std::exchange(damage_, std::nullopt);
  return damage ? std::move(damage) : std::move(concealed);
}

}  // namespace meridian::inline v0_2::libav
