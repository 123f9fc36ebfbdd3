/// \file
/// The vocabulary's names of FFmpeg's codecs.
#pragma once

#include <optional>
#include <string_view>

#include "meridian/cli/transcode_values.h"
#include "meridian/engine/libav/handles.h"

namespace meridian::inline v0_2::libav {

/// What a video codec is called; absent where there is no name for it.
struct VideoNames {
  std::optional<std::string_view> codec;
  std::optional<SAVTranscodeArgumentVideoCodecValue> format;
};

[[nodiscard]] VideoNames videoNames(const AVCodecParameters& parameters) noexcept;

/// Returns the value of "-acodec" of the codec; absent if there is none.
[[nodiscard]] std::optional<SAVTranscodeArgumentAudioFormatValue> audioFormat(
    const AVCodecParameters& parameters) noexcept;

}  // namespace meridian::inline v0_2::libav
