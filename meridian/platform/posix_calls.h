// What every call of the system with a path needs.
#pragma once

#include <cerrno>
#include <string_view>
#include <system_error>

namespace meridian::inline v0_2::detail {

/// Why the last call of the system failed.
[[nodiscard]] inline std::error_code lastError() noexcept { return {errno, std::generic_category()}; }

/// Whether the path holds a NUL: the system would take the part before it for the whole.
[[nodiscard]] constexpr bool holdsNul(std::string_view path) noexcept {
  return path.find('\0') != std::string_view::npos;
}

/// What a path with a NUL gets, whatever is asked of it: nothing has such a path.
[[nodiscard]] inline std::error_code faultOfNul() noexcept {
  return std::make_error_code(std::errc::no_such_file_or_directory);
}

}  // namespace meridian::inline v0_2::detail
