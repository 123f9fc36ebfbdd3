/// \file
/// Counts the entries that FFmpeg keeps for a QuickTime or MP4 movie. A few bytes may claim any number of them: samples
/// of one size, long chunks of sound, edits that repeat an index. FFmpeg makes room for all of them before it asks
/// whether to go on, so they are counted first, and what cannot be counted is an error. (`av_max_alloc` bounds each
/// block, but not how many there are, and that for the whole process.) For example:
///
///     const auto entries = movieIndexEntries(size, [&](std::uint64_t place, std::span<char> memory) { ... });
///     if (entries && entries->inMemory > limit) return limitReached;
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "meridian/base/expected.h"
#include "meridian/engine/media_error.h"

namespace meridian::inline v0_2 {

/// Reads the bytes at a place of a file. Returns false if they are not all there, or if no more may be read.
using ReadsAt = std::function<bool(std::uint64_t place, std::span<char> memory)>;

/// How many entries an index has, at most.
struct MovieIndexEntries {
  /// As the tables state them. In an honest movie each has a byte of its own at least.
  std::uint64_t stated = 0;
  /// As FFmpeg keeps them: for every edit once more.
  std::uint64_t inMemory = 0;
};

/// Counts the entries of a movie of so many bytes. An error, without a place, for a movie that was not wholly counted:
/// `notRead` if reading failed, `damaged` for boxes out of order, which may hide tables, and for boxes that claim more
/// than they hold, `unknownFormat` for a compressed header.
[[nodiscard]] Expected<MovieIndexEntries, MediaError> movieIndexEntries(std::uint64_t size, const ReadsAt& readAt);

}  // namespace meridian::inline v0_2
