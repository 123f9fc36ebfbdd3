/// \file
/// Clean up when the process ends early. For example:
///
///     const RemovedOnInterruption unfinished(temporary);
///     write(temporary);
///     const InterruptionsHeld held;
///     rename(temporary, final);
#pragma once

#include <string>

namespace meridian::command {

/// Removes a file if the process ends early while this object exists: by a signal (also one for a crash, such as
/// SIGSEGV), an abort or an exit. The process then ends as it would have, with the same status. Several threads
/// may have one each. SIGKILL cannot be handled; nor can a stack overflow.
class RemovedOnInterruption {
 public:
  /// Registers a path; one of 4096 bytes or more, which no file has, is ignored. Call it before the file is created.
  /// Does not return if the process is already ending on another thread. A file that is created in the very moment in
  /// which that begins may stay.
  explicit RemovedOnInterruption(const std::string& path);
  RemovedOnInterruption(const RemovedOnInterruption&) = delete;
  RemovedOnInterruption& operator=(const RemovedOnInterruption&) = delete;
  RemovedOnInterruption(RemovedOnInterruption&&) = delete;
  RemovedOnInterruption& operator=(RemovedOnInterruption&&) = delete;
  ~RemovedOnInterruption();

 private:
  struct Slot;
  struct Slots;
  Slot* slot_;
};

/// Delays the signals by which a user or the system ends a process to the end of the scope, on this thread. For short
/// work; in a program of several threads, another one may still take the signal.
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
