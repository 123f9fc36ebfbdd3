// What every call of the system with a path needs.
#pragma once

#include <cerrno>
#include <string_view>
#include <system_error>

namespace meridian::detail {

/// Why the last call of the system failed.
[[nodiscard]] inline std::error_code lastError() noexcept { return {errno, std::generic_category()}; }

/// Whether the path holds a NUL: the system would take the part before it for the whole.
[[nodiscard]] constexpr bool holdsNul(std::string_view path) noexcept {
  return path.find('\0') != std::string_view::npos;
}

}  // namespace meridian::detail
