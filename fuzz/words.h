// An argument vector made of a fuzzer's bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace meridian::fuzz {

/// One word up to each NUL.
inline std::vector<std::string> wordsOf(std::string_view input) {
  std::vector<std::string> words;
  while (!input.empty()) {
    const std::size_t end = input.find('\0');
    words.emplace_back(input.substr(0, end));
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
  }
  return words;
}

}  // namespace meridian::fuzz
