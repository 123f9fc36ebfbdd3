// What an item of a file system is.
#pragma once

#include <cstdint>

namespace meridian::inline v0_2 {

/// The kind of the item itself: a link counts as a link.
enum class ItemKind : std::uint8_t { file, directory, symbolicLink, other };

}  // namespace meridian::inline v0_2
