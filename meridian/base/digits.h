// The digits that numbers are written with.
#pragma once

namespace meridian::detail {

/// ASCII digits, in every locale.
[[nodiscard]] constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

}  // namespace meridian::detail
