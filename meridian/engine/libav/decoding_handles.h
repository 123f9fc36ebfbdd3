/// \file
/// FFmpeg's objects of decoding and encoding as owning pointers.
#pragma once

extern "C" {
#include <libswscale/swscale.h>
}

#include <memory>

#include "meridian/engine/libav/handles.h"

namespace meridian::inline v0_2::libav {

using CodecPointer = std::unique_ptr<AVCodecContext, FreesByPointer<avcodec_free_context>>;
using FramePointer = std::unique_ptr<AVFrame, FreesByPointer<av_frame_free>>;
using PacketPointer = std::unique_ptr<AVPacket, FreesByPointer<av_packet_free>>;

struct FreesScaler {
  void operator()(SwsContext* scaler) const noexcept { sws_freeContext(scaler); }
};
using ScalerPointer = std::unique_ptr<SwsContext, FreesScaler>;

/// Keeps what a codec says on threads of its own from the terminal: FFmpeg prints messages up to a level, and this
/// offset takes all of them above it.
inline void silence(AVCodecContext& codec) noexcept { codec.log_level_offset = AV_LOG_MAX_OFFSET + AV_LOG_TRACE; }

}  // namespace meridian::inline v0_2::libav
