/// \file
/// Makes a JPEG of a decoded frame.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/media_snapshot.h"

namespace meridian::inline v0_2::libav {

/// Makes JPEGs of the frames of one stream.
class StillImages {
 public:
  StillImages(const VideoStreamDescription& video, const SnapshotOptions& options);

  /// Returns the image with its size; the error is what FFmpeg said.
  [[nodiscard]] Expected<MediaSnapshot, std::string> image(const AVFrame& frame);

 private:
  struct Size {
    int width = 0;
    int height = 0;
  };

  [[nodiscard]] Size sizeOf(const AVFrame& frame) const noexcept;
  [[nodiscard]] FramePointer rgbOf(const AVFrame& frame, Size size) const;
  [[nodiscard]] bool applyLut(AVFrame& rgb);
  [[nodiscard]] FramePointer turned(FramePointer rgb) const;

  MediaRational pixelAspectRatio_;
  int rotation_;
  bool isMirrored_;
  SnapshotOptions options_;
  /// By bit depth.
  std::map<int, ImageLut> luts_;
};

}  // namespace meridian::inline v0_2::libav
