/// \file
/// Filters lists of options. For example, membersAmong(scaleOptions(), list) keeps the scale options of a list.
#pragma once

#include <algorithm>
#include <iterator>
#include <span>
#include <vector>

namespace meridian::inline v0_2 {

/// Returns the members of the list that are among the options, in the list's order.
template <typename Option>
[[nodiscard]] std::vector<Option> membersAmong(std::span<const Option> options, std::span<const Option> list) {
  std::vector<Option> members;
  std::ranges::copy_if(list, std::back_inserter(members),
                       [options](const Option& each) { return std::ranges::find(options, each) != options.end(); });
  return members;
}

}  // namespace meridian::inline v0_2
