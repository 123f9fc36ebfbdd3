/// \file
/// The kinds of file-system items. For example, of an item that `walkTree` passes:
///
///     if (item.kind == ItemKind::symbolicLink) ++links;
#pragma once

#include <cstdint>

namespace meridian::inline v0_2 {

/// The kind of the item itself: a symbolic link is one wherever it leads. For example, `ItemKind::other` is a socket, a
/// pipe or a device.
enum class ItemKind : std::uint8_t { file, directory, symbolicLink, other };

}  // namespace meridian::inline v0_2
