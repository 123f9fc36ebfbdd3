/// \file
/// Decodes the packets of one stream, and says which of them are damaged. For example:
///
///     auto decoder = MediaDecoder::open(stream, {.threads = 0});
///     (*decoder)->send(packet.get());
///     while (FramePointer frame = (*decoder)->receive()) show(*frame);
///     if (const auto damage = (*decoder)->takeDamage()) warn(*damage);
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/decoder_messages.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/log_collector.h"

namespace meridian::inline v0_2::libav {

/// A decoder of images or sound.
class MediaDecoder {
 public:
  struct Options {
    /// 0 for as many as there are cores.
    unsigned threads = 0;
    /// Tries the devices of GPUs; `isOnGpu` says whether one works.
    bool triesGpu = false;
    /// Decodes one image after the other; threads share an image where they can.
    bool decodesInTurn = false;
  };

  /// Opens the decoder of a stream; the error is what FFmpeg said.
  [[nodiscard]] static Expected<std::unique_ptr<MediaDecoder>, std::string> open(const AVStream& stream,
                                                                                 const Options& options);
  MediaDecoder(const MediaDecoder&) = delete;
  MediaDecoder& operator=(const MediaDecoder&) = delete;
  MediaDecoder(MediaDecoder&&) = delete;
  MediaDecoder& operator=(MediaDecoder&&) = delete;
  ~MediaDecoder() = default;

  [[nodiscard]] bool isOnGpu() const noexcept { return device_ != nullptr; }

  /// Gives the decoder a packet; null for the end. Frames must have been received until there are no more.
  void send(const AVPacket* packet);

  /// Returns the next frame in the order of display, in memory of the CPU; null if the decoder needs a packet first, or
  /// after the end.
  [[nodiscard]] FramePointer receive();

  /// Returns what is known of damage since the last call: FFmpeg's reason. Nothing if all is sound.
  [[nodiscard]] std::optional<std::string> takeDamage();

 private:
  MediaDecoder() = default;

  static AVPixelFormat chooseFormat(AVCodecContext* codec, const AVPixelFormat* formats);
  void openDevice(const AVCodec& codec);
  void noteDamage(int status);
  [[nodiscard]] FramePointer inMemory(FramePointer frame);

  QuietDecoding quiet_;
  DecoderMessages messages_;
  BufferPointer device_;
  AVPixelFormat deviceFormat_ = AV_PIX_FMT_NONE;
  CodecPointer codec_;
  std::optional<std::string> damage_;
};

}  // namespace meridian::inline v0_2::libav
