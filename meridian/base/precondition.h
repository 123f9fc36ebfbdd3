// What happens to a call that breaks a precondition: the process stops and says why.
#pragma once

#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Writes "meridian: fatal: " and the message as a line to standard error, then aborts the process. The message names
/// the operation and its operands. Never reached in a constant expression: there, the call does not compile.
[[noreturn]] MERIDIAN_API void preconditionFailed(std::string_view message) noexcept;

}  // namespace meridian::inline v0_2
