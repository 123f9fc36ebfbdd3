/// \file
/// The MD5 of decoded media, as FFmpeg's muxer "streamhash" computes it of raw video and PCM. For example:
///
///     MediaDigest digest;
///     while (FramePointer frame = decode()) digest.addImage(*frame);
///     digest.text();   // "d41d8cd98f00b204e9800998ecf8427e"
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "meridian/engine/libav/decoding_handles.h"

extern "C" {
#include <libavutil/md5.h>
}

namespace meridian::inline v0_2::libav {

class MediaDigest {
 public:
  /// Throws std::bad_alloc without memory.
  MediaDigest();

  /// Adds the samples of an image: plane by plane, row by row, without padding.
  void addImage(const AVFrame& image);
  /// Adds sound, channels interleaved.
  void addSound(const AVFrame& sound);

  /// Returns 32 hexadecimal digits. Nothing can be added after that.
  [[nodiscard]] std::string text();

 private:
  struct Freer {
    void operator()(AVMD5* md5) const noexcept { av_free(md5); }
  };
  std::unique_ptr<AVMD5, Freer> md5_;
  std::vector<std::uint8_t> samples_;
};

}  // namespace meridian::inline v0_2::libav
