/// \file
/// Describe a media file. For example:
///
///     const auto clip = describeMedia(Url::fromFilePath("/card/A001.mov"));
///     if (clip) std::cout << clip->formatName;
///     else std::cerr << clip.error().message();
#pragma once

#include <chrono>
#include <cstdint>

#include "meridian/base/expected.h"
#include "meridian/engine/media_description.h"
#include "meridian/engine/media_error.h"
#include "meridian/export.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// What describing a file may cost. A file that needs more is the error `limitReached`.
struct DescriptionLimits {
  /// Bytes read, counting those that are read twice. The index of a long recording takes some tens of megabytes.
  std::uint64_t bytes = std::uint64_t{256} << 20U;
  std::chrono::milliseconds time{30'000};
};

/// Describes a regular file, or a folder of numbered images. Links are followed. Only the file itself is ever opened:
/// playlists are not media here, references to other files are not followed, and a name is never a pattern or a URL.
/// A FIFO, device or socket is an error and is not waited for. Nothing is written to standard output or error.
/// Thread-safe.
[[nodiscard]] MERIDIAN_API Expected<MediaDescription, MediaError> describeMedia(const Url& url,
                                                                                const DescriptionLimits& limits = {});

}  // namespace meridian::inline v0_2
