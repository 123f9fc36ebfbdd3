/// \file
/// The steps of planning the video that are files of their own: its size, its encoder, and what is burnt in.
#pragma once

#include <optional>
#include <string_view>

#include "meridian/engine/plan_context.h"
#include "meridian/engine/video_encoders.h"
#include "meridian/engine/video_profiles.h"

namespace meridian::inline v0_2 {

// Flags that more than one of these steps asks for.
inline constexpr std::string_view videoCodecFlag = SAVVideoFormatFlag.rawValue();
inline constexpr std::string_view videoDimensionsFlag = SAVVideoDimensionsFlag.rawValue();
inline constexpr std::string_view videoDepthFlag = SAVVideoBitDepthFlag.rawValue();

/// How the image is fitted into the frame: scaled, then cropped or padded to the final size.
struct FrameFit {
  ImageSize scaled;
  ImageSize final;
  /// The place of a crop in the scaled image, or of the scaled image in its bars.
  int x = 0;
  int y = 0;
  VideoCropAnchor anchor = VideoCropAnchor::center;
  bool crops = false;
  bool pads = false;
  /// True if the pixels become square: the size is set.
  bool squaresPixels = false;
};

/// What the encoder is chosen to be before the size is known.
struct EncoderChoice {
  /// Null if "-vcodec" cannot be read; the size and the burn-ins are planned all the same.
  const VideoEncoderRow* row = nullptr;
  /// Null if this FFmpeg has none.
  const VideoEncoder* encoder = nullptr;
  const VideoProfileRow* profile = nullptr;
  std::string_view level;
  PixelFormat format = PixelFormat::yuv420p;
};

/// Chooses the encoder, and its profile and pixel format by "-vprofile" and "-vbd", or by the source.
EncoderChoice chooseEncoder(PlanContext& context, const ImageForm& source);

/// Fits an image of this size and pixel aspect ratio into the frame that "-dims", "-aspect_scaling" and "-crop_anchor"
/// ask for. Sizes that are calculated are even where the chroma is halved; reports a size that the encoder refuses.
FrameFit planFrameFit(PlanContext& context, ImageSize source, const MediaRational& pixelAspectRatio,
                      const EncoderChoice& choice);

/// Returns whether the encoder codes fields of this size as fields.
bool keepsFields(const EncoderChoice& choice, ImageSize size);

/// Plans the encoder's options for the image that it gets.
PlannedVideoEncoder planEncoder(PlanContext& context, const EncoderChoice& choice, const ImageForm& image,
                                bool keepsFields);

/// Plans the same for the encoder of a GPU that can be opened here; absent if "-gpu_encoding" is not set, or with a
/// warning if there is none. `encoder` is the plan of the CPU's.
std::optional<PlannedVideoEncoder> planGpuEncoder(PlanContext& context, const EncoderChoice& choice,
                                                  const PlannedVideoEncoder& encoder);

/// Adds the burnt-in timecode, text and image to the steps.
void planBurnIns(PlanContext& context, std::vector<PlannedStep>& steps, const ImageForm& image);

}  // namespace meridian::inline v0_2
