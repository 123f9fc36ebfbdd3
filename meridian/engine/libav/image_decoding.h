/// \file
/// Decodes an image file.
#pragma once

#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/transcode_run_error.h"

namespace meridian::inline v0_2::libav {

/// Returns the first image of a file. The error is `sourceNotRead`, `sourceDamaged`, `sourceChanged` for a file without
/// images, or `notDecoded`. `threads` as for a decoder.
[[nodiscard]] Expected<FramePointer, TranscodeRunError> decodeImage(const std::string& path, unsigned threads);

}  // namespace meridian::inline v0_2::libav
