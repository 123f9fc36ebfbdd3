/// \file
/// A chain of FFmpeg's filters with one input and one output. For example:
///
///     auto graph = FrameFilter::open("bwdif=mode=send_frame", image, 2);
///     (*graph)->send(std::move(frame));
///     while (FramePointer filtered = (*graph)->receive()) show(*filtered);
#pragma once

#include <memory>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/time_line.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace meridian::inline v0_2::libav {

/// The images that a filter gets.
struct FilterInput {
  int width = 0;
  int height = 0;
  AVPixelFormat format = AV_PIX_FMT_NONE;
  AVRational pixelAspectRatio{1, 1};
};

class FrameFilter {
 public:
  /// Opens a chain by its description in FFmpeg's syntax; times are ticks. The error is what FFmpeg said. `threads` is
  /// 0 for as many as there are cores.
  [[nodiscard]] static Expected<std::unique_ptr<FrameFilter>, std::string> open(const std::string& filters,
                                                                                const FilterInput& input,
                                                                                unsigned threads);

  FrameFilter(const FrameFilter&) = delete;
  FrameFilter& operator=(const FrameFilter&) = delete;
  FrameFilter(FrameFilter&&) = delete;
  FrameFilter& operator=(FrameFilter&&) = delete;
  ~FrameFilter();

  /// Gives the chain an image; null for the end. Returns false if it fails.
  [[nodiscard]] bool send(FramePointer frame);
  /// Returns the next image; null if the chain needs another one first, or after the end.
  [[nodiscard]] FramePointer receive();

 private:
  FrameFilter() = default;

  std::unique_ptr<AVFilterGraph, FreesByPointer<avfilter_graph_free>> graph_;
  AVFilterContext* source_ = nullptr;
  AVFilterContext* sink_ = nullptr;
};

}  // namespace meridian::inline v0_2::libav
