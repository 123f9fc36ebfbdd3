/// \file
/// The recording format of a camera's card, by where a file lies on it. For example:
///
///     recordingFormatOfPath("/card/CONTENTS/VIDEO/0001AB.MXF")  // SLVMediaRecordingFormatP2, "P2"
#pragma once

#include <optional>
#include <string_view>

namespace meridian::inline v0_2 {

/// Returns the constant of media_names.h for a path, ignoring the case of ASCII letters; absent if the path tells none.
/// Only the text counts:
/// - AVCHD: .mts or .m2ts in BDMV/STREAM
/// - P2: .mxf in CONTENTS/VIDEO or CONTENTS/AUDIO
/// - XDCAM: .mxf in XDROOT/Clip, or .mp4 in a directory of BPAV/CLPR
/// - CinemaDNG: .dng
/// A "Raw Volume" does not show in paths.
[[nodiscard]] std::optional<std::string_view> recordingFormatOfPath(std::string_view path);

}  // namespace meridian::inline v0_2
