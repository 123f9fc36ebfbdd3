// Code that a program loads when it needs it.
#pragma once

#include <string>

namespace meridian::command {

/// A symbol of a module: its address, or why there is none.
struct ModuleSymbol {
  void* address = nullptr;
  std::string fault;
};

/// A symbol in a module that lies at this path from the folder of the running program. The module stays loaded to the
/// program's end.
[[nodiscard]] ModuleSymbol moduleSymbol(const std::string& path, const std::string& symbol);

}  // namespace meridian::command
