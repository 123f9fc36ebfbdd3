/// \file
/// A counting semaphore for coroutines, which wait without blocking a thread, and for threads. For example:
///
///     Task copyCard(Card& card, TaskSemaphore& semaphore) {
///       co_await semaphore.wait();
///       const SignalAtScopeEnd slot(semaphore);
///       co_await card.copy();
///     }
#pragma once

#include <atomic>
#include <coroutine>
#include <cstdint>
#include <mutex>

#include "meridian/base/linked_queue.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Limits how many tasks run at once: each holds a slot from `wait` to its `signal`. Coroutines and threads share one
/// FIFO queue; a slot that is released while others wait passes directly to the first of them. Every function except
/// the destructor may be called from any thread at any time.
///
/// `signal` resumes the coroutine that gets the slot on its own thread, before the outermost `signal` returns. A nested
/// `signal`, from a coroutine resumed in this way, only schedules the next waiter, which is resumed once the coroutine
/// before it suspends or ends. A chain of any length therefore uses constant stack, and a resumed coroutine that blocks
/// its thread delays those scheduled after it. No lock is held while a coroutine runs.
class TaskSemaphore {
 public:
  class Wait;

  /// With a limit of 0 or less every wait lasts until a `signal` grants it a slot.
  explicit TaskSemaphore(std::int64_t limit) noexcept : limit_(limit) {}

  TaskSemaphore(const TaskSemaphore&) = delete;
  TaskSemaphore& operator=(const TaskSemaphore&) = delete;

  /// Coroutines that still wait are never resumed; their owners destroy them, before or after the semaphore. Coroutines
  /// that have a slot and are scheduled on this thread are still resumed. Terminates the process if a thread still
  /// waits or another thread is about to resume a coroutine.
  MERIDIAN_API ~TaskSemaphore();

  /// `co_await semaphore.wait()` returns once the caller holds a slot, at once if one is free. Never fails. The
  /// `co_await` enters the queue, not this call.
  ///
  /// A suspended coroutine may be destroyed: it leaves the queue, or passes on a slot with which it was not resumed
  /// yet. It must not be destroyed while a `signal` on another thread may be resuming it.
  [[nodiscard]] Wait wait() noexcept;

  /// Blocks the calling thread until it holds a slot.
  MERIDIAN_API void waitBlocking() noexcept;

  /// Releases one slot; no effect without waiters and slots in use. An exception that leaves a coroutine resumed here
  /// terminates the process.
  MERIDIAN_API void signal() noexcept;

  /// Returns how many slots are in use. A slot that passes to a waiter stays in use; a slot that a surplus `signal`
  /// grants beyond the limit is not counted.
  [[nodiscard]] std::int64_t activeTasks() const noexcept { return state_.load(std::memory_order_relaxed) / oneSlot; }

  [[nodiscard]] std::int64_t limit() const noexcept { return limit_; }

 private:
  struct Waiter;
  struct WaitingThread;
  class ResumptionList;

  /// The slots in use, in units of `oneSlot`, and a flag for waiters. While the flag is set, the state only changes
  /// under the mutex, which also guards the queue.
  using State = std::int64_t;
  static constexpr State hasWaiters = 1;
  static constexpr State oneSlot = 2;

  MERIDIAN_API bool tryTakeSlot() noexcept;
  bool tryReleaseSlot() noexcept;
  bool takeSlotOrEnqueue(Waiter& waiter) noexcept;
  void dequeue(Waiter& waiter) noexcept;

  const std::int64_t limit_;
  std::atomic<State> state_ = 0;
  std::mutex mutex_;
  LinkedQueue<Waiter> waiters_;
  /// Coroutines that have a slot and are scheduled to be resumed.
  std::atomic<std::int64_t> scheduled_ = 0;
};

/// A suspended coroutine, or a thread if `coroutine` is null.
struct TaskSemaphore::Waiter {
  enum class Place : std::uint8_t { none, enqueued, scheduled };

  /// Null once the semaphore is destroyed.
  TaskSemaphore* semaphore = nullptr;
  std::coroutine_handle<> coroutine;
  Place place = Place::none;
  Waiter* previous = nullptr;
  Waiter* next = nullptr;
};

/// The result of `wait`, only for `co_await`.
class TaskSemaphore::Wait {
 public:
  explicit Wait(TaskSemaphore& semaphore) noexcept { waiter_.semaphore = &semaphore; }
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;
  ~Wait() {
    if (waiter_.place != Waiter::Place::none) giveUp();
  }

  [[nodiscard]] bool await_ready() const noexcept { return waiter_.semaphore->tryTakeSlot(); }
  MERIDIAN_API bool await_suspend(std::coroutine_handle<> coroutine) noexcept;
  void await_resume() const noexcept {}

 private:
  MERIDIAN_API void giveUp() noexcept;

  Waiter waiter_;
};

inline TaskSemaphore::Wait TaskSemaphore::wait() noexcept { return Wait(*this); }

/// Releases a slot that its owner already holds at the end of a scope.
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
