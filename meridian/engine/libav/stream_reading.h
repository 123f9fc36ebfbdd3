/// \file
/// Streams of FFmpeg as descriptions.
#pragma once

#include "meridian/engine/libav/handles.h"
#include "meridian/engine/media_description.h"

namespace meridian::inline v0_2::libav {

/// Returns the tags in their order.
[[nodiscard]] std::vector<MediaTag> tagsOf(const AVDictionary* tags);

/// Returns true for the formats of single images.
[[nodiscard]] bool isImageFormat(const AVFormatContext& input) noexcept;

/// Describe a stream of the kind that the name says.
[[nodiscard]] VideoStreamDescription describedVideo(AVFormatContext& input, AVStream& stream);
[[nodiscard]] AudioStreamDescription describedAudio(const AVStream& stream);
[[nodiscard]] OtherStreamDescription describedOther(const AVStream& stream);

/// Returns the vocabulary's name of the format; absent if it has none.
[[nodiscard]] std::optional<std::string_view> containerOf(const AVFormatContext& input,
                                                          const MediaDescription& description);

}  // namespace meridian::inline v0_2::libav
