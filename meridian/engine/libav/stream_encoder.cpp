#include "meridian/engine/libav/stream_encoder.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/hwcontext.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <thread>
#include <utility>

#include "meridian/engine/libav/channel_order.h"
#include "meridian/engine/video_encoders.h"

namespace meridian::inline v0_2::libav {
namespace {

using OpenedEncoder = Expected<std::unique_ptr<StreamEncoder>, std::string>;

struct FreesDictionary {
  void operator()(AVDictionary* dictionary) const noexcept { av_dict_free(&dictionary); }
};

AVRational frameRateOf(const ImageForm& image) {
  const MediaRational rate = image.frameRate.rawValue();
  AVRational ratio{};
  av_reduce(&ratio.num, &ratio.den, rate.numerator, rate.denominator, std::numeric_limits<int>::max());
  return ratio;
}

std::uint32_t tagOf(const std::string& text) noexcept {
  std::uint32_t tag = 0;
  for (std::size_t place = 0; place < std::min<std::size_t>(text.size(), 4); ++place) {
    tag |= static_cast<std::uint32_t>(static_cast<unsigned char>(text[place])) << (8 * place);
  }
  return tag;
}

/// Returns the order of fields as FFmpeg's muxers write it for frames whose lines are interleaved.
AVFieldOrder fieldOrderOf(const PlannedVideoEncoder& encoder, bool isInterlaced) noexcept {
  if (!isInterlaced) return AV_FIELD_PROGRESSIVE;
  const bool isTopFirst = encoder.fieldOrder == FieldOrder::topFirst || encoder.fieldOrder == FieldOrder::topCodedFirst;
  if (encoder.codec == SAVDnxhdCodec) return isTopFirst ? AV_FIELD_TT : AV_FIELD_BB;
  return isTopFirst ? AV_FIELD_TB : AV_FIELD_BT;
}

void setImage(AVCodecContext& context, const ImageForm& image) {
  context.width = image.width;
  context.height = image.height;
  context.pix_fmt = av_get_pix_fmt(image.pixelFormat.c_str());
  context.sample_aspect_ratio = {static_cast<int>(image.pixelAspectRatio.numerator),
                                 static_cast<int>(image.pixelAspectRatio.denominator)};
  context.framerate = frameRateOf(image);
  context.time_base = av_inv_q(context.framerate);
  context.color_primaries = static_cast<AVColorPrimaries>(image.color.primaries);
  context.color_trc = static_cast<AVColorTransferCharacteristic>(image.color.transfer);
  context.colorspace = static_cast<AVColorSpace>(image.color.matrix);
  context.color_range = image.range == ColorRange::full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
}

/// Returns the threads of an encoder; 0 for as many as it chooses itself. Those that encode an image each need memory
/// for one each, and the decoder needs cores too.
int encoderThreads(const AVCodec& codec, unsigned threads) {
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
  if ((codec.capabilities & AV_CODEC_CAP_FRAME_THREADS) == 0) return static_cast<int>(threads);
  const unsigned cores = threads == 0 ? std::thread::hardware_concurrency() : threads;
  return static_cast<int>(std::max(cores / 2, 1U));
}

std::string deviceOf(const PlannedVideoEncoder& encoder) {
  if (!encoder.usesGpu) return {};
  const auto row = std::ranges::find(gpuEncoderRows, encoder.name, &GpuEncoderRow::encoder);
  return row != gpuEncoderRows.end() ? std::string(row->device) : std::string();
}

}  // namespace

OpenedEncoder StreamEncoder::openVideo(const PlannedVideo& video, bool hasHeaders, unsigned threads) {
  const PlannedVideoEncoder& planned = *video.encoder;
  const AVCodec* const codec = avcodec_find_encoder_by_name(planned.name.c_str());
  CodecPointer context(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
  if (!context) return Unexpected("there is no encoder \"" + planned.name + "\"");
  const ImageForm& image = video.output();
  setImage(*context, image);
  context->field_order = fieldOrderOf(planned, image.isInterlaced);
  context->codec_tag = tagOf(planned.tag);
  context->thread_count = encoderThreads(*codec, threads);
  // NOLINTBEGIN(hicpp-signed-bitwise): FFmpeg's own flags.
  if (hasHeaders) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (planned.quantizer) {
    context->flags |= AV_CODEC_FLAG_QSCALE;
    context->global_quality = *planned.quantizer * FF_QP2LAMBDA;
  }
  // NOLINTEND(hicpp-signed-bitwise)
  const int quality = context->global_quality;
  auto encoder = opened(std::move(context), *codec, planned.options, deviceOf(planned));
  if (encoder) (*encoder)->quality_ = quality;
  return encoder;
}

OpenedEncoder StreamEncoder::openAudio(const PlannedAudioTrack& track, bool hasHeaders) {
  const AVCodec* const codec = avcodec_find_encoder_by_name(track.encoder.c_str());
  CodecPointer context(codec != nullptr ? avcodec_alloc_context3(codec) : nullptr);
  if (!context) return Unexpected("there is no encoder \"" + track.encoder + "\"");
  context->sample_fmt = av_get_sample_fmt(track.sampleFormat.c_str());
  context->sample_rate = static_cast<int>(track.sampleRate);
  context->time_base = {1, context->sample_rate};
  const bool isPlaced = !track.channels.empty();
  const ChannelOrder order =
      isPlaced ? channelOrder(track.channels) : unplacedOrder(static_cast<int>(track.channelCount));
  if (av_channel_layout_copy(&context->ch_layout, order.layout.get()) < 0) {
    return Unexpected(std::string("there is no memory for its encoder"));
  }
  if (track.bitRate) context->bit_rate = *track.bitRate;
  if (track.bits) context->bits_per_raw_sample = static_cast<int>(*track.bits);
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
  if (hasHeaders) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  return opened(std::move(context), *codec, {}, {});
}

OpenedEncoder StreamEncoder::opened(CodecPointer context, const AVCodec& codec,
                                    const std::vector<PlannedOption>& options, const std::string& device) {
  silence(*context);
  std::unique_ptr<StreamEncoder> encoder(new StreamEncoder(std::move(context)));
  const LogCollector log;
  if (!device.empty()) {
    if (auto failure = encoder->openDevice(device, encoder->codec_->pix_fmt)) return Unexpected(*std::move(failure));
  }
  AVDictionary* given = nullptr;
  for (const PlannedOption& option : options) av_dict_set(&given, option.name.c_str(), option.value.c_str(), 0);
  const int status = avcodec_open2(encoder->codec_.get(), &codec, &given);
  const std::unique_ptr<AVDictionary, FreesDictionary> rest(given);
  if (status < 0) {
    return Unexpected(log.firstError().empty() ? std::string(codec.name) + " cannot be opened" : log.firstError());
  }
  if (const AVDictionaryEntry* const entry = av_dict_get(rest.get(), "", nullptr, AV_DICT_IGNORE_SUFFIX)) {
    return Unexpected(std::string(codec.name) + " does not have the option " + entry->key);
  }
  return encoder;
}

std::optional<std::string> StreamEncoder::openDevice(const std::string& kind, AVPixelFormat format) {
  const AVHWDeviceType type = av_hwdevice_find_type_by_name(kind.c_str());
  AVBufferRef* device = nullptr;
  if (av_hwdevice_ctx_create(&device, type, nullptr, nullptr, 0) < 0) return "the device " + kind + " does not open";
  device_.reset(device);
  BufferPointer frames(av_hwframe_ctx_alloc(device));
  if (!frames) return "there is no memory for the device " + kind;
  auto& description = *reinterpret_cast<AVHWFramesContext*>(frames->data);
  description.format = type == AV_HWDEVICE_TYPE_VAAPI ? AV_PIX_FMT_VAAPI : AV_PIX_FMT_CUDA;
  description.sw_format = format;
  description.width = codec_->width;
  description.height = codec_->height;
  constexpr int pooled = 20;
  description.initial_pool_size = pooled;
  if (av_hwframe_ctx_init(frames.get()) < 0) return "the device " + kind + " does not have images of this kind";
  codec_->pix_fmt = description.format;
  codec_->hw_frames_ctx = frames.release();
  return std::nullopt;
}

FramePointer StreamEncoder::onDevice(FramePointer frame) {
  FramePointer uploaded(av_frame_alloc());
  if (!uploaded || av_hwframe_get_buffer(codec_->hw_frames_ctx, uploaded.get(), 0) < 0 ||
      av_hwframe_transfer_data(uploaded.get(), frame.get(), 0) < 0 ||
      av_frame_copy_props(uploaded.get(), frame.get()) < 0) {
    return nullptr;
  }
  return uploaded;
}

std::optional<std::string> StreamEncoder::encode(FramePointer frame, PacketSink sink) {
  const LogCollector log;
  const auto failure = [&](int status) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(status, text.data(), text.size());
    return log.firstError().empty() ? std::string(text.data()) : log.firstError();
  };
  if (frame && quality_ != 0) frame->quality = quality_;
  if (frame && device_) {
    frame = onDevice(std::move(frame));
    if (!frame) return "an image cannot be copied to the GPU";
  }
  const int sent = avcodec_send_frame(codec_.get(), frame.get());
  if (sent < 0) return failure(sent);
  for (;;) {
    PacketPointer packet(av_packet_alloc());
    if (!packet) return failure(AVERROR(ENOMEM));
    const int status = avcodec_receive_packet(codec_.get(), packet.get());
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return std::nullopt;
    if (status < 0) return failure(status);
    if (!sink(std::move(packet))) return std::string();
  }
}

}  // namespace meridian::inline v0_2::libav
