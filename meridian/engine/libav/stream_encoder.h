/// \file
/// Encodes the images or the sound of one stream.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/base/function_ref.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/transcode_plan.h"

namespace meridian::inline v0_2::libav {

/// An encoder of FFmpeg as the plan has it. Times are in its time base: images of the output, or samples.
class StreamEncoder {
 public:
  /// Receives a packet; returns false to stop.
  using PacketSink = FunctionRef<bool(PacketPointer packet)>;

  /// Open the encoder; the error is what FFmpeg said. `hasHeaders` says that the container keeps the codec's headers.
  [[nodiscard]] static Expected<std::unique_ptr<StreamEncoder>, std::string> openVideo(const PlannedVideo& video,
                                                                                       bool hasHeaders,
                                                                                       unsigned threads);
  [[nodiscard]] static Expected<std::unique_ptr<StreamEncoder>, std::string> openAudio(const PlannedAudioTrack& track,
                                                                                       bool hasHeaders);

  [[nodiscard]] const AVCodecContext& context() const noexcept { return *codec_; }

  /// Encodes a frame, null for the end, and hands on the packets that follow. The error is what FFmpeg said; empty if
  /// the sink stopped it.
  [[nodiscard]] std::optional<std::string> encode(FramePointer frame, PacketSink sink);

 private:
  explicit StreamEncoder(CodecPointer codec) : codec_(std::move(codec)) {}

  [[nodiscard]] static Expected<std::unique_ptr<StreamEncoder>, std::string> opened(
      CodecPointer context, const AVCodec& codec, const std::vector<PlannedOption>& options, const std::string& device);
  [[nodiscard]] std::optional<std::string> openDevice(const std::string& kind, AVPixelFormat format);
  [[nodiscard]] FramePointer onDevice(FramePointer frame);

  QuietDecoding quiet_;
  BufferPointer device_;
  CodecPointer codec_;
  int quality_ = 0;
};

}  // namespace meridian::inline v0_2::libav
