/// \file
/// Scales images and converts their pixel format, range and matrix by swscale.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/transcode_plan.h"

namespace meridian::inline v0_2::libav {

/// Allocates the image of a form without its samples' values; null without memory.
[[nodiscard]] FramePointer newImage(const ImageForm& form);

/// Gives a frame the colour tags, range, shape and fields of a form. Removes what a decoder noted beside the image.
void tagImage(AVFrame& frame, const ImageForm& form);

/// Converts images of one form to another, bicubic. Fields stay apart where the image is interlaced.
class FrameConverter {
 public:
  /// Prepares the conversion; the error names a pixel format or matrix that swscale does not have.
  [[nodiscard]] static Expected<std::unique_ptr<FrameConverter>, std::string> open(const ImageForm& from,
                                                                                   const ImageForm& to);

  /// Returns the converted image with the properties of the source; null without memory.
  [[nodiscard]] FramePointer converted(const AVFrame& image);

 private:
  /// One pass of swscale.
  struct Pass {
    ImageForm from;
    ImageForm to;
    /// The number of fields that are converted apart.
    int fields = 1;
    ScalerPointer scaler;
  };

  explicit FrameConverter(ImageForm to) : to_(std::move(to)) {}

  [[nodiscard]] std::optional<std::string> addPass(const ImageForm& from, const ImageForm& to);

  ImageForm to_;
  /// Empty where only the tags change.
  std::vector<Pass> passes_;
};

}  // namespace meridian::inline v0_2::libav
