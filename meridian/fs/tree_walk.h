// Walks through a folder tree for an application that copies it: every item with the filter's decision.
#pragma once

#include <string_view>
#include <system_error>

#include "meridian/base/function_ref.h"
#include "meridian/export.h"
#include "meridian/fs/item_filter.h"
#include "meridian/platform/item_kind.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// An item that the walk came to. The views are valid during the call that gives it.
struct TreeItem {
  /// The path of the tree's folder, as it was given, with the names below it.
  std::string_view path;
  /// The last component of `path`.
  std::string_view name;
  ItemKind kind = ItemKind::file;
  ItemDecision decision;
};

/// A folder that could not be read, an item that was a folder and is none any more, or a link of which the system does
/// not say where it leads, and which then counts as a file. The path is that of the item as it was given; of the tree's
/// folder as it was given to the walk.
struct UnreadItem {
  std::string_view path;
  std::error_code reason;
};

using TreeVisitor = FunctionRef<void(const TreeItem& item, bool& stop)>;
using UnreadReport = FunctionRef<void(const UnreadItem& item)>;

/// Gives every item below the folder to `visit`, ignored ones too, a folder before what lies in it and the items of a
/// folder by the order of their names' bytes. Setting `stop` ends the walk.
///
/// An ignored folder is not entered, and neither is a link, wherever it leads: a link is given as a link, and the
/// filter counts one that leads to a directory as a directory. The folder itself may be a link; it is not decided on.
///
/// What cannot be read goes to `report`, and the walk goes on: the folder itself where it is none, folders that may not
/// be entered or went away after they were given, links that cannot be followed to their end. Items may be given that
/// go away at the same time, and new ones missed. Neither the depth of the tree nor the length of its paths is bounded,
/// and at most 34 folders are open at a time; fewer where the process may open no more, but three have to be possible.
MERIDIAN_API void walkTree(const Url& folder, const ItemFilter& filter, TreeVisitor visit, UnreadReport report);

}  // namespace meridian::inline v0_2
