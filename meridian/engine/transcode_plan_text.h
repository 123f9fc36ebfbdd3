/// \file
/// Describes a planned transcode to a person: sources, steps, encoder, tracks, timecode, output and warnings. For
/// example:
///
///     std::cout << describe(plan);
///     // Sources
///     //   -in_0_0  "/card/A001.mov", the image, 240 frames, 10 s
///     // Video
///     //   decode   prores, 1920 x 1080, yuv422p10le, rec_709, limited range, 24 fps
///     //   scale    960 x 540, yuv422p10le
///     //   ...
#pragma once

#include <string>
#include <string_view>

#include "meridian/engine/transcode_plan.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Describes the plan in sections of indented lines, each of which ends with a newline. Text from outside is safe for a
/// terminal.
[[nodiscard]] MERIDIAN_API std::string describe(const TranscodePlan& plan);

/// Returns the name of a step, for texts and JSON: "scale", "lut".
[[nodiscard]] MERIDIAN_API std::string_view nameOf(const VideoStep& step) noexcept;

/// Returns the name of a colour space: "rec_709", "rec_709 as R'G'B'", or the three code points "9-16-9".
[[nodiscard]] MERIDIAN_API std::string nameOf(const ColorSpaceCodes& color);

}  // namespace meridian::inline v0_2
