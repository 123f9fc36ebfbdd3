/// \file
/// The kinds of file-system items.
#pragma once

#include <cstdint>

namespace meridian::inline v0_2 {

/// The kind of the item itself: a symbolic link is one wherever it leads. For example, `ItemKind::other` is a socket, a
/// pipe or a device.
enum class ItemKind : std::uint8_t { file, directory, symbolicLink, other };

}  // namespace meridian::inline v0_2
