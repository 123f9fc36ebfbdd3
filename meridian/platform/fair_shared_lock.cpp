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

void FairSharedLock::lock(LockAccess access) noexcept {
  State state = state_.load(std::memory_order_relaxed);
  while (admits(state, access)) {
    if (state_.compare_exchange_weak(state, state + holder(access), std::memory_order_acquire)) return;
  }

  std::unique_lock guard(mutex_);
  // In one step: enters if the holders have left meanwhile, and otherwise makes those that are left hand over.
  bool enters = false;
  do {
    enters = admits(state, access);
  } while (!state_.compare_exchange_weak(state, enters ? state + holder(access) : state | hasWaiters,
                                         std::memory_order_acquire));
  if (enters) return;
  Waiter self{.access = access, .admission = {}};
  waiters_.append(self);
  self.admission.wait(guard, [&] { return self.isAdmitted; });
}

void FairSharedLock::unlock(LockAccess access) noexcept {
  const State before = state_.fetch_sub(holder(access), std::memory_order_acq_rel);
  if (before - holder(access) == hasWaiters) handOver();
}

/// Admits the first waiter, and with shared access all shared ones right after it. The lock is unheld, and its flag
/// keeps it so meanwhile.
void FairSharedLock::handOver() noexcept {
  const std::lock_guard guard(mutex_);
  State state = 0;
  do {
    Waiter& waiter = waiters_.takeFirst();
    state += holder(waiter.access);
    waiter.isAdmitted = true;
    waiter.admission.notify_one();
  } while (!waiters_.isEmpty() && admits(state, waiters_.first()->access));
  state_.store(waiters_.isEmpty() ? state : state | hasWaiters, std::memory_order_release);
}

}  // namespace meridian::inline v0_2
