/// \file
/// The library's version. For example:
///
///     #if MERIDIAN_VERSION_AT_LEAST(0, 2, 0)  // the version that a program is compiled against
///     versionText();                          // the version that it runs with, such as "0.2.0"
#pragma once

#include <compare>
#include <string_view>

#include "meridian/export.h"

// The one place of the version: the build reads it from here. While the major version is 0, each minor version may
// change the interface; the inline namespace v0_2 of every declaration then changes with it.
#define MERIDIAN_VERSION_MAJOR 0
#define MERIDIAN_VERSION_MINOR 2
#define MERIDIAN_VERSION_PATCH 0

/// True in the preprocessor if these headers are of the given version or a later one.
#define MERIDIAN_VERSION_AT_LEAST(major, minor, patch) \
  (MERIDIAN_VERSION_MAJOR > (major) ||                 \
   (MERIDIAN_VERSION_MAJOR == (major) &&               \
    (MERIDIAN_VERSION_MINOR > (minor) || (MERIDIAN_VERSION_MINOR == (minor) && MERIDIAN_VERSION_PATCH >= (patch)))))

namespace meridian::inline v0_2 {

/// A version as numbers.
struct Version {
  int major = 0;
  int minor = 0;
  int patch = 0;

  friend constexpr auto operator<=>(const Version&, const Version&) noexcept = default;
};

/// The version of the headers that the caller is compiled with.
inline constexpr Version headerVersion{MERIDIAN_VERSION_MAJOR, MERIDIAN_VERSION_MINOR, MERIDIAN_VERSION_PATCH};

/// Returns the version of the library that the process has loaded.
[[nodiscard]] MERIDIAN_API Version libraryVersion() noexcept;

/// Returns that version as text: "0.2.0".
[[nodiscard]] MERIDIAN_API std::string_view versionText() noexcept;

}  // namespace meridian::inline v0_2
