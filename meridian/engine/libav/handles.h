/// \file
/// FFmpeg's headers, and its objects as owning pointers.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/buffer.h>
#include <libavutil/dict.h>
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

using PacketPointer = std::unique_ptr<AVPacket, FreesByPointer<av_packet_free>>;
using BufferPointer = std::unique_ptr<AVBufferRef, FreesByPointer<av_buffer_unref>>;
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

/// Owns a dictionary of options.
class Dictionary {
 public:
  Dictionary() = default;
  Dictionary(const Dictionary&) = delete;
  Dictionary& operator=(const Dictionary&) = delete;
  Dictionary(Dictionary&&) = delete;
  Dictionary& operator=(Dictionary&&) = delete;
  ~Dictionary() { av_dict_free(&entries_); }

  void set(const char* key, const char* value) noexcept { av_dict_set(&entries_, key, value, 0); }
  [[nodiscard]] AVDictionary** get() noexcept { return &entries_; }

 private:
  AVDictionary* entries_ = nullptr;
};

}  // namespace meridian::inline v0_2::libav
