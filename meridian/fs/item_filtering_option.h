// What a list of extensions means to a copying application.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/enumeration.h"

namespace meridian::inline v0_2 {

/// Whether the listed extensions are those that are not copied, or the only ones that are. An application stores the
/// case's number; the table's text is the case's name. Display text and tooltip are translated by `localizedString` and
/// `localizedTooltip`.
enum class ItemFilteringOption : std::uint8_t { ignoreListedExtensions = 0, onlyListedExtensions = 1 };

struct ItemFilteringOptionRow {
  ItemFilteringOption value;
  std::string_view rawValue;
  std::string_view description;
  std::string_view tooltip;
};

template <>
struct EnumerationTable<ItemFilteringOption> {
  static constexpr auto rows = std::to_array<ItemFilteringOptionRow>({
      {ItemFilteringOption::ignoreListedExtensions, "ignoreListedExtensions", "Ignore files with extension(s)",
       "Does not copy files with the listed extensions"},
      {ItemFilteringOption::onlyListedExtensions, "onlyListedExtensions", "Only copy files with extension(s)",
       "Only copies files with the listed extensions"},
  });
};

/// The option of a stored number; absent for any but 0 and 1.
[[nodiscard]] constexpr std::optional<ItemFilteringOption> itemFilteringOption(std::int64_t number) noexcept {
  for (const ItemFilteringOption option : allCases<ItemFilteringOption>()) {
    if (static_cast<std::int64_t>(option) == number) return option;
  }
  return std::nullopt;
}

}  // namespace meridian::inline v0_2
