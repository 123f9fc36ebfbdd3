/// \file
/// A reader-writer lock that grants access in FIFO order. For example:
///
///     FairSharedLock lock;
///     lock.lock(LockAccess::shared);
///     read(clips);
///     lock.unlock(LockAccess::shared);
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "meridian/base/linked_queue.h"

namespace meridian::inline v0_2 {

/// Any number of threads may hold shared access at once; exclusive access is held alone.
enum class LockAccess : std::uint8_t { shared, exclusive };

/// Grants access strictly in FIFO order: shared access requested after waiting exclusive access waits for it, so
/// neither readers nor writers starve. Consecutive shared requests are granted together. Not recursive.
///
/// Without waiters, locking and unlocking cost one atomic operation each. Not exported: a part of DispatchQueue.
class FairSharedLock {
 public:
  FairSharedLock() = default;
  FairSharedLock(const FairSharedLock&) = delete;
  FairSharedLock& operator=(const FairSharedLock&) = delete;

  /// Blocks until access is granted.
  void lock(LockAccess access) noexcept;

  /// Releases what `lock` granted with the same access.
  void unlock(LockAccess access) noexcept;

  /// Returns true if unheld and without waiters; only meaningful when no other thread can arrive.
  [[nodiscard]] bool isFree() const noexcept { return state_.load(std::memory_order_relaxed) == 0; }

 private:
  struct Waiter;

  void handOver() noexcept;

  /// The sum of the holders, and a flag for waiters. The flag keeps everyone else out and changes under the mutex only.
  /// It is only set while the lock is held, so there is always a holder to hand over.
  using State = std::uint64_t;
  static constexpr State exclusiveHolder = 1;
  static constexpr State hasWaiters = 2;
  static constexpr State sharedHolder = 4;

  static constexpr State holder(LockAccess access) noexcept {
    return access == LockAccess::shared ? sharedHolder : exclusiveHolder;
  }
  static constexpr bool admits(State state, LockAccess access) noexcept {
    return access == LockAccess::shared ? (state & (exclusiveHolder | hasWaiters)) == 0 : state == 0;
  }

  std::atomic<State> state_ = 0;
  std::mutex mutex_;
  LinkedQueue<Waiter> waiters_;
};

}  // namespace meridian::inline v0_2
