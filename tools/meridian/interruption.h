// What is left to do when a process is interrupted.
#pragma once

#include <string>

namespace meridian::command {

/// Has the file at this path removed when the process ends early, by a signal of the user or the system, by an abort or
/// by an exit: the one named last; none after an empty path. The process then ends as it would have.
void removeFileOnInterruption(const std::string& path);

/// While it lives, this thread is not interrupted by the signals that a user or the system ends a process with; those
/// that come meanwhile take effect afterwards. For short work of a program with one thread.
class InterruptionsHeld {
 public:
  InterruptionsHeld() noexcept;
  InterruptionsHeld(const InterruptionsHeld&) = delete;
  InterruptionsHeld& operator=(const InterruptionsHeld&) = delete;
  ~InterruptionsHeld();

 private:
  /// Those that were not held before, a bit each.
  unsigned held_ = 0;
};

}  // namespace meridian::command
