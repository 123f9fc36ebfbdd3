#include "tools/meridian/interruption.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>

namespace meridian::command {
namespace {

/// The path, in memory that a signal handler may read.
constinit std::array<char, 4096> unfinished{};

/// Set while the path above is complete.
constinit volatile std::sig_atomic_t hasUnfinished = 0;

void removeUnfinishedFile() {
  if (hasUnfinished != 0) unlink(unfinished.data());
}

/// The signals by which a user or the system ends a process.
constexpr std::array endings{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

extern "C" void removeUnfinished(int signal) {
  removeUnfinishedFile();
  static_cast<void>(std::signal(signal, SIG_DFL));
  static_cast<void>(std::raise(signal));
}

}  // namespace

void removeFileOnInterruption(const std::string& path) {
  hasUnfinished = 0;
  if (path.empty() || path.size() >= unfinished.size()) return;
  *std::ranges::copy(path, unfinished.begin()).out = '\0';
  hasUnfinished = 1;
  // Some libraries exit on an error.
  static const bool isRegistered = std::atexit(removeUnfinishedFile) == 0;
  static_cast<void>(isRegistered);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGABRT, SIGXFSZ, SIGXCPU}) {
    // A signal that the process was started to ignore stays ignored.
    if (std::signal(signal, &removeUnfinished) == SIG_IGN) static_cast<void>(std::signal(signal, SIG_IGN));
  }
}

InterruptionsHeld::InterruptionsHeld() noexcept {
  sigset_t signals;
  sigset_t before;
  sigemptyset(&signals);
  for (const int signal : endings) sigaddset(&signals, signal);
  if (pthread_sigmask(SIG_BLOCK, &signals, &before) != 0) return;
  for (std::size_t i = 0; i < endings.size(); ++i) {
    if (sigismember(&before, endings[i]) == 0) held_ |= 1U << i;
  }
}

InterruptionsHeld::~InterruptionsHeld() {
  sigset_t signals;
  sigemptyset(&signals);
  for (std::size_t i = 0; i < endings.size(); ++i) {
    if ((held_ & 1U << i) != 0) sigaddset(&signals, endings[i]);
  }
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

}  // namespace meridian::command
