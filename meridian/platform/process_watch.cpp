#include "meridian/platform/process_watch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "meridian/platform/posix_calls.h"

namespace meridian::inline v0_2 {
namespace {

constexpr int lookupMilliseconds = 250;

/// Returns true if the descriptor of a process says that it has ended; without one, if no process has the number.
bool hasEnded(int descriptor, std::int32_t process) noexcept {
  if (descriptor < 0) return process <= 0 || (kill(process, 0) != 0 && errno == ESRCH);
  pollfd asked{.fd = descriptor, .events = POLLIN, .revents = 0};
  return poll(&asked, 1, 0) > 0;
}

}  // namespace

ProcessWatch::ProcessWatch(std::int32_t process, std::function<void()> ended)
    : ended_(std::move(ended)), descriptor_(static_cast<int>(syscall(SYS_pidfd_open, process, 0))) {
  if (hasEnded(descriptor_, process)) {
    ended_();
    return;
  }
  ending_ = eventfd(0, EFD_CLOEXEC);
  if (ending_ < 0) {
    const std::error_code error = detail::lastError();
    closeDescriptors();
    throw std::system_error(error);
  }
  const auto watch = [this, process] {
    // A negative descriptor is passed over.
    std::array<pollfd, 2> awaited{
        {{.fd = ending_, .events = POLLIN, .revents = 0}, {.fd = descriptor_, .events = POLLIN, .revents = 0}}};
    while (true) {
      const int ready = poll(awaited.data(), awaited.size(), descriptor_ < 0 ? lookupMilliseconds : -1);
      if (ready < 0 && errno != EINTR) return;
      if (ready > 0 && awaited[0].revents != 0) return;
      if (hasEnded(descriptor_, process)) break;
    }
    ended_();
  };
  try {
    thread_ = std::thread(watch);
  } catch (...) {
    closeDescriptors();
    throw;
  }
}

ProcessWatch::~ProcessWatch() {
  if (thread_.joinable()) {
    static_cast<void>(eventfd_write(ending_, 1));
    thread_.join();
  }
  closeDescriptors();
}

void ProcessWatch::closeDescriptors() const noexcept {
  if (ending_ >= 0) close(ending_);
  if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace meridian::inline v0_2
