/// \file
/// Modules that the program loads when it needs them. For example:
///
///     const auto symbol = moduleSymbol("../lib/meridian/images.so", "entry");
///     if (!symbol) throw CommandError(symbol.error());
#pragma once

#include <string>
#include <string_view>

#include "meridian/base/expected.h"
#include "meridian/base/printable.h"
#include "tools/meridian/command.h"

namespace meridian::command {

/// Loads the module at a path relative to the running program's directory, and returns the address of a symbol in it.
/// The error is the dynamic linker's message. The module stays loaded until the program ends.
[[nodiscard]] Expected<void*, std::string> moduleSymbol(const std::string& path, const std::string& symbol);

/// Returns what the module's entry function returns. Throws CommandError if there is no such module: "this installation
/// of meridian cannot ACTION: it was built without LIBRARY, or the module is missing".
template <typename Module>
[[nodiscard]] const Module& loadedModule(const std::string& path, const std::string& entry, std::string_view action,
                                         std::string_view library) {
  const auto symbol = moduleSymbol(path, entry);
  if (!symbol) {
    throw CommandError("this installation of meridian cannot " + std::string(action) + ": it was built without " +
                       std::string(library) + ", or the module is missing: " + printable(symbol.error()));
  }
  return *reinterpret_cast<const Module* (*)()>(*symbol)();
}

}  // namespace meridian::command
