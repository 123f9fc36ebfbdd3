// The rule by which a copying application decides, item by item, what it leaves out.
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

/// Names to leave out everywhere, for an application that passes them as `forcePathComponents`. The first is written
/// in capitals on purpose; names are compared without regard to case.
inline constexpr std::array<std::string_view, 6> defaultForceIgnorePathComponents{
    ".DS_STORE", ".Spotlight-V100", "$RECYCLE.BIN", ".Trashes", ".TemporaryItems", ".fseventsd"};

struct ItemFilterSettings {
  /// Extensions in any case, with a dot before them or without one; several ("tar.gz") are one as well.
  std::vector<std::string> extensionFilterList = {};
  ItemFilteringOption filteringOption = ItemFilteringOption::ignoreListedExtensions;
  bool ignoreHiddenItems = false;
  std::vector<std::string> forcePathComponents = {};
};

/// The part of the rule that decided, in the order in which they are asked.
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

struct ItemDecision {
  /// Whether the item is not to be copied.
  bool isIgnored = false;
  ItemFilterRule rule = ItemFilterRule::noExtensions;

  friend constexpr bool operator==(const ItemDecision&, const ItemDecision&) = default;
};

/// Decides on one item. In this order: a last path component among the forced ones, without regard to case, is ignored;
/// so is a hidden item where that is asked for; a directory, also one that a link leads to, never is; with no
/// extensions listed nothing is; else the option says what becomes of names that end with a listed extension, without
/// regard to case (a name that is only ".mov" ends with "mov"). An item that cannot be read is neither hidden nor a
/// directory. An option that is none of the cases stops the process.
[[nodiscard]] MERIDIAN_API ItemDecision decisionBasedOnSettings(const Url& item, const ItemFilterSettings& settings);

/// Whether the item is not to be copied.
[[nodiscard]] MERIDIAN_API bool shouldIgnoreBasedOnSettings(const Url& item, const ItemFilterSettings& settings);

/// The same rule, prepared once for many items. It decides as `decisionBasedOnSettings`, asks the file system at most
/// once for an item, and allocates nothing for a name that is ASCII. May be used from several threads at a time.
class ItemFilter {
 public:
  MERIDIAN_API explicit ItemFilter(const ItemFilterSettings& settings);

  /// Whether the item is not to be copied. The file system is asked only where that depends on it: for a name that a
  /// dot begins where hidden items are ignored, and for one that would be ignored for its extension.
  [[nodiscard]] MERIDIAN_API bool isIgnored(const Url& item) const;

  /// Whether it is, and by which rule. Unless its name decides, the file system is asked.
  [[nodiscard]] MERIDIAN_API ItemDecision decision(const Url& item) const;

  /// The same for an item that was found in a folder, by its name; having been found it counts as one that can be read,
  /// where a folder that may be listed but not searched hides it from the other two. `isDirectory`, which follows
  /// links, is called at most once, and only where the answer depends on it: a directory entry that knows its kind
  /// needs no question.
  [[nodiscard]] MERIDIAN_API bool isIgnored(std::string_view name, FunctionRef<bool()> isDirectory) const;
  [[nodiscard]] MERIDIAN_API ItemDecision decision(std::string_view name, FunctionRef<bool()> isDirectory) const;

 private:
  using Question = FunctionRef<bool()>;

  [[nodiscard]] bool isIgnored(std::string_view name, Question canBeRead, Question isDirectory) const;
  [[nodiscard]] ItemDecision decision(std::string_view name, Question canBeRead, Question isDirectory) const;

  // Each sorted and without repeats: names in their case folding, and patterns as lower-cased names end with them.
  std::vector<std::string> forcedNames_;
  std::vector<std::string> patterns_;
  ItemFilteringOption option_;
  bool ignoresHidden_;
};

}  // namespace meridian::inline v0_2
