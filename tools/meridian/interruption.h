/// \file
/// Clean up when the process is interrupted. For example:
///
///     removeFileOnInterruption(temporary);
///     write(temporary);
///     {
///       const InterruptionsHeld held;
///       rename(temporary, final);
///       removeFileOnInterruption("");
///     }
#pragma once

#include <string>

namespace meridian::command {

/// Registers the one file to remove if the process ends early, by a signal, an abort or an exit; the process then ends
/// as it would have. Replaces the file registered before; an empty path, or one of 4096 bytes or more, registers none.
void removeFileOnInterruption(const std::string& path);

/// Delays the signals by which a user or the system ends a process to the end of the scope, on this thread. For short
/// work in a single-threaded program.
class InterruptionsHeld {
 public:
  InterruptionsHeld() noexcept;
  InterruptionsHeld(const InterruptionsHeld&) = delete;
  InterruptionsHeld& operator=(const InterruptionsHeld&) = delete;
  ~InterruptionsHeld();

 private:
  /// The signals that were not held before, one bit each.
  unsigned held_ = 0;
};

}  // namespace meridian::command
