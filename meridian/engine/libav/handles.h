/// \file
/// FFmpeg's headers, and its objects as owning pointers.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/packet.h>
#include <libavformat/avformat.h>
#include <libavutil/buffer.h>
#include <libavutil/mem.h>
}

#include <memory>

namespace meridian::inline v0_2::libav {

/// Calls a function of FFmpeg that frees what a pointer points to and clears the pointer.
template <auto free>
struct FreesByPointer {
  template <typename Object>
  void operator()(Object* object) const noexcept {
    free(&object);
  }
};

using BufferPointer = std::unique_ptr<AVBufferRef, FreesByPointer<av_buffer_unref>>;
using PacketPointer = std::unique_ptr<AVPacket, FreesByPointer<av_packet_free>>;
using InputPointer = std::unique_ptr<AVFormatContext, FreesByPointer<avformat_close_input>>;

/// Frees a context of input or output that was made with memory of its own.
struct FreesIoContext {
  void operator()(AVIOContext* context) const noexcept {
    av_free(context->buffer);
    context->buffer = nullptr;
    avio_context_free(&context);
  }
};
using IoContextPointer = std::unique_ptr<AVIOContext, FreesIoContext>;

}  // namespace meridian::inline v0_2::libav
