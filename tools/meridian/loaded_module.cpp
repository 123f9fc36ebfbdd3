#include "tools/meridian/loaded_module.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

namespace meridian::command {
namespace {

std::string lastFault() {
  const char* const text = dlerror();
  return text == nullptr ? "unknown" : text;
}

}  // namespace

ModuleSymbol moduleSymbol(const std::string& path, const std::string& symbol) {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return {.address = nullptr, .fault = error.message()};
  void* const loaded = dlopen((program.parent_path() / path).c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const address = loaded == nullptr ? nullptr : dlsym(loaded, symbol.c_str());
  return {.address = address, .fault = address == nullptr ? lastFault() : ""};
}

}  // namespace meridian::command
