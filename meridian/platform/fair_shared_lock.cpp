#include "meridian/platform/fair_shared_lock.h"

#include <condition_variable>

namespace meridian {

struct FairSharedLock::Waiter {
  LockAccess access;
  bool isAdmitted = false;
  std::condition_variable admission;
  Waiter* previous = nullptr;
  Waiter* next = nullptr;
};

void FairSharedLock::waitInLine(LockAccess access) noexcept {
  std::unique_lock guard(mutex_);
  Waiter self{.access = access, .admission = {}};
  line_.append(self);
  // Nobody is left inside to hand over, when all left since the attempt to enter.
  if (state_.fetch_or(someWait, std::memory_order_acq_rel) == 0) admitFirst();
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

}  // namespace meridian
