/// \file
/// Reads a frame rate as a user writes it. For example, readRate("30000/1001").rate is VideoFrameRate::ntsc30p.
#pragma once

#include <string_view>

#include "meridian/media/video_frame_rate.h"

namespace meridian::command {

/// A frame rate that a user wrote.
struct GivenRate {
  /// Frames per second, as a number.
  double number = 0;
  VideoFrameRate rate;
};

/// Reads a number ("23.976") or a ratio ("24000/1001") of frames per second. Throws CommandError for a text that is
/// neither, and for a number that is not above 0, not finite, or too large.
[[nodiscard]] GivenRate readRate(std::string_view text);

}  // namespace meridian::command
