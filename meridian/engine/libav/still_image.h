/// \file
/// Makes a JPEG, or samples to show, of a decoded frame.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/deep_analysis.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/orientation.h"
#include "meridian/engine/media_snapshot.h"

namespace meridian::inline v0_2::libav {

/// Makes JPEGs of the frames of one stream.
class StillImages {
 public:
  StillImages(const VideoStreamDescription& video, const SnapshotOptions& options);

  /// Returns the image with its size; the error is what FFmpeg said, or names a matrix that it does not have.
  [[nodiscard]] Expected<MediaSnapshot, std::string> image(const AVFrame& frame);

  /// Likewise, returns the samples themselves, as 8 bits without a LUT.
  [[nodiscard]] Expected<FilmstripImage, std::string> samples(const AVFrame& frame);

 private:
  struct Size {
    int width = 0;
    int height = 0;
  };

  /// Returns how the frame itself is to be shown, as an image file says, or else how the stream is; in quarter turns.
  [[nodiscard]] Orientation orientationIn(const AVFrame& frame) const;
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
