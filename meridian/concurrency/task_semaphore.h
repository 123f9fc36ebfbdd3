// A counting semaphore that coroutines wait for without blocking a thread, and threads in the same line.
#pragma once

#include <atomic>
#include <coroutine>
#include <cstdint>
#include <mutex>

#include "meridian/base/linked_queue.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Limits how many tasks are at work at once: each holds a slot from `wait` to its `signal`. First in, first out, with
/// coroutines and threads in one line; a slot that is given back while others wait passes straight to the first of
/// them. Every function but the destructor may be called from any thread at any time.
///
/// A coroutine that gets its slot from `signal` is resumed by the thread that signals, before its outermost `signal`
/// returns. A `signal` called meanwhile on that thread, by a coroutine resumed so, only notes the next one, which is
/// resumed when the one before it suspends or ends; so a chain of any length takes no stack. A resumed coroutine that
/// blocks its thread therefore holds up those noted behind it. No lock is held while a coroutine runs.
class MERIDIAN_API TaskSemaphore {
 public:
  class Wait;

  /// With a limit of 0 or less every wait lasts until a `signal` hands it a slot.
  explicit TaskSemaphore(std::int64_t limit) noexcept : limit_(limit) {}

  TaskSemaphore(const TaskSemaphore&) = delete;
  TaskSemaphore& operator=(const TaskSemaphore&) = delete;

  /// Coroutines that still wait are never resumed: who owns them destroys them, before or after this. Those that have
  /// been given a slot and are noted on this thread are. What would go wrong stops the process: a thread that still
  /// waits, for ever, and a coroutine noted on another thread, which could not know that its semaphore has gone.
  ~TaskSemaphore();

  /// `co_await semaphore.wait()` returns when the caller holds a slot, at once where one is free. Never fails. The
  /// place in line is taken by the `co_await`, not by this call.
  ///
  /// A suspended coroutine may be destroyed, which gives up its place, or its slot where it was given one but not
  /// resumed yet; while a `signal` on another thread may be resuming it, it may not.
  [[nodiscard]] Wait wait() noexcept;

  /// The same for a thread, which blocks meanwhile.
  void waitBlocking() noexcept;

  /// Gives one slot back. Without a waiter and a slot in use it does nothing. An exception that leaves a coroutine
  /// resumed by it ends the process.
  void signal() noexcept;

  /// How many slots are in use. One that passes to a waiter stays in use; one that is handed out beyond the limit, by a
  /// surplus `signal`, does not count.
  [[nodiscard]] std::int64_t activeTasks() const noexcept { return state_.load(std::memory_order_relaxed) / oneSlot; }

  [[nodiscard]] std::int64_t limit() const noexcept { return limit_; }

 private:
  struct Waiter;
  struct WaitingThread;
  class ResumptionList;

  /// The slots in use, counted in `oneSlot`, and the mark that someone waits. A marked state changes under the mutex
  /// alone, which guards the line.
  using State = std::int64_t;
  static constexpr State someWait = 1;
  static constexpr State oneSlot = 2;

  bool tryTakeSlot() noexcept;
  bool tryGiveBackSlot() noexcept;
  bool standInLine(Waiter& waiter) noexcept;
  void leaveLine(Waiter& waiter) noexcept;

  const std::int64_t limit_;
  std::atomic<State> state_ = 0;
  std::mutex mutex_;
  LinkedQueue<Waiter> line_;
  /// How many have been given a slot and are noted to be resumed.
  std::atomic<std::int64_t> noted_ = 0;
};

/// Who waits for a slot: a suspended coroutine, or a thread where there is none.
struct TaskSemaphore::Waiter {
  enum class Place : std::uint8_t { none, inLine, noted };

  /// Null when the semaphore has gone.
  TaskSemaphore* semaphore = nullptr;
  std::coroutine_handle<> coroutine;
  Place place = Place::none;
  Waiter* previous = nullptr;
  Waiter* next = nullptr;
};

/// What `wait` gives, for `co_await` alone.
class MERIDIAN_API TaskSemaphore::Wait {
 public:
  explicit Wait(TaskSemaphore& semaphore) noexcept { waiter_.semaphore = &semaphore; }
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;
  ~Wait() {
    if (waiter_.place != Waiter::Place::none) giveUp();
  }

  [[nodiscard]] bool await_ready() const noexcept { return waiter_.semaphore->tryTakeSlot(); }
  bool await_suspend(std::coroutine_handle<> coroutine) noexcept;
  void await_resume() const noexcept {}

 private:
  void giveUp() noexcept;

  Waiter waiter_;
};

inline TaskSemaphore::Wait TaskSemaphore::wait() noexcept { return Wait(*this); }

/// Gives back a slot that its owner holds already, at the end of a scope.
class SignalAtScopeEnd {
 public:
  explicit SignalAtScopeEnd(TaskSemaphore& semaphore) noexcept : semaphore_(semaphore) {}
  SignalAtScopeEnd(const SignalAtScopeEnd&) = delete;
  SignalAtScopeEnd& operator=(const SignalAtScopeEnd&) = delete;
  ~SignalAtScopeEnd() { semaphore_.signal(); }

 private:
  TaskSemaphore& semaphore_;
};

}  // namespace meridian::inline v0_2
