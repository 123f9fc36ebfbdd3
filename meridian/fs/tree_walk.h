/// \file
/// Walks a directory tree for an application that copies it: every item, with the filter's decision. For example:
///
///     walkTree(
///         Url::fromFilePath("/card"), ItemFilter({.ignoreHiddenItems = true}),
///         [](const TreeItem& item, bool& stop) { if (!item.decision.isIgnored) stop = !copy(item.path); },
///         [](const TreeWalkError& error) { std::cerr << error.message() << '\n'; });
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/function_ref.h"
#include "meridian/export.h"
#include "meridian/fs/item_filter.h"
#include "meridian/platform/item_kind.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// An item of the tree. The views are valid during the call that passes it, or until the next item is asked for.
struct TreeItem {
  /// The path of the tree's directory as the caller gave it, with the names below it.
  std::string_view path;
  /// The last component of `path`.
  std::string_view name;
  ItemKind kind = ItemKind::file;
  ItemDecision decision;
};

/// What could not be read or followed during a walk.
enum class TreeWalkErrorCode : std::uint8_t { unreadableItem, unresolvedLink };

template <>
struct EnumerationTable<TreeWalkErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<TreeWalkErrorCode>>({
      {TreeWalkErrorCode::unreadableItem, "unreadableItem", "cannot be read",
       "check that it exists and that you may read it"},
      {TreeWalkErrorCode::unresolvedLink, "unresolvedLink", "cannot be followed and counts as a file",
       "check where the link leads"},
  });
};

/// A directory that could not be read or that was replaced by another item, or a link that could not be followed. The
/// place is the path, as in `TreeItem`.
using TreeWalkError = Error<TreeWalkErrorCode>;

using TreeVisitor = FunctionRef<void(const TreeItem& item, bool& stop)>;
using TreeErrorReport = FunctionRef<void(const TreeWalkError& error)>;

/// Passes every item below the directory to `visit`, ignored ones too: a directory before its items, and the items of a
/// directory in the byte order of their names. Setting `stop` ends the walk.
///
/// Ignored directories are not entered. Links are not entered either: they are passed as links, and the filter treats a
/// link to a directory as a directory. The directory where the walk begins may be a link; no decision is made about it.
///
/// Errors go to `report`, and the walk continues: the first directory is not one, a directory cannot be entered or was
/// removed after it was passed, a link cannot be followed to its end. Items that disappear during the walk may still be
/// passed, and new ones missed. Neither the depth of the tree nor the length of its paths is limited. At most 34
/// directories are open at a time, and three suffice if the process may not open more.
MERIDIAN_API void walkTree(const Url& directory, const ItemFilter& filter, TreeVisitor visit, TreeErrorReport report);

/// The same walk for callers that ask for the next item, such as the iterators of other languages. A directory is read
/// when the item after it is asked for.
///
///     TreeWalk walk(Url::fromFilePath("/card"), filter);
///     while (const auto item = walk.next(report)) show(item->path);
class MERIDIAN_API TreeWalk {
 public:
  TreeWalk(const Url& directory, ItemFilter filter);
  TreeWalk(TreeWalk&&) noexcept;
  TreeWalk& operator=(TreeWalk&&) noexcept;
  TreeWalk(const TreeWalk&) = delete;
  TreeWalk& operator=(const TreeWalk&) = delete;
  ~TreeWalk();

  /// Returns the next item, and reports the errors on the way to it; absent after the last one. The item's views are
  /// valid until the next call.
  [[nodiscard]] std::optional<TreeItem> next(TreeErrorReport report);

 private:
  class Walker;
  friend void walkTree(const Url& directory, const ItemFilter& filter, TreeVisitor visit, TreeErrorReport report);

  std::unique_ptr<const ItemFilter> filter_;
  std::unique_ptr<Walker> walker_;
};

}  // namespace meridian::inline v0_2
