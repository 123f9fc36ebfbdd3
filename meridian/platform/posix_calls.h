/// \file
/// What every system call with a path needs.
#pragma once

#include <cerrno>
#include <string_view>
#include <system_error>

namespace meridian::inline v0_2::detail {

/// Returns why the last system call failed.
[[nodiscard]] inline std::error_code lastError() noexcept { return {errno, std::generic_category()}; }

/// Returns true if the path holds a NUL, where the system would cut it off.
[[nodiscard]] constexpr bool holdsNul(std::string_view path) noexcept {
  return path.find('\0') != std::string_view::npos;
}

/// Returns the error for a path with a NUL: no item has such a path.
[[nodiscard]] inline std::error_code nulError() noexcept {
  return std::make_error_code(std::errc::no_such_file_or_directory);
}

}  // namespace meridian::inline v0_2::detail
