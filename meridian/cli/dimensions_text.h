// The text of an image size on the command line: "1920x1080".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "meridian/export.h"
#include "meridian/media/size.h"

namespace meridian::inline v0_2 {

/// The width and height of a text such as "1920x1080" or "1920.000000X1080.000000", each read with the precision of a
/// 32-bit float. Absent unless there are exactly two numbers, with nothing between them but an "x".
[[nodiscard]] MERIDIAN_API std::optional<Size> sizeFromDimensionsText(std::string_view text) noexcept;

/// The text that a size is stored as: both numbers with six decimals, "1920.000000x1080.000000".
[[nodiscard]] MERIDIAN_API std::string dimensionsTextOfSize(const Size& size);

}  // namespace meridian::inline v0_2
