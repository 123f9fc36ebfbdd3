/// \file
/// Finds the text that was probably meant by a mistyped one.
///
///     nearestText("-vcoedc", {{"-vcodec", "-acodec"}});  // "-vcodec"
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace meridian::inline v0_2 {

/// Returns the nearest candidate, the first of several. The distance is the number of bytes inserted, left out,
/// replaced or swapped with their neighbour. Absent when the nearest is further away than a third of the text's length.
[[nodiscard]] std::optional<std::string_view> nearestText(std::string_view text,
                                                          std::span<const std::string_view> candidates);

}  // namespace meridian::inline v0_2
