#include "meridian/platform/interruption.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>

namespace meridian {
namespace {

/// The path, in memory that a signal handler may read at any time.
constinit std::array<char, 4096> unfinished{};

/// Set while the path above is whole.
constinit volatile std::sig_atomic_t hasUnfinished = 0;

extern "C" void removeUnfinished(int signal) {
  if (hasUnfinished != 0) unlink(unfinished.data());
  static_cast<void>(std::signal(signal, SIG_DFL));
  static_cast<void>(std::raise(signal));
}

}  // namespace

void removeFileOnInterruption(const std::string& path) {
  hasUnfinished = 0;
  if (path.empty() || path.size() >= unfinished.size()) return;
  *std::ranges::copy(path, unfinished.begin()).out = '\0';
  hasUnfinished = 1;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    // A signal that the process was started to ignore stays ignored.
    if (std::signal(signal, &removeUnfinished) == SIG_IGN) static_cast<void>(std::signal(signal, SIG_IGN));
  }
}

}  // namespace meridian
