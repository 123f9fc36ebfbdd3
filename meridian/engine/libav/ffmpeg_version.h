/// \file
/// The release of FFmpeg that the process runs with.
#pragma once

#include <string>

namespace meridian::inline v0_2::libav {

/// Returns the release as the package names it: "5.1.9-0+deb12u1".
[[nodiscard]] std::string ffmpegVersion();

}  // namespace meridian::inline v0_2::libav
