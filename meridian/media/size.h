/// \file
/// A width and a height. For example:
///
///     const Size frame{1920, 1080};
///     frame.width / frame.height;  // 1.777...
#pragma once

#include <cstddef>
#include <functional>

#include "meridian/base/combined_hash.h"

namespace meridian::inline v0_2 {

/// A width and a height in pixels, unless a function says that they are factors of another size.
struct Size {
  double width = 0;
  double height = 0;

  friend constexpr bool operator==(const Size&, const Size&) = default;
};

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::Size> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::Size& size) const noexcept {
    return meridian::combinedHash(size.width, size.height);
  }
};
