#include "tools/meridian/image_module.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "tools/meridian/command.h"
#include "tools/meridian/loaded_module.h"

namespace meridian::command {
namespace {

/// The address space that the module needs to load and to begin: OpenImageIO and the 200 libraries that it loads map
/// 430 MB, and the first threads some 200 MB of stacks and arenas (measured on x86-64 Linux). With less, their
/// initialisers abort or wait for ever.
constexpr rlim_t neededMebibytes = 768;

constexpr std::string_view tooLittleMemory = "there is too little memory to read and write images";

/// Returns the limit of the address space in MiB; absent if there is none.
std::optional<rlim_t> addressSpaceLimit() noexcept {
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return std::nullopt;
  return limit.rlim_cur >> 20U;
}

void checkAddressSpace() {
  const auto limit = addressSpaceLimit();
  if (!limit || *limit >= neededMebibytes) return;
  throw CommandError(std::string(tooLittleMemory) + ": the limit is " + std::to_string(*limit) + " MiB, at least " +
                     std::to_string(neededMebibytes) + " MiB are needed; raise it (ulimit -v)");
}

/// Ends the process at once with one line on standard error.
[[noreturn]] void endWith(std::string_view message) noexcept {
  for (const std::string_view text : {std::string_view("meridian: "), message, std::string_view("\n")}) {
    if (write(STDERR_FILENO, text.data(), text.size()) < 0) break;
  }
  _exit(failed);
}

/// Where a library's initialiser would abort the process.
[[noreturn]] void endForTooLittleMemory() { endWith(tooLittleMemory); }

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

}  // namespace

const ImageFileModule& imageFileModule() {
  checkAddressSpace();
  const TerminateHandlerSet handler(endForTooLittleMemory);
  return loadedModule<ImageFileModule>(MERIDIAN_IMAGE_MODULE, imageFileModuleEntry, "read and write images",
                                       "OpenImageIO");
}

unsigned affordableThreads(unsigned wanted) noexcept {
  const auto limit = addressSpaceLimit();
  pthread_attr_t attributes;
  if (!limit || pthread_getattr_default_np(&attributes) != 0) return wanted;
  std::size_t stackBytes = 0;
  const bool isKnown = pthread_attr_getstacksize(&attributes, &stackBytes) == 0;
  pthread_attr_destroy(&attributes);
  if (!isKnown) return wanted;
  // The pools of OpenImageIO and OpenEXR and the LUT itself have as many threads each, and the C library reserves 64
  // MiB for the heap of a thread.
  const rlim_t threadMebibytes = 3 * (stackBytes >> 20U) + 64;
  const rlim_t room = *limit > neededMebibytes ? (*limit - neededMebibytes) / threadMebibytes : 0;
  return static_cast<unsigned>(std::clamp<rlim_t>(room, 1, wanted));
}

void startThreads(const ImageFileModule& module, unsigned threads) {
  try {
    module.useThreads(threads);
  } catch (const std::exception&) {
    endWith(
        "the threads that read and write images cannot be started; lower --threads, or raise the limits (ulimit -u, "
        "ulimit -v)");
  }
}

}  // namespace meridian::command
