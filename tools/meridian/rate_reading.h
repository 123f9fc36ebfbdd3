// How a user writes a frame rate.
#pragma once

#include <string_view>

#include "meridian/media/video_frame_rate.h"

namespace meridian::command {

struct GivenRate {
  /// Frames per second, as a number.
  double number = 0;
  VideoFrameRate rate;
};

/// Reads a number ("23.976") or a ratio ("24000/1001"). Throws UsageError for a text that is neither,
/// std::runtime_error for a number that no rate can have.
[[nodiscard]] GivenRate readRate(std::string_view text);

}  // namespace meridian::command
