/// \file
/// The plain filtering rule, step by step, which the prepared one of the library is held to.
#pragma once

#include <algorithm>
#include <string>

#include "meridian/base/text.h"
#include "meridian/fs/item_filter.h"
#include "meridian/fs/url_operations.h"

namespace meridian::test {

inline ItemDecision plainDecision(const Url& item, const ItemFilterSettings& settings) {
  const std::string name(item.lastPathComponent());
  for (const std::string& component : settings.forcePathComponents) {
    if (equalsIgnoringCase(component, name)) return {true, ItemFilterRule::forcedComponent};
  }
  if (settings.ignoreHiddenItems && isHiddenItem(item) == true) return {true, ItemFilterRule::hidden};
  if (isDirectory(item)) return {false, ItemFilterRule::directory};
  if (settings.extensionFilterList.empty()) return {false, ItemFilterRule::noExtensions};
  const bool isListed = std::ranges::any_of(settings.extensionFilterList, [&name](const std::string& extension) {
    return lowercased(name).ends_with((extension.starts_with('.') ? "" : ".") + lowercased(extension));
  });
  const bool isIgnored = settings.filteringOption == ItemFilteringOption::ignoreListedExtensions ? isListed : !isListed;
  return {isIgnored, ItemFilterRule::extension};
}

}  // namespace meridian::test
