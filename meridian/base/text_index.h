// A fixed list of texts, indexed at compile time: finding a text costs one hash, however long the list is.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {

/// The places of `Count` different texts in their list. A list with a text twice does not compile.
template <std::size_t Count>
class TextIndex {
 public:
  consteval explicit TextIndex(std::span<const std::string_view, Count> texts) {
    for (std::size_t place = 0; place < Count; ++place) {
      texts_[place] = texts[place];
      std::size_t bucket = hash(texts[place]) % bucketCount;
      while (buckets_[bucket] != 0) {
        if (texts_[buckets_[bucket] - 1] == texts[place]) {
          preconditionFailed("TextIndex: a text is listed twice");
        }
        bucket = (bucket + 1) % bucketCount;
      }
      buckets_[bucket] = static_cast<std::uint16_t>(place + 1);
    }
  }

  /// The place of the text in the list; absent when the list does not hold exactly this text.
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

  // A sum over the length and five letters spread over the text: vocabularies are short words, and a text of a megabyte
  // is turned away as fast as one of ten bytes. The factors are arbitrary odd numbers.
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

  std::array<std::string_view, Count> texts_{};
  std::array<std::uint16_t, bucketCount> buckets_{};
};

}  // namespace meridian::inline v0_2
