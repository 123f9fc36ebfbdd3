/// \file
/// Membership in a list. For example:
///
///     isIn(std::array{16, 24}, 20)  // false
#pragma once

#include <algorithm>
#include <ranges>

namespace meridian::inline v0_2 {

/// Returns whether a list holds a value.
template <std::ranges::input_range List>
[[nodiscard]] constexpr bool isIn(const List& list, const std::ranges::range_value_t<List>& value) {
  return std::ranges::find(list, value) != std::ranges::end(list);
}

}  // namespace meridian::inline v0_2
