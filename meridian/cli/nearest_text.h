// Finding the text that a mistyped one was probably meant to be.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace meridian::inline v0_2 {

/// The candidate at the least distance from the text, the first of several: the number of bytes inserted, left out,
/// replaced or exchanged with their neighbour. Absent when even that is more than a third of the text's length.
[[nodiscard]] std::optional<std::string_view> nearestText(std::string_view text,
                                                          std::span<const std::string_view> candidates);

}  // namespace meridian::inline v0_2
