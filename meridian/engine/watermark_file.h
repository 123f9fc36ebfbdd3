/// \file
/// Finds the image of a watermark. For example:
///
///     findWatermark("/Logos/Show.png", "/logos/show.png", {})->path  // "/Logos/Show.png"
#pragma once

#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/transcode_plan.h"

namespace meridian::inline v0_2 {

/// Returns the image at the path as written; else at the path as stored, which is in lower case; else the only one
/// whose path differs from the stored one in case alone. The error is a clause: "is not an image".
[[nodiscard]] Expected<FoundWatermark, std::string> findWatermark(const std::string& writtenPath,
                                                                  const std::string& storedPath,
                                                                  const DescriptionLimits& limits);

}  // namespace meridian::inline v0_2
