/// \file
/// Misuse terminates the process. For example:
///
///     if (rows == 0) preconditionFailed("LutCube: 0 rows");
#pragma once

#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Writes "meridian: fatal: " and the message as a line to standard error, and aborts the process. The message names
/// the operation and its operands. In a constant expression, reaching this call is a compile error.
[[noreturn]] MERIDIAN_API void preconditionFailed(std::string_view message) noexcept;

}  // namespace meridian::inline v0_2
