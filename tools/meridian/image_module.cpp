#include "tools/meridian/image_module.h"

#include <sys/resource.h>
#include <unistd.h>

#include <exception>
#include <string>
#include <string_view>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/loaded_module.h"

namespace meridian::command {
namespace {

/// The address space that the module needs to load and to begin: OpenImageIO and the 200 libraries that it loads map
/// 430 MB, and the first threads some 200 MB of stacks and arenas (measured on x86-64 Linux). With less, their
/// initialisers abort or wait for ever.
constexpr rlim_t neededMebibytes = 768;

constexpr std::string_view tooLittleMemory = "there is too little memory to read and write images";

void checkAddressSpace() {
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return;
  const rlim_t mebibytes = limit.rlim_cur >> 20U;
  if (mebibytes >= neededMebibytes) return;
  throw CommandError(std::string(tooLittleMemory) + ": the limit is " + std::to_string(mebibytes) + " MiB, at least " +
                     std::to_string(neededMebibytes) + " MiB are needed; raise it (ulimit -v)");
}

/// Ends the process with one line where a library's initialiser would abort it.
[[noreturn]] void endForTooLittleMemory() {
  for (const std::string_view text : {std::string_view("meridian: "), tooLittleMemory, std::string_view("\n")}) {
    if (write(STDERR_FILENO, text.data(), text.size()) < 0) break;
  }
  _exit(failed);
}

}  // namespace

const ImageFileModule& imageFileModule() {
  using Entry = const ImageFileModule* (*)();
  checkAddressSpace();
  const std::terminate_handler before = std::set_terminate(endForTooLittleMemory);
  const auto symbol = moduleSymbol(MERIDIAN_IMAGE_MODULE, imageFileModuleEntry);
  std::set_terminate(before);
  if (!symbol) {
    throw CommandError(
        "this installation of meridian cannot read and write images: it was built without OpenImageIO, or the module "
        "is missing: " +
        printable(symbol.error()));
  }
  return *reinterpret_cast<Entry>(*symbol)();
}

}  // namespace meridian::command
