/// \file
/// Lists as text. For example:
///
///     joined(std::vector<std::string>{"mov", "mxf"}, ", ");  // mov, mxf
#pragma once

#include <ranges>
#include <string>
#include <string_view>

namespace meridian::inline v0_2 {

/// Returns the texts with the separator between them.
template <std::ranges::input_range Texts>
[[nodiscard]] std::string joined(const Texts& texts, std::string_view separator) {
  std::string result;
  bool isFirst = true;
  for (const auto& text : texts) {
    if (!isFirst) result += separator;
    result += text;
    isFirst = false;
  }
  return result;
}

}  // namespace meridian::inline v0_2
