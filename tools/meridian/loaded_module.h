/// \file
/// Modules that the program loads when it needs them. For example:
///
///     const auto symbol = moduleSymbol("../lib/meridian/images.so", "entry");
///     if (!symbol) throw CommandError(symbol.error());
#pragma once

#include <string>

#include "meridian/base/expected.h"

namespace meridian::command {

/// Loads the module at a path relative to the running program's directory, and returns the address of a symbol in it.
/// The error is the dynamic linker's message. The module stays loaded until the program ends.
[[nodiscard]] Expected<void*, std::string> moduleSymbol(const std::string& path, const std::string& symbol);

}  // namespace meridian::command
