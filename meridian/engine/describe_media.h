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

/// What describing an item may cost. An item that needs more is the error `limitReached`. Images of up to 16384 by 8192
/// pixels are decoded to learn their format; in formats that name their streams late, such as FLV and MPEG transport
/// streams, up to FFmpeg's own limit, twice as many. No other memory is bounded than by these numbers: describe files
/// that you do not trust in a process with a limit of memory.
struct DescriptionLimits {
  /// Bytes read, counting those that are read twice. The index of a long recording is tens of megabytes.
  std::uint64_t bytes = std::uint64_t{256} << 20U;
  /// Time from the call on; `milliseconds::max()` for as long as it takes. One step of FFmpeg between two reads is not
  /// interrupted.
  std::chrono::milliseconds time{30'000};
  /// Entries that the index of a QuickTime, MP4 or MXF file may have in memory, at 24 to 40 bytes each: 92 hours of 60
  /// frames a second. They are counted before FFmpeg makes room for them.
  std::uint64_t indexEntries = 20'000'000;
  /// Entries of a directory of images: 23 hours of 24 frames a second.
  std::uint64_t directoryEntries = 2'000'000;

  /// Returns when the time is over, counted from now.
  [[nodiscard]] std::chrono::steady_clock::time_point deadline() const noexcept {
    using Clock = std::chrono::steady_clock;
    const auto now = Clock::now();
    const auto longest = std::chrono::floor<std::chrono::milliseconds>(Clock::time_point::max() - now);
    return time < longest ? now + time : Clock::time_point::max();
  }
};

/// Describes a regular file, or a directory of numbered images. Links are followed. Only the file itself is ever
/// opened: playlists are not media here, references to other files are not followed, and a name is never a pattern or a
/// URL. A FIFO, device or socket is an error and is not waited for. Nothing is written to standard output or error.
/// Thread-safe. The first call replaces FFmpeg's log callback for the process (`av_log_set_callback`). An application
/// that uses FFmpeg too sets its own one again afterwards; it then gets what FFmpeg says of described files.
[[nodiscard]] MERIDIAN_API Expected<MediaDescription, MediaError> describeMedia(const Url& url,
                                                                                const DescriptionLimits& limits = {});

}  // namespace meridian::inline v0_2
