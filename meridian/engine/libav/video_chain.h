/// \file
/// Takes decoded images through the steps of a plan. For example:
///
///     auto chain = VideoChain::open(plan, threads);
///     (*chain)->take(std::move(image), [&](FramePointer frame) { return encoder.encode(std::move(frame)); });
///     (*chain)->finish(reader.imageEnd(), ...);
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/base/function_ref.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/source_reader.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/engine/transcode_run_error.h"

namespace meridian::inline v0_2::libav {

/// Receives an image for the encoder. Its pts counts the frames of the output from 0 without a gap; its pixel format,
/// size, colour tags, range, pixel aspect ratio and fields are those of the plan's output. Returns an error to stop.
using ImageSink = FunctionRef<std::optional<TranscodeRunError>(FramePointer image)>;

/// The steps of a plan's video, which is not copied.
class VideoChain {
 public:
  /// Prepares the steps: reads the LUT and the watermark, opens filters. The plan must outlive the chain. `threads` is
  /// the number of threads of filters; 0 for as many as there are cores.
  [[nodiscard]] static Expected<std::unique_ptr<VideoChain>, TranscodeRunError> open(const TranscodePlan& plan,
                                                                                     unsigned threads);
  VideoChain() = default;
  VideoChain(const VideoChain&) = delete;
  VideoChain& operator=(const VideoChain&) = delete;
  VideoChain(VideoChain&&) = delete;
  VideoChain& operator=(VideoChain&&) = delete;
  virtual ~VideoChain() = default;

  /// Takes the next image in the order of display, and hands on the images of the output that follow from it.
  [[nodiscard]] virtual std::optional<TranscodeRunError> take(SourceImage image, ImageSink sink) = 0;

  /// Hands on what is left after the last image. `end` is when the last image ceases to be shown.
  [[nodiscard]] virtual std::optional<TranscodeRunError> finish(Ticks end, ImageSink sink) = 0;

  /// Return how many images of the source were left out, and how many were shown more than once, without a change of
  /// rate that the plan asks for.
  [[nodiscard]] virtual Occurrences droppedImages() const = 0;
  [[nodiscard]] virtual Occurrences repeatedImages() const = 0;

  /// Returns what was noticed when the steps were prepared.
  [[nodiscard]] virtual const std::vector<TranscodeRunWarning>& warnings() const = 0;
};

}  // namespace meridian::inline v0_2::libav
