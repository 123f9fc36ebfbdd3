/// \file
/// Colours of burnt-in texts. For example:
///
///     RgbColor::fromText("#ff8000")->text()  // "255,128,0"
///     RgbColor::fromText("orange")           // std::nullopt
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "meridian/base/combined_hash.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// A colour as three code values, 0 to 255.
struct RgbColor {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;

  /// Reads three numbers from 0 to 255 separated by commas, semicolons or blanks ("255,128,0", "255, 128, 0"), or
  /// hexadecimal digits in any case ("#ff8000", "ff8000", "#f80"). Ignores blanks around the text. Absent for anything
  /// else.
  [[nodiscard]] MERIDIAN_API static std::optional<RgbColor> fromText(std::string_view text) noexcept;

  /// Returns the form in which colours are stored, "255,128,0", which a shell reads without quotes.
  [[nodiscard]] MERIDIAN_API std::string text() const;

  friend constexpr bool operator==(const RgbColor&, const RgbColor&) = default;
};

}  // namespace meridian::inline v0_2

template <>
struct std::hash<meridian::RgbColor> {
  [[nodiscard]] constexpr std::size_t operator()(const meridian::RgbColor& color) const noexcept {
    return meridian::combinedHash(color.red, color.green, color.blue);
  }
};
