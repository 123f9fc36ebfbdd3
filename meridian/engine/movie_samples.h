/// \file
/// Counts the samples that the tables of a QuickTime or MP4 movie claim without listing them. A table may claim any
/// number of samples of one size in a few bytes, and FFmpeg makes room for each. For example:
///
///     if (claimedSamples(file) > file.size()) return damaged;
#pragma once

#include <cstdint>

#include "meridian/platform/file_reader.h"

namespace meridian::inline v0_2 {

/// Returns how many samples the movie claims that FFmpeg keeps an entry for, and that are not listed one by one. Counts
/// in the first 1000 boxes of the file and the first 20'000 boxes within them; 0 for a file without boxes. Leaves the
/// file at any place.
[[nodiscard]] std::uint64_t claimedSamples(FileReader& file) noexcept;

}  // namespace meridian::inline v0_2
