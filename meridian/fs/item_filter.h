/// \file
/// The filter by which a copying application decides, item by item, what it leaves out. For example:
///
///     const ItemFilter filter({.extensionFilterList = {"xml"}, .ignoreHiddenItems = true});
///     filter.isIgnored(Url::fromFilePath("/card/A001.XML"));  // true, unless it is a directory
///     filter.decision(Url::fromFilePath("/card/A001.mov"));   // {false, ItemFilterRule::extension}
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/function_ref.h"
#include "meridian/export.h"
#include "meridian/fs/item_filtering_option.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Names that systems leave on volumes, for applications that pass them as `forcePathComponents`. The first one is
/// written in capitals; names are compared without regard to case.
inline constexpr std::array<std::string_view, 6> defaultForceIgnorePathComponents{
    ".DS_STORE", ".Spotlight-V100", "$RECYCLE.BIN", ".Trashes", ".TemporaryItems", ".fseventsd"};

/// Which items a copying application leaves out.
struct ItemFilterSettings {
  /// Extensions in any case, with or without a leading dot; an extension may have several parts ("tar.gz").
  std::vector<std::string> extensionFilterList = {};
  ItemFilteringOption filteringOption = ItemFilteringOption::ignoreListedExtensions;
  bool ignoreHiddenItems = false;
  /// Names of items to ignore, in any case.
  std::vector<std::string> forcePathComponents = {};
};

/// The rules of the filter, in order. The first one that applies decides:
///
/// - forcedComponent: the last path component is among `forcePathComponents`; the item is ignored, even if it does not
///   exist.
/// - hidden: `ignoreHiddenItems` is set, and the item exists and is hidden; it is ignored.
/// - directory: the item is a directory or a link to one; it is copied.
/// - noExtensions: `extensionFilterList` is empty; the item is copied, whatever the option.
/// - extension: the option decides by whether the name ends with a listed extension. The whole name counts, so ".mov"
///   ends with "mov"; the empty extension matches names that end with a dot.
///
/// Names are compared by their Unicode case folding, extensions in lower case, and bytes that are not valid UTF-8 equal
/// only themselves.
enum class ItemFilterRule : std::uint8_t { forcedComponent, hidden, directory, noExtensions, extension };

template <>
struct EnumerationTable<ItemFilterRule> {
  static constexpr auto rows = std::to_array<EnumerationRow<ItemFilterRule>>({
      {ItemFilterRule::forcedComponent, "forced component"},
      {ItemFilterRule::hidden, "hidden"},
      {ItemFilterRule::directory, "directory"},
      {ItemFilterRule::noExtensions, "no extensions"},
      {ItemFilterRule::extension, "extension"},
  });
};

/// Whether an item is copied, and the rule that decided.
struct ItemDecision {
  /// True if the item is not copied.
  bool isIgnored = false;
  /// The rule that decided.
  ItemFilterRule rule = ItemFilterRule::noExtensions;

  friend constexpr bool operator==(const ItemDecision&, const ItemDecision&) = default;
};

/// Decides on any number of items. Construction prepares the settings; a decision then asks the file system at most
/// once and allocates nothing for an ASCII name. An option that is not one of the cases terminates the process when the
/// extension rule applies. Safe to use from several threads.
class ItemFilter {
 public:
  MERIDIAN_API explicit ItemFilter(const ItemFilterSettings& settings);

  /// Returns true if the item is not copied. Asks the file system only if the answer depends on it: about a name with a
  /// leading dot if hidden items are ignored, and about an item that would be ignored for its extension.
  [[nodiscard]] MERIDIAN_API bool isIgnored(const Url& item) const;

  /// Returns whether the item is copied, and the rule that decided. Asks the file system unless the name decides.
  [[nodiscard]] MERIDIAN_API ItemDecision decision(const Url& item) const;

  /// Decides on an item that was found in a directory and therefore exists. `isDirectory` tells whether it is a
  /// directory or a link to one; it is called at most once, and only if the answer depends on it.
  [[nodiscard]] MERIDIAN_API bool isIgnored(std::string_view name, FunctionRef<bool()> isDirectory) const;
  [[nodiscard]] MERIDIAN_API ItemDecision decision(std::string_view name, FunctionRef<bool()> isDirectory) const;

 private:
  using Question = FunctionRef<bool()>;
  enum class Wanted { verdict, rule };

  [[nodiscard]] ItemDecision decide(std::string_view name, Question exists, Question isDirectory, Wanted wanted) const;

  // Sorted and distinct: case-folded names, and the endings that lower-cased names are compared with.
  std::vector<std::string> forcedNames_;
  std::vector<std::string> endings_;
  ItemFilteringOption option_;
  bool ignoresHidden_;
};

/// Decides on a single item; for several items an `ItemFilter` prepares the settings once.
[[nodiscard]] MERIDIAN_API ItemDecision decisionBasedOnSettings(const Url& item, const ItemFilterSettings& settings);

/// Returns true if the item is not copied.
[[nodiscard]] MERIDIAN_API bool shouldIgnoreBasedOnSettings(const Url& item, const ItemFilterSettings& settings);

}  // namespace meridian::inline v0_2
