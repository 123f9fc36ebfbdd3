/// \file
/// Reads the image of a watermark.
#pragma once

#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/overlay.h"
#include "meridian/engine/transcode_plan.h"

namespace meridian::inline v0_2::libav {

/// Returns the watermark of a step as an overlay for images of a form. Its colours are taken as R'G'B' of the video, as
/// every editor does. The error says why the image cannot be used.
[[nodiscard]] Expected<Overlay, std::string> readWatermark(const WatermarkStep& step, const ImageForm& form);

}  // namespace meridian::inline v0_2::libav
