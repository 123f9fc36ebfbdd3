#include "meridian/engine/media_description.h"

#include <algorithm>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2 {

std::optional<std::string_view> tagValue(const std::vector<MediaTag>& tags, std::string_view key) noexcept {
  const auto found = std::ranges::find_if(tags, [key](const MediaTag& tag) {
    return std::ranges::equal(tag.key, key, {}, detail::lowercasedAscii, detail::lowercasedAscii);
  });
  if (found == tags.end()) return std::nullopt;
  return found->value;
}

}  // namespace meridian::inline v0_2
