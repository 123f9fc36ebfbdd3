// A lock for readers and writers that lets them in strictly in the order in which they came.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "meridian/base/linked_queue.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

enum class LockAccess : std::uint8_t { shared, exclusive };

/// Many with shared access hold it at once, or one with exclusive access. Who cannot enter waits in line, and nobody
/// overtakes the line: shared access that comes after waiting exclusive access waits for it, so neither starves. Not
/// recursive.
class MERIDIAN_API FairSharedLock {
 public:
  FairSharedLock() = default;
  FairSharedLock(const FairSharedLock&) = delete;
  FairSharedLock& operator=(const FairSharedLock&) = delete;

  void lock(LockAccess access) noexcept {
    if (!tryLock(access)) waitInLine(access);
  }

  /// Whether nobody is inside or waits, for who knows that nobody comes.
  [[nodiscard]] bool isFree() const noexcept { return state_.load(std::memory_order_relaxed) == 0; }

  /// Gives back what `lock` with the same access took.
  void unlock(LockAccess access) noexcept {
    const State weight = weightOf(access);
    if (state_.fetch_sub(weight, std::memory_order_acq_rel) == weight + someWait) handOver();
  }

 private:
  /// Who is inside, as the sum of their weights, and the mark that the line is not empty. A marked state lets nobody
  /// in: those inside leave it, and who holds the mutex admits those in line. The mark changes under the mutex alone.
  using State = std::uint64_t;
  static constexpr State oneExclusive = 1;
  static constexpr State someWait = 2;
  static constexpr State oneShared = 4;

  struct Waiter;

  static constexpr State weightOf(LockAccess access) noexcept {
    return access == LockAccess::shared ? oneShared : oneExclusive;
  }

  /// What in the state keeps this access out.
  static constexpr State closing(LockAccess access) noexcept {
    return access == LockAccess::shared ? oneExclusive | someWait : ~State{0};
  }

  bool tryLock(LockAccess access) noexcept {
    State state = state_.load(std::memory_order_relaxed);
    while ((state & closing(access)) == 0) {
      if (state_.compare_exchange_weak(state, state + weightOf(access), std::memory_order_acquire,
                                       std::memory_order_relaxed)) {
        return true;
      }
    }
    return false;
  }

  bool tryLockOrMark(LockAccess access) noexcept;
  void waitInLine(LockAccess access) noexcept;
  void handOver() noexcept;
  void admitFirst() noexcept;

  std::atomic<State> state_ = 0;
  std::mutex mutex_;
  LinkedQueue<Waiter> line_;
};

}  // namespace meridian::inline v0_2
