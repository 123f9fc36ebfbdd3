/// \file
/// What a list of extensions means to a copying application. For example:
///
///     rawValue(ItemFilteringOption::onlyListedExtensions);  // 1
///     fromRawValue<ItemFilteringOption>(1);                 // ItemFilteringOption::onlyListedExtensions
///     fromRawValue<ItemFilteringOption>(2);                 // absent
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "meridian/base/enumeration.h"

namespace meridian::inline v0_2 {

/// Says whether listed extensions are not copied or are the only ones copied. Applications store the raw
/// value, a number. `localizedString` and `localizedTooltip` translate the texts.
enum class ItemFilteringOption : std::uint8_t { ignoreListedExtensions, onlyListedExtensions };

/// A row of the table of filtering options.
struct ItemFilteringOptionRow {
  ItemFilteringOption value;
  std::int64_t rawValue;
  std::string_view description;
  std::string_view tooltip;
};

template <>
struct EnumerationTable<ItemFilteringOption> {
  static constexpr auto rows = std::to_array<ItemFilteringOptionRow>({
      {ItemFilteringOption::ignoreListedExtensions, 0, "Ignore files with extension(s)",
       "Does not copy files with the listed extensions"},
      {ItemFilteringOption::onlyListedExtensions, 1, "Only copy files with extension(s)",
       "Only copies files with the listed extensions"},
  });
};

}  // namespace meridian::inline v0_2
