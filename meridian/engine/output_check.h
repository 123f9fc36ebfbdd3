/// \file
/// Holds a written file to its plan before it gets its name. For example:
///
///     if (auto error = checkOutput(*describeMedia(unfinished), plan, {.frames = 48})) return *error;
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "meridian/engine/media_description.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/engine/transcode_run_error.h"

namespace meridian::inline v0_2 {

/// What a transcode handed to the container.
struct WrittenMedia {
  /// Frames of the video; 0 without video.
  std::int64_t frames = 0;
  /// Seconds of the video; 0 without.
  double videoSeconds = 0;
  /// Seconds of each audio track of the plan.
  std::vector<double> audioSeconds;
};

/// Returns what of the plan is missing in the written file, or is otherwise than planned: streams, codec, profile,
/// size, pixel aspect ratio, rate, frames, duration, fields, bit depth, chroma, range, colour tags, sample rates,
/// channels and their places, bits, languages, timecode, tags. Only what the container can state is compared. The error
/// is `outputIncomplete`, and its detail names what was planned and what was found; its place is the planned path.
[[nodiscard]] std::optional<TranscodeRunError> checkOutput(const MediaDescription& written, const TranscodePlan& plan,
                                                           const WrittenMedia& media);

}  // namespace meridian::inline v0_2
