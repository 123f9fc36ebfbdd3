#include "meridian/concurrency/task_semaphore.h"

#include <condition_variable>
#include <thread>

#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {

/// Lives on the waiting thread's stack. A thread with a slot does not touch the semaphore, which may be destroyed by
/// then.
struct TaskSemaphore::WaitingThread : Waiter {
  void wait() noexcept {
    // A slot often arrives sooner than the system could put the thread to sleep and wake it.
    for (int turn = 0; turn < 32 && !hasSlot_.load(std::memory_order_relaxed); ++turn) std::this_thread::yield();
    // Under the mutex, so that `wake` is done with this object.
    std::unique_lock guard(mutex_);
    wake_.wait(guard, [this] { return hasSlot_.load(std::memory_order_relaxed); });
  }

  void wake() noexcept {
    const std::lock_guard guard(mutex_);
    hasSlot_.store(true, std::memory_order_relaxed);
    wake_.notify_one();
  }

 private:
  std::mutex mutex_;
  std::condition_variable wake_;
  std::atomic<bool> hasSlot_ = false;
};

/// The coroutines that a thread has granted slots to, in the order in which it resumes them.
class TaskSemaphore::ResumptionList {
 public:
  static ResumptionList& ofThisThread() noexcept {
    static constinit thread_local ResumptionList list;
    return list;
  }

  /// Schedules the waiter. The outermost call resumes all scheduled coroutines, including those added meanwhile.
  void resume(Waiter& waiter) noexcept {
    scheduled_.append(waiter);
    if (isResuming_) return;
    isResuming_ = true;
    while (!scheduled_.isEmpty()) {
      Waiter& next = *scheduled_.first();
      remove(next);
      next.coroutine.resume();
    }
    isResuming_ = false;
  }

  void remove(Waiter& waiter) noexcept {
    scheduled_.remove(waiter);
    waiter.place = Waiter::Place::none;
    if (waiter.semaphore != nullptr) waiter.semaphore->scheduled_.fetch_sub(1, std::memory_order_relaxed);
  }

  void forget(TaskSemaphore& semaphore) noexcept {
    for (Waiter* waiter = scheduled_.first(); waiter != nullptr; waiter = waiter->next) {
      if (waiter->semaphore != &semaphore) continue;
      waiter->semaphore = nullptr;
      semaphore.scheduled_.fetch_sub(1, std::memory_order_relaxed);
    }
  }

 private:
  LinkedQueue<Waiter> scheduled_;
  bool isResuming_ = false;
};

TaskSemaphore::~TaskSemaphore() {
  ResumptionList::ofThisThread().forget(*this);
  if (scheduled_.load(std::memory_order_relaxed) != 0) {
    preconditionFailed(
        "TaskSemaphore destroyed while another thread is about to resume a coroutine with one of its slots");
  }
  const std::lock_guard guard(mutex_);
  while (!waiters_.isEmpty()) {
    Waiter& waiter = waiters_.takeFirst();
    if (!waiter.coroutine) preconditionFailed("TaskSemaphore destroyed while a thread waits for one of its slots");
    waiter.place = Waiter::Place::none;
  }
}

void TaskSemaphore::waitBlocking() noexcept {
  if (tryTakeSlot()) return;
  WaitingThread self;
  bool isEnqueued = false;
  {
    const std::lock_guard guard(mutex_);
    isEnqueued = !takeSlotOrEnqueue(self);
  }
  if (isEnqueued) self.wait();
}

void TaskSemaphore::signal() noexcept {
  while (!tryReleaseSlot()) {
    Waiter* first = nullptr;
    {
      const std::lock_guard guard(mutex_);
      if (waiters_.isEmpty()) continue;  // the last waiter got another slot meanwhile, or gave up
      first = waiters_.first();
      dequeue(*first);
      if (first->coroutine) {
        first->place = Waiter::Place::scheduled;
        scheduled_.fetch_add(1, std::memory_order_relaxed);
      }
    }
    // From here on the semaphore may be destroyed.
    if (first->coroutine) {
      ResumptionList::ofThisThread().resume(*first);
    } else {
      static_cast<WaitingThread*>(first)->wake();
    }
    return;
  }
}

/// Takes a slot if one is free, which it never is while others wait.
bool TaskSemaphore::tryTakeSlot() noexcept {
  State state = state_.load(std::memory_order_relaxed);
  while (state / oneSlot < limit_) {
    if (state_.compare_exchange_weak(state, state + oneSlot, std::memory_order_acquire, std::memory_order_relaxed)) {
      return true;
    }
  }
  return false;
}

/// Returns false if there are waiters, to which the slot must pass. Releasing a surplus slot has no effect.
bool TaskSemaphore::tryReleaseSlot() noexcept {
  State state = state_.load(std::memory_order_relaxed);
  while ((state & hasWaiters) == 0) {
    if (state == 0 ||
        state_.compare_exchange_weak(state, state - oneSlot, std::memory_order_release, std::memory_order_relaxed)) {
      return true;
    }
  }
  return false;
}

/// Takes a slot if one has become free meanwhile, and otherwise enqueues the waiter. Needs the mutex.
bool TaskSemaphore::takeSlotOrEnqueue(Waiter& waiter) noexcept {
  State state = state_.load(std::memory_order_relaxed);
  bool isFree = false;
  do {
    isFree = state / oneSlot < limit_;
  } while (!state_.compare_exchange_weak(state, isFree ? state + oneSlot : state | hasWaiters,
                                         std::memory_order_acquire, std::memory_order_relaxed));
  if (isFree) return true;
  waiter.place = Waiter::Place::enqueued;
  waiters_.append(waiter);
  return false;
}

/// Removes a waiter from the queue. Needs the mutex.
void TaskSemaphore::dequeue(Waiter& waiter) noexcept {
  waiters_.remove(waiter);
  waiter.place = Waiter::Place::none;
  if (waiters_.isEmpty()) state_.fetch_sub(hasWaiters, std::memory_order_relaxed);
}

bool TaskSemaphore::Wait::await_suspend(std::coroutine_handle<> coroutine) noexcept {
  waiter_.coroutine = coroutine;
  TaskSemaphore& semaphore = *waiter_.semaphore;
  // Once the mutex is released, another thread may resume the coroutine, which may destroy this object.
  const std::lock_guard guard(semaphore.mutex_);
  return !semaphore.takeSlotOrEnqueue(waiter_);
}

/// Called for a coroutine that is destroyed while it is suspended.
void TaskSemaphore::Wait::giveUp() noexcept {
  if (waiter_.place == Waiter::Place::enqueued) {
    const std::lock_guard guard(waiter_.semaphore->mutex_);
    waiter_.semaphore->dequeue(waiter_);
  } else {
    ResumptionList::ofThisThread().remove(waiter_);
    if (waiter_.semaphore != nullptr) waiter_.semaphore->signal();
  }
}

}  // namespace meridian::inline v0_2
