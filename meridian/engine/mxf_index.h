/// \file
/// Counts the entries that FFmpeg keeps for the index of an MXF file, in the bytes as FFmpeg reads them: an index may
/// lie in any partition, and a segment of a few bytes may claim any number of edit units. For example:
///
///     MxfIndexCounter counter;
///     counter.look(place, bytesRead, readAt);
///     if (counter.entries() > limit) return limitReached;
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "meridian/engine/movie_index.h"

namespace meridian::inline v0_2 {

class MxfIndexCounter {
 public:
  /// Looks for segments of an index that begin in bytes that were read at a place, or in the read before if this one
  /// goes on after it. The rest of a segment is read by `readAt`.
  void look(std::uint64_t place, std::span<const char> bytes, const ReadsAt& readAt) noexcept;

  /// Returns how many edit units the segments claim; a segment that was read twice counts twice.
  [[nodiscard]] std::uint64_t entries() const noexcept { return entries_; }

 private:
  static constexpr std::size_t keySize = 16;

  /// The end of the bytes before, which a key may begin in, and the place after it.
  std::array<char, keySize - 1> tail_{};
  std::size_t tailSize_ = 0;
  std::uint64_t next_ = 0;
  std::uint64_t entries_ = 0;
};

}  // namespace meridian::inline v0_2
