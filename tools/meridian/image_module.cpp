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

/// Sets what the process does when it terminates, to the end of the scope.
class TerminateHandlerSet {
 public:
  explicit TerminateHandlerSet(std::terminate_handler handler) : before_(std::set_terminate(handler)) {}
  TerminateHandlerSet(const TerminateHandlerSet&) = delete;
  TerminateHandlerSet& operator=(const TerminateHandlerSet&) = delete;
  TerminateHandlerSet(TerminateHandlerSet&&) = delete;
  TerminateHandlerSet& operator=(TerminateHandlerSet&&) = delete;
  ~TerminateHandlerSet() { std::set_terminate(before_); }

 private:
  std::terminate_handler before_;
};

Expected<void*, std::string> loadedEntry() {
  const TerminateHandlerSet handler(endForTooLittleMemory);
  return moduleSymbol(MERIDIAN_IMAGE_MODULE, imageFileModuleEntry);
}

}  // namespace

const ImageFileModule& imageFileModule() {
  using Entry = const ImageFileModule* (*)();
  checkAddressSpace();
  const auto symbol = loadedEntry();
  if (!symbol) {
    throw CommandError(
        "this installation of meridian cannot read and write images: it was built without OpenImageIO, or the module "
        "is missing: " +
        printable(symbol.error()));
  }
  return *reinterpret_cast<Entry>(*symbol)();
}

}  // namespace meridian::command
