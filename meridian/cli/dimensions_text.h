/// \file
/// The text of an image size on the command line.
///
///     sizeFromDimensionsText("1920x1080");     // Size{1920, 1080}
///     dimensionsTextOfSize(Size{1920, 1080});  // "1920.000000x1080.000000"
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "meridian/export.h"
#include "meridian/media/size.h"

namespace meridian::inline v0_2 {

/// Parses a width and height such as "1920x1080" or "1920.000000X1080.000000", each with the precision of a 32-bit
/// float. Absent unless the text is exactly two numbers and an "x" between them.
[[nodiscard]] MERIDIAN_API std::optional<Size> sizeFromDimensionsText(std::string_view text) noexcept;

/// Returns the stored text of a size: both numbers with six decimals, "1920.000000x1080.000000".
[[nodiscard]] MERIDIAN_API std::string dimensionsTextOfSize(const Size& size);

}  // namespace meridian::inline v0_2
