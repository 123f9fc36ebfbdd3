/// \file
/// A fixed list of texts, indexed at compile time; finding a text is O(1). For example:
///
///     constexpr TextIndex index(std::to_array<std::string_view>({"mov", "mxf"}));
///     static_assert(index.find("mxf") == 1 && !index.find("mp4"));
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {

/// Finds the place of a text in a list of `Count` texts. A list that contains a text twice does not compile.
template <std::size_t Count>
class TextIndex {
 public:
  /// Indexes the texts, which must outlive the index.
  consteval explicit TextIndex(const std::array<std::string_view, Count>& texts) : texts_(texts) {
    for (std::size_t place = 0; place < Count; ++place) {
      if (find(texts[place])) preconditionFailed("TextIndex: a text is listed twice");
      std::size_t bucket = hash(texts[place]) % bucketCount;
      while (buckets_[bucket] != 0) bucket = (bucket + 1) % bucketCount;
      buckets_[bucket] = static_cast<std::uint16_t>(place + 1);
    }
  }

  /// Returns the place of the text in the list, from 0; absent if the list does not contain exactly this text.
  [[nodiscard]] constexpr std::optional<std::size_t> find(std::string_view text) const noexcept {
    for (std::size_t bucket = hash(text) % bucketCount; buckets_[bucket] != 0; bucket = (bucket + 1) % bucketCount) {
      const std::size_t place = buckets_[bucket] - std::size_t{1};
      if (texts_[place] == text) return place;
    }
    return std::nullopt;
  }

 private:
  static_assert(Count < UINT16_MAX);
  static constexpr std::size_t bucketCount = std::bit_ceil(2 * Count + 1);

  // Sums the length and five bytes spread over the text: the texts are short words, and a text of a megabyte costs no
  // more than one of ten bytes. The factors are arbitrary odd numbers.
  static constexpr std::size_t hash(std::string_view text) noexcept {
    if (text.empty()) return 0;
    const auto letter = [text](std::size_t place) -> std::uint32_t {
      return static_cast<unsigned char>(text[std::min(place, text.size() - 1)]);
    };
    const auto size = static_cast<std::uint32_t>(text.size());
    const std::uint32_t sum = size * 0x9e3779b1U + letter(0) * 0x85ebca6bU + letter(1) * 0xc2b2ae35U +
                              letter(text.size() / 2) * 0x27d4eb2fU + letter(text.size() * 3 / 4) * 0x165667b1U +
                              letter(text.size() - 1) * 0xd3a2646dU;
    return sum ^ (sum >> 15);
  }

  std::array<std::string_view, Count> texts_;
  // Open addressing: a text's place plus 1, or 0 for an empty bucket. At most half full, so every search ends.
  std::array<std::uint16_t, bucketCount> buckets_{};
};

}  // namespace meridian::inline v0_2
