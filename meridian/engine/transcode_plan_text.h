/// \file
/// Describes a planned transcode to a person: sources, steps, encoder, tracks, timecode, output and warnings. For
/// example:
///
///     std::cout << describe(plan);
///     // Sources
///     //   -in_0_0  "/card/A001.mov", the image, 240 frames, 10 s
///     // Video
///     //   decode   prores, 1920 x 1080, yuv422p10le, rec_709, limited range, 24 fps
///     //   scale    bicubic to 960 x 540
///     //   ...
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <variant>

#include "meridian/engine/transcode_plan.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Describes the plan in sections of indented lines, each of which ends with a newline. Text from outside is safe for a
/// terminal.
[[nodiscard]] MERIDIAN_API std::string describe(const TranscodePlan& plan);

namespace detail {

/// The names of the steps, in the order of the alternatives of VideoStep.
inline constexpr auto stepNames =
    std::to_array<std::string_view>({"deinterlace", "rate", "rotate", "scale", "crop", "pad", "color", "format", "lut",
                                     "timecode", "text", "watermark"});
static_assert(stepNames.size() == std::variant_size_v<VideoStep>);

}  // namespace detail

/// Returns the name of a step, for texts and JSON: "scale", "lut".
[[nodiscard]] constexpr std::string_view nameOf(const VideoStep& step) noexcept {
  return detail::stepNames[step.index()];
}

/// Returns the name of a colour space: "rec_709", "rec_709 as R'G'B'", "rec_709 in linear light", or the three code
/// points "9-16-9".
[[nodiscard]] inline std::string nameOf(const ColorSpaceCodes& color) {
  for (const ColorSpaceRow& row : colorSpaceRows) {
    if (row.codes == color) return row.value.string();
  }
  for (const ColorSpaceRow& row : colorSpaceRows) {
    if (color.matrix == ColorSpaceCodes::rgbMatrix && row.codes.primaries == color.primaries &&
        row.codes.transfer == color.transfer) {
      return row.value.string() + " as R'G'B'";
    }
  }
  if (const auto space = colorSpaceOf(color)) return space->string();
  if (color.transfer == ColorSpaceCodes::linearTransfer) {
    const auto* const row = std::ranges::find(colorSpaceRows, color.primaries,
                                              [](const ColorSpaceRow& each) { return each.codes.primaries; });
    if (row != colorSpaceRows.end()) return row->value.string() + " in linear light";
  }
  return std::to_string(color.primaries) + "-" + std::to_string(color.transfer) + "-" + std::to_string(color.matrix);
}

}  // namespace meridian::inline v0_2
