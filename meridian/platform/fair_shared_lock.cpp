#include "meridian/platform/fair_shared_lock.h"

#include <condition_variable>

namespace meridian::inline v0_2 {

struct FairSharedLock::Waiter {
  LockAccess access;
  bool isAdmitted = false;
  std::condition_variable admission;
  Waiter* previous = nullptr;
  Waiter* next = nullptr;
};

/// Under the mutex: whether access was had after all, since those that kept it out have left; else the state is marked.
/// It is marked only while it is closed, so that nobody waits who could enter, and someone is inside to hand over.
bool FairSharedLock::tryLockOrMark(LockAccess access) noexcept {
  if ((state_.load(std::memory_order_relaxed) & someWait) != 0) return false;
  if (access == LockAccess::exclusive) {
    // In one step, whoever comes and goes meanwhile. Nobody comes into a state with the mark alone, and nobody leaves.
    if (state_.fetch_or(someWait, std::memory_order_acquire) != 0) return false;
    state_.store(oneExclusive, std::memory_order_relaxed);
    return true;
  }
  while (!tryLock(access)) {
    State state = state_.load(std::memory_order_relaxed);
    if ((state & closing(access)) != 0 &&
        state_.compare_exchange_strong(state, state | someWait, std::memory_order_relaxed)) {
      return false;
    }
  }
  return true;
}

void FairSharedLock::waitInLine(LockAccess access) noexcept {
  std::unique_lock guard(mutex_);
  if (tryLockOrMark(access)) return;
  Waiter self{.access = access, .admission = {}};
  line_.append(self);
  self.admission.wait(guard, [&] { return self.isAdmitted; });
}

void FairSharedLock::handOver() noexcept {
  const std::lock_guard guard(mutex_);
  admitFirst();
}

/// Lets in the first in line, and with shared access all such that come right after it. Nobody is inside and the mutex
/// is held, so that who is admitted goes on only when the state is true.
void FairSharedLock::admitFirst() noexcept {
  State inside = 0;
  LockAccess access{};
  do {
    Waiter& waiter = line_.takeFirst();
    access = waiter.access;
    inside += weightOf(access);
    waiter.isAdmitted = true;
    waiter.admission.notify_one();
  } while (access == LockAccess::shared && !line_.isEmpty() && line_.first()->access == LockAccess::shared);
  state_.store(line_.isEmpty() ? inside : inside | someWait, std::memory_order_release);
}

}  // namespace meridian::inline v0_2
