#include "meridian/engine/libav/image_decoding.h"

#include <chrono>
#include <limits>
#include <utility>

#include "meridian/engine/describe_media.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/libav/media_decoder.h"
#include "meridian/engine/libav/media_input.h"

namespace meridian::inline v0_2::libav {

using enum TranscodeRunErrorCode;

Expected<FramePointer, TranscodeRunError> decodeImage(const std::string& path, unsigned threads) {
  auto opened = MediaInput::open(
      path, {.bytes = std::numeric_limits<std::uint64_t>::max(), .time = std::chrono::milliseconds::max()});
  if (!opened) {
    const MediaError& error = opened.error();
    const bool isDamaged = error.code == MediaErrorCode::damaged || error.code == MediaErrorCode::empty;
    return Unexpected(TranscodeRunError{isDamaged ? sourceDamaged : sourceNotRead, path,
                                        std::string(error.text()) + (error.detail.empty() ? "" : ": " + error.detail),
                                        error.systemError});
  }
  AVFormatContext& context = (*opened)->context();
  const int index = av_find_best_stream(&context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (index < 0) return Unexpected(TranscodeRunError{sourceChanged, path, "it has no image"});
  auto decoder = MediaDecoder::open(*context.streams[index], {.threads = threads});
  if (!decoder) return Unexpected(TranscodeRunError{notDecoded, path, std::move(decoder).error()});
  const PacketPointer packet(av_packet_alloc());
  if (!packet) return Unexpected(TranscodeRunError{outOfMemory, path});
  const LogCollector log;
  if (av_read_frame(&context, packet.get()) < 0)
    return Unexpected(TranscodeRunError{sourceDamaged, path, log.firstError()});
  (*decoder)->send(packet.get());
  FramePointer frame = (*decoder)->receive();
  if (!frame) {
    (*decoder)->send(nullptr);
    frame = (*decoder)->receive();
  }
  const auto damage = (*decoder)->takeDamage();
  if (!frame || damage) return Unexpected(TranscodeRunError{sourceDamaged, path, damage.value_or("")});
  return frame;
}

}  // namespace meridian::inline v0_2::libav
