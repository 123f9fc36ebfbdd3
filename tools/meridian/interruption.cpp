#include "tools/meridian/interruption.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <system_error>
#include <utility>

namespace meridian::command {
namespace {

/// The signals by which a user or the system ends a process.
constexpr std::array endings{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

/// Further signals that end a process: limits, pipes and crashes.
constexpr std::array otherEndings{SIGPIPE, SIGXFSZ, SIGXCPU, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL};

}  // namespace

/// A path, in memory that a signal handler may read at any time: slots are never freed, and reused only until the
/// process begins to end.
struct RemovedOnInterruption::Slot {
  std::array<char, 4096> path{};
  std::atomic<bool> isTaken{true};
  /// Set while the path is complete.
  std::atomic<bool> isSet{false};
  Slot* next = nullptr;
};

struct RemovedOnInterruption::Slots {
  static constinit std::atomic<Slot*> first;
  /// Set before the first file is removed.
  static constinit std::atomic<bool> isEnding;

  static Slot* taken() {
    for (Slot* slot = first; slot != nullptr; slot = slot->next) {
      // Once the process is ending, the handler may still read the path that the slot had.
      if (!slot->isTaken.exchange(true) && !isEnding) return slot;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): kept for the rest of the process
    auto* const slot = new Slot;
    slot->next = first;
    while (!first.compare_exchange_weak(slot->next, slot)) {
    }
    return slot;
  }

  static void removeFiles() {
    isEnding = true;
    for (Slot* slot = first; slot != nullptr; slot = slot->next) {
      if (slot->isSet) unlink(slot->path.data());
    }
    for (Slot* slot = first; slot != nullptr; slot = slot->next) {
      if (slot->isSet) rmdir(slot->path.data());
    }
  }

  static void handle(int signal) {
    removeFiles();
    // The default action, which SA_RESETHAND has restored, follows when this handler returns.
    static_cast<void>(std::raise(signal));
  }

  static void listen() {
    static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<Slot*>::is_always_lock_free);
    // Some libraries exit on an error.
    static_cast<void>(std::atexit(removeFiles));
    const auto handleSignal = [](int signal) {
      struct sigaction before{};
      // A signal that the process was started to ignore stays ignored.
      if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) return;
      struct sigaction action{};
      action.sa_handler = &handle;
      action.sa_flags = static_cast<int>(SA_RESETHAND);
      sigaction(signal, &action, nullptr);
    };
    std::ranges::for_each(endings, handleSignal);
    std::ranges::for_each(otherEndings, handleSignal);
  }
};

constinit std::atomic<RemovedOnInterruption::Slot*> RemovedOnInterruption::Slots::first{};
constinit std::atomic<bool> RemovedOnInterruption::Slots::isEnding{};

RemovedOnInterruption::RemovedOnInterruption(const std::string& path) : slot_(Slots::taken()) {
  static std::once_flag listens;
  std::call_once(listens, Slots::listen);
  if (path.size() >= slot_->path.size()) return;
  *std::ranges::copy(path, slot_->path.begin()).out = '\0';
  slot_->isSet = true;
  // What is created from now on might not be removed.
  while (Slots::isEnding) pause();
}

RemovedOnInterruption::~RemovedOnInterruption() {
  slot_->isSet = false;
  slot_->isTaken = false;
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

StopOnInterruption::StopOnInterruption(std::stop_source stop) {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : endings) {
    struct sigaction before{};
    // A signal that the process was started to ignore stays ignored.
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) sigaddset(&signals, signal);
  }
  signals_ = signalfd(-1, &signals, SFD_CLOEXEC);
  ending_ = eventfd(0, EFD_CLOEXEC);
  if (signals_ < 0 || ending_ < 0) throw std::system_error(errno, std::generic_category());
  thread_ = std::jthread([this, stopping = std::move(stop)]() mutable {
    std::array<pollfd, 2> awaited{
        {{.fd = ending_, .events = POLLIN, .revents = 0}, {.fd = signals_, .events = POLLIN, .revents = 0}}};
    using Clock = std::chrono::steady_clock;
    Clock::time_point first;
    while (poll(awaited.data(), awaited.size(), -1) > 0 || errno == EINTR) {
      if (awaited[0].revents != 0) return;
      signalfd_siginfo signal{};
      if (read(signals_, &signal, sizeof signal) != sizeof signal) continue;
      constexpr int killed = 128;
      // Several signals that come together are one wish.
      constexpr std::chrono::seconds together(1);
      int none = 0;
      if (signal_.compare_exchange_strong(none, static_cast<int>(signal.ssi_signo))) {
        first = Clock::now();
        stopping.request_stop();
      } else if (Clock::now() - first > together) {
        _exit(killed + static_cast<int>(signal.ssi_signo));
      }
    }
  });
}

StopOnInterruption::~StopOnInterruption() {
  static_cast<void>(eventfd_write(ending_, 1));
  thread_.join();
  close(ending_);
  close(signals_);
}

void StopOnInterruption::endIfInterrupted() const {
  if (signal_ == 0) return;
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, signal_);
  struct sigaction action{};
  action.sa_handler = SIG_DFL;
  sigaction(signal_, &action, nullptr);
  static_cast<void>(raise(signal_));
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

}  // namespace meridian::command
