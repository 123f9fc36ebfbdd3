/// \file
/// Names of makers, containers, recording formats, camera series and video codecs, spelled as the suite shows them. For
/// example:
///
///     SLVMediaFileContainerQuickTimeMovie  // "QuickTime"
#pragma once

#include <string_view>

namespace meridian::inline v0_2 {

#define MERIDIAN_MEDIA_NAME(name, value) inline constexpr std::string_view name = value;
#include "meridian/media/media_names.def"

}  // namespace meridian::inline v0_2
