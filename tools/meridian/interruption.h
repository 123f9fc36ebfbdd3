/// \file
/// Clean up when the process ends early. For example:
///
///     const RemovedOnInterruption unfinished(temporary);
///     write(temporary);
///     const InterruptionsHeld held;
///     rename(temporary, final);
#pragma once

#include <atomic>
#include <stop_token>
#include <string>
#include <thread>

namespace meridian::command {

/// Removes a file, or a directory that is then empty, if the process ends early while this object exists: by a signal
/// (also one for a crash, such as SIGSEGV), an abort or an exit. The process then ends as it would have, with the same
/// status. Several threads may have one each. SIGKILL cannot be handled; nor can a stack overflow.
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

/// Asks for a stop when a signal by which a user or the system ends a process comes, instead of ending the process. One
/// that comes more than a second later ends it at once. Signals that the process was started to ignore stay ignored.
/// Create it before other threads, which inherit that they do not take the signals.
class StopOnInterruption {
 public:
  /// Throws std::system_error if the system has no room for another thread or descriptor.
  explicit StopOnInterruption(std::stop_source stop);
  StopOnInterruption(const StopOnInterruption&) = delete;
  StopOnInterruption& operator=(const StopOnInterruption&) = delete;
  StopOnInterruption(StopOnInterruption&&) = delete;
  StopOnInterruption& operator=(StopOnInterruption&&) = delete;
  ~StopOnInterruption();

  /// Ends the process as the signal would have, if there was one.
  void endIfInterrupted() const;

 private:
  InterruptionsHeld held_;
  std::atomic<int> signal_ = 0;
  int signals_ = -1;
  int ending_ = -1;
  std::jthread thread_;
};

}  // namespace meridian::command
