/// \file
/// Lists and counts as text. For example:
///
///     joined(std::vector<std::string>{"mov", "mxf"}, ", ");  // mov, mxf
///     countText(2, "frame");                                 // 2 frames
#pragma once

#include <cstdint>
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

/// Returns a count with its noun, whose plural ends in "s".
[[nodiscard]] inline std::string countText(std::int64_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

}  // namespace meridian::inline v0_2
