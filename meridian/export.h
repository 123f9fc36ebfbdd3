/// \file
/// Marks what the shared library exports; everything else stays hidden. For example:
///
///     [[nodiscard]] MERIDIAN_API std::string_view versionText() noexcept;
#pragma once

#if defined(MERIDIAN_STATIC)
#define MERIDIAN_API
#else
#define MERIDIAN_API __attribute__((visibility("default")))
#endif
