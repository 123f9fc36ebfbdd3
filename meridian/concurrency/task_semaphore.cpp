#include "meridian/concurrency/task_semaphore.h"

#include <condition_variable>
#include <thread>

#include "meridian/base/precondition.h"

namespace meridian::inline v0_2 {

/// A thread waits on its own stack alone: with a slot it needs the semaphore no more, which may be gone by then.
struct TaskSemaphore::WaitingThread : Waiter {
  void wait() noexcept {
    // A slot often comes sooner than the system could put the thread to sleep and wake it.
    for (int turn = 0; turn < 32 && !hasSlot_.load(std::memory_order_relaxed); ++turn) std::this_thread::yield();
    // Under the mutex, so that who gave the slot is done with this object.
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

/// The coroutines that a thread's signals have given slots, in the order in which the thread resumes them.
class TaskSemaphore::ResumptionList {
 public:
  static ResumptionList& ofThisThread() noexcept {
    static constinit thread_local ResumptionList list;
    return list;
  }

  /// Notes the waiter, and unless that is going on already, resumes all that are noted and will be meanwhile.
  void resume(Waiter& waiter) noexcept {
    noted_.append(waiter);
    if (isResuming_) return;
    isResuming_ = true;
    while (!noted_.isEmpty()) {
      Waiter& next = *noted_.first();
      remove(next);
      next.coroutine.resume();
    }
    isResuming_ = false;
  }

  void remove(Waiter& waiter) noexcept {
    noted_.remove(waiter);
    waiter.place = Waiter::Place::none;
    if (waiter.semaphore != nullptr) waiter.semaphore->noted_.fetch_sub(1, std::memory_order_relaxed);
  }

  void forget(TaskSemaphore& semaphore) noexcept {
    for (Waiter* waiter = noted_.first(); waiter != nullptr; waiter = waiter->next) {
      if (waiter->semaphore != &semaphore) continue;
      waiter->semaphore = nullptr;
      semaphore.noted_.fetch_sub(1, std::memory_order_relaxed);
    }
  }

 private:
  LinkedQueue<Waiter> noted_;
  bool isResuming_ = false;
};

TaskSemaphore::~TaskSemaphore() {
  ResumptionList::ofThisThread().forget(*this);
  if (noted_.load(std::memory_order_relaxed) != 0) {
    preconditionFailed("TaskSemaphore destroyed while another thread is about to resume a coroutine with a slot of it");
  }
  const std::lock_guard guard(mutex_);
  while (!line_.isEmpty()) {
    Waiter& waiter = line_.takeFirst();
    if (!waiter.coroutine) preconditionFailed("TaskSemaphore destroyed while a thread waits for a slot of it");
    waiter.place = Waiter::Place::none;
  }
}

void TaskSemaphore::waitBlocking() noexcept {
  if (tryTakeSlot()) return;
  WaitingThread self;
  bool hasToWait = false;
  {
    const std::lock_guard guard(mutex_);
    hasToWait = standInLine(self);
  }
  if (hasToWait) self.wait();
}

void TaskSemaphore::signal() noexcept {
  while (!tryGiveBackSlot()) {
    Waiter* first = nullptr;
    {
      const std::lock_guard guard(mutex_);
      if (line_.isEmpty()) continue;  // the last one got another slot meanwhile, or gave up
      first = line_.first();
      leaveLine(*first);
      if (first->coroutine) {
        first->place = Waiter::Place::noted;
        noted_.fetch_add(1, std::memory_order_relaxed);
      }
    }
    // From here on the semaphore may be gone.
    if (first->coroutine) {
      ResumptionList::ofThisThread().resume(*first);
    } else {
      static_cast<WaitingThread*>(first)->wake();
    }
    return;
  }
}

/// Takes a slot where one is free. None is while someone waits.
bool TaskSemaphore::tryTakeSlot() noexcept {
  State state = state_.load(std::memory_order_relaxed);
  while (state / oneSlot < limit_) {
    if (state_.compare_exchange_weak(state, state + oneSlot, std::memory_order_acquire, std::memory_order_relaxed)) {
      return true;
    }
  }
  return false;
}

/// False while someone waits, to whom the slot has to pass. A surplus one is given back by doing nothing.
bool TaskSemaphore::tryGiveBackSlot() noexcept {
  State state = state_.load(std::memory_order_relaxed);
  while ((state & someWait) == 0) {
    if (state == 0 ||
        state_.compare_exchange_weak(state, state - oneSlot, std::memory_order_release, std::memory_order_relaxed)) {
      return true;
    }
  }
  return false;
}

/// Appends to the line, under the mutex, unless a slot has come free: false when the waiter has that one.
bool TaskSemaphore::standInLine(Waiter& waiter) noexcept {
  while (!tryTakeSlot()) {
    State state = state_.load(std::memory_order_relaxed);
    if (state / oneSlot >= limit_ &&
        state_.compare_exchange_strong(state, state | someWait, std::memory_order_relaxed)) {
      waiter.place = Waiter::Place::inLine;
      line_.append(waiter);
      return true;
    }
  }
  return false;
}

/// Takes a waiter out of the line, under the mutex.
void TaskSemaphore::leaveLine(Waiter& waiter) noexcept {
  line_.remove(waiter);
  waiter.place = Waiter::Place::none;
  if (line_.isEmpty()) state_.fetch_sub(someWait, std::memory_order_relaxed);
}

bool TaskSemaphore::Wait::await_suspend(std::coroutine_handle<> coroutine) noexcept {
  waiter_.coroutine = coroutine;
  TaskSemaphore& semaphore = *waiter_.semaphore;
  // When the mutex is released another thread may resume the coroutine, and this object may be gone.
  const std::lock_guard guard(semaphore.mutex_);
  return semaphore.standInLine(waiter_);
}

/// Of a coroutine that is destroyed while it is suspended.
void TaskSemaphore::Wait::giveUp() noexcept {
  if (waiter_.place == Waiter::Place::inLine) {
    const std::lock_guard guard(waiter_.semaphore->mutex_);
    waiter_.semaphore->leaveLine(waiter_);
  } else {
    ResumptionList::ofThisThread().remove(waiter_);
    if (waiter_.semaphore != nullptr) waiter_.semaphore->signal();
  }
}

}  // namespace meridian::inline v0_2
