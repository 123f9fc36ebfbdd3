// What containers and codecs are called in what people read.
#pragma once

#include <string>
#include <string_view>

#include "meridian/engine/media_description.h"

namespace meridian::command {

/// Returns a name of FFmpeg's as people write it: "png_pipe" as "PNG", "pcm_s16le" as "PCM S16LE".
[[nodiscard]] std::string writtenName(std::string_view name);

/// Returns the name of the container: "QuickTime".
[[nodiscard]] std::string containerText(const MediaDescription& media);

/// Returns the name of the codec and its profile: "H.264 High".
[[nodiscard]] std::string codecText(const VideoStreamDescription& video);

}  // namespace meridian::command
