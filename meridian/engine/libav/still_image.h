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

  /// Returns the image with its size; the error is what FFmpeg said, or names a matrix that it does not have.
  [[nodiscard]] Expected<MediaSnapshot, std::string> image(const AVFrame& frame);

 private:
  struct Size {
    int width = 0;
    int height = 0;
  };

  /// A clockwise turn of 0, 90, 180 or 270 degrees, and then a mirroring from left to right.
  struct Orientation {
    int rotation = 0;
    bool isMirrored = false;
  };

  /// Returns how the frame itself is to be shown, as an image file says, or else how the stream is.
  [[nodiscard]] Orientation orientationOf(const AVFrame& frame) const noexcept;
  [[nodiscard]] Size sizeOf(const AVFrame& frame, Orientation orientation) const noexcept;
  [[nodiscard]] Expected<FramePointer, std::string> rgbOf(const AVFrame& frame, Size size) const;
  [[nodiscard]] bool applyLut(AVFrame& rgb);
  [[nodiscard]] static FramePointer turned(FramePointer rgb, Orientation orientation);

  MediaRational pixelAspectRatio_;
  Orientation orientation_;
  SnapshotOptions options_;
  /// By bit depth.
  std::map<int, ImageLut> luts_;
};

}  // namespace meridian::inline v0_2::libav
