/// \file
/// Whether FFmpeg can draw text here. For example:
///
///     if (!libav::textCanBeDrawn()) return noFont();
#pragma once

namespace meridian::inline v0_2::libav {

/// Returns true if the filter drawtext finds a font; false also for an FFmpeg without the filter. The first call reads
/// the system's list of fonts.
[[nodiscard]] bool textCanBeDrawn();

}  // namespace meridian::inline v0_2::libav
