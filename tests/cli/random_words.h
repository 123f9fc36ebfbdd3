// Random argument vectors, the same in every run: known flags in every spelling, near misses, presets, inputs, and
// words that are easy to get wrong.
#pragma once

#include <array>
#include <cstddef>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/printable.h"
#include "meridian/cli/transcode_flags.h"

namespace meridian {

class RandomWords {
 public:
  explicit RandomWords(std::uint64_t seed) : engine_(seed) {}

  /// Returns a number from 0 up to, but not including, `bound`.
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }

  template <typename List>
  auto oneOf(const List& list) {
    return list[below(std::size(list))];
  }

  std::vector<std::string> vector(std::size_t greatestLength = 16) {
    std::vector<std::string> words(below(greatestLength + 1));
    for (std::size_t i = 0; i < words.size(); ++i) words[i] = i > 0 && below(6) == 0 ? words[below(i)] : word();
    return words;
  }

  std::string word() {
    using namespace std::string_literals;
    static const std::array flags{"-preset"s,      "-PRESET"s,    "-presets"s, "-in"s,
                                  "-in_0"s,        "-inx"s,       "-out"s,     "-vbr"s,
                                  "-overwrite"s,   "-acl_descs"s, "-foo"s,     "-wmf_burn_anchors"s,
                                  "-isTranscoder"s};
    static const std::array odd{
        "-"s,           "--"s,      ""s,       "  "s,    "\t\n"s,         "\u00A0"s,         "-5"s,
        "-hello"s,      "x-vr"s,    "-x-VRx"s, "－out"s, "-\u0130n_0_0"s, "-acodec\xE2"s,    "-out\xC2"s,
        "\xFF-vr"s,     "\xC3"s,    "-\0vbr"s, "a\0B"s,  "É\u0130"s,      "-progreſſ_file"s, "-\u212Aey_frames"s,
        "-ﬁle_format"s, "\u2028-h"s};
    static const std::array values{"solvane_cloud"s, "SOLVANE_4444XQ"s, "fast"s, "/Card/Clip.MOV"s, " ProRes422 "s};
    switch (below(8)) {
      case 0:
      case 1:
        return disguised(std::string(oneOf(flagDescriptions).text));
      case 2:
      case 3:
        return disguised(oneOf(flags));
      case 4:
        return disguised("-in_" + std::to_string(static_cast<int>(below(5)) - 1) + (below(4) == 0 ? "_0" : "_") +
                         std::to_string(below(12)));
      case 5:
        return oneOf(odd);
      default:
        return disguised(oneOf(values));
    }
  }

 private:
  std::string disguised(std::string word) {
    static constexpr std::array blanks{" ", "\t", "\r\n", "\u00A0", "\u3000", "\u0085"};
    if (below(3) == 0) {
      for (char& c : word) {
        if (c >= 'a' && c <= 'z' && below(2) == 0) c = static_cast<char>(c - 'a' + 'A');
      }
    }
    if (below(4) == 0) word = oneOf(blanks) + word;
    if (below(4) == 0) word += oneOf(blanks);
    return word;
  }

  std::mt19937_64 engine_;
};

/// Returns an argument vector as text, for the message of a failure.
inline std::string shown(std::span<const std::string> words) {
  std::string text = "vector:";
  for (const std::string& word : words) text += " \"" + printable(word) + '"';
  return text;
}

}  // namespace meridian
