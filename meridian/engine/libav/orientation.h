/// \file
/// How an image is turned before it is shown.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace meridian::inline v0_2::libav {

/// A clockwise turn by `rotation` degrees, 0 to 359, and then a mirroring from left to right.
struct Orientation {
  int rotation = 0;
  bool isMirrored = false;
};

/// Returns what FFmpeg's display matrix says, nine numbers of 32 bits; nothing if there are fewer or if they turn by no
/// angle.
[[nodiscard]] std::optional<Orientation> orientationOf(std::span<const std::uint8_t> displayMatrix);

}  // namespace meridian::inline v0_2::libav
