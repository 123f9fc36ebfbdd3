/// \file
/// What a list of extensions means to a copying application. For example:
///
///     itemFilteringOption(1);  // ItemFilteringOption::onlyListedExtensions
///     itemFilteringOption(2);  // absent
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "meridian/base/enumeration.h"

namespace meridian::inline v0_2 {

/// Says whether listed extensions are not copied or are the only ones copied. Applications store the number of the
/// case; the raw value in the table is its name. `localizedString` and `localizedTooltip` translate the texts.
enum class ItemFilteringOption : std::uint8_t { ignoreListedExtensions = 0, onlyListedExtensions = 1 };

/// A row of the table of filtering options.
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

/// Returns the option of a stored number; absent for any number other than 0 and 1.
[[nodiscard]] constexpr std::optional<ItemFilteringOption> itemFilteringOption(std::int64_t number) noexcept {
  for (const ItemFilteringOption option : allCases<ItemFilteringOption>()) {
    if (static_cast<std::int64_t>(option) == number) return option;
  }
  return std::nullopt;
}

}  // namespace meridian::inline v0_2
