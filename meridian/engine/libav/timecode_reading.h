/// \file
/// A file's timecode, from where it is found first.
#pragma once

#include <cstdint>
#include <optional>

#include "meridian/engine/libav/media_input.h"
#include "meridian/engine/media_description.h"

namespace meridian::inline v0_2::libav {

/// Returns the label of an image that comes `image` images after the first one, at `rate` images a second. Labels may
/// count at another rate, such as 30 at 60. Nothing for a number below 0, and where the image has no label.
[[nodiscard]] std::optional<TimecodeComponents> labelOfImage(std::int64_t image, const VideoFrameRate& rate,
                                                             const TimecodeDescription& timecode);

/// Returns the timecode of the first source that has a label: the timecode track, a tag of a stream of images, a tag of
/// the file, a track of real-time metadata, and in streams that have none of these the first coded image. The
/// description's streams and tags must be complete; warnings are added to it. Nothing can be read from the input after
/// that.
[[nodiscard]] std::optional<TimecodeDescription> readTimecode(MediaInput& input, MediaDescription& description);

}  // namespace meridian::inline v0_2::libav
