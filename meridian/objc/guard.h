/// \file
/// Keeps exceptions of C++ within C++. In sources of Objective-C++, Clang gives functions that use GCC's Objective-C
/// runtime no way to catch them, so that the one try is in a source of C++. For example:
///
///     if (guarded([&] { words = store.commandLine(); })) raise(...);
#pragma once

#include <cstdint>
#include <optional>

#include "meridian/base/function_ref.h"

namespace meridian::inline v0_2::objc {

/// What a C++ function threw.
enum class Thrown : std::uint8_t { outOfMemory, anythingElse };

/// Does the work. Returns what it throws as an exception of C++; one of Objective-C passes through.
[[nodiscard]] std::optional<Thrown> guarded(FunctionRef<void()> work);

}  // namespace meridian::inline v0_2::objc
