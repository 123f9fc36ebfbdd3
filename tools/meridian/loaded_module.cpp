#include "tools/meridian/loaded_module.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

namespace meridian::command {
namespace {

Unexpected<std::string> lastError() {
  const char* const text = dlerror();
  return Unexpected(std::string(text == nullptr ? "unknown" : text));
}

}  // namespace

Expected<void*, std::string> moduleSymbol(const std::string& path, const std::string& symbol) {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return Unexpected(error.message());
  void* const module = dlopen((program.parent_path() / path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return lastError();
  void* const address = dlsym(module, symbol.c_str());
  if (address == nullptr) return lastError();
  return address;
}

}  // namespace meridian::command
