// Switches and the task semaphore, compared with the standard library.
#include <benchmark/benchmark.h>

#include <atomic>
#include <coroutine>
#include <exception>
#include <memory>
#include <mutex>
#include <semaphore>
#include <shared_mutex>
#include <string>
#include <thread>

#include "bench/allocations.h"
#include "meridian/concurrency/atomic_switch.h"
#include "meridian/concurrency/task_semaphore.h"

namespace meridian::bench {
namespace {

class StandardAtomic {
 public:
  [[nodiscard]] bool isOn() const { return isOn_; }
  void setIsOn(bool isOn) { isOn_ = isOn; }

 private:
  std::atomic<bool> isOn_ = false;
};

template <typename Mutex, typename ReadLock>
class Guarded {
 public:
  [[nodiscard]] bool isOn() const {
    const ReadLock guard(mutex_);
    return isOn_;
  }
  void setIsOn(bool isOn) {
    const std::lock_guard guard(mutex_);
    isOn_ = isOn;
  }

 private:
  mutable Mutex mutex_;
  bool isOn_ = false;
};

using StandardMutex = Guarded<std::mutex, std::lock_guard<std::mutex>>;
using StandardSharedMutex = Guarded<std::shared_mutex, std::shared_lock<std::shared_mutex>>;

/// Measures one thread alone, and two threads that contend. The switches are called through their interface, the bare
/// peers directly.
template <typename Switch>
void registerSwitch(const std::string& kind, const std::shared_ptr<Switch>& shared) {
  const auto get = [shared](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(shared->isOn());
  };
  const auto set = [shared](benchmark::State& state) {
    bool isOn = false;
    for (auto _ : state) shared->setIsOn(isOn = !isOn);
  };
  benchmark::RegisterBenchmark(("switch_get/" + kind).c_str(), get)->ThreadRange(1, 2)->UseRealTime();
  benchmark::RegisterBenchmark(("switch_set/" + kind).c_str(), set)->ThreadRange(1, 2)->UseRealTime();
}

const bool switchesAreRegistered = [] {
  const auto qos = QualityOfService::utility;
  const std::shared_ptr<AtomicSwitch> unfairLock = std::make_shared<UnfairLockBasedAtomicSwitch>(false);
  const std::shared_ptr<AtomicSwitch> queue = QueueBasedAtomicSwitch::withTargetQos(false, "queue", qos);
  const std::shared_ptr<AtomicSwitch> concurrentQueue =
      std::make_shared<ConcurrentQueueBasedAtomicSwitch>(false, "concurrent queue", qos);
  const auto registerBesidePeers = [](const std::string& kind, const std::shared_ptr<AtomicSwitch>& own) {
    registerSwitch(kind + "/meridian", own);
    registerSwitch(kind + "/std::atomic", std::make_shared<StandardAtomic>());
    registerSwitch(kind + "/std::mutex", std::make_shared<StandardMutex>());
  };
  registerBesidePeers("unfair_lock", unfairLock);
  registerBesidePeers("queue", queue);
  registerBesidePeers("concurrent_queue", concurrentQueue);
  registerSwitch("concurrent_queue/std::shared_mutex", std::make_shared<StandardSharedMutex>());
  return true;
}();

/// A coroutine that begins at once and is destroyed while it is suspended.
class Task {
 public:
  struct promise_type {
    Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_always final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() { std::terminate(); }
  };
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  ~Task() { coroutine_.destroy(); }

 private:
  explicit Task(std::coroutine_handle<> coroutine) : coroutine_(coroutine) {}

  std::coroutine_handle<> coroutine_;
};

Task waitAndSignal(TaskSemaphore& semaphore, benchmark::State& state) {
  for (auto _ : state) {
    co_await semaphore.wait();
    semaphore.signal();
  }
}

void waitSignalMeridian(benchmark::State& state) {
  TaskSemaphore semaphore(4);
  const AllocationsPerIteration allocations(state);
  const Task task = waitAndSignal(semaphore, state);
}
BENCHMARK(waitSignalMeridian)->Name("semaphore_wait_signal/meridian");

void waitBlockingSignalMeridian(benchmark::State& state) {
  TaskSemaphore semaphore(4);
  for (auto _ : state) {
    semaphore.waitBlocking();
    semaphore.signal();
  }
}
BENCHMARK(waitBlockingSignalMeridian)->Name("semaphore_wait_signal/meridian_blocking");

void waitSignalStandard(benchmark::State& state) {
  std::counting_semaphore<4> semaphore(4);
  for (auto _ : state) {
    semaphore.acquire();
    semaphore.release();
  }
}
BENCHMARK(waitSignalStandard)->Name("semaphore_wait_signal/std::counting_semaphore");

Task waitForever(TaskSemaphore& semaphore) {
  for (;;) co_await semaphore.wait();
}

/// One iteration grants a slot to a coroutine, resumes it, and suspends it again at the end of the queue.
void handOverBetweenCoroutines(benchmark::State& state) {
  TaskSemaphore semaphore(0);
  const Task tasks[] = {waitForever(semaphore), waitForever(semaphore), waitForever(semaphore)};
  const AllocationsPerIteration allocations(state);
  for (auto _ : state) semaphore.signal();
}
BENCHMARK(handOverBetweenCoroutines)->Name("semaphore_hand_over/coroutines");

/// One iteration signals another thread and waits for its answer.
template <typename Signal, typename Wait>
void signalBackAndForth(benchmark::State& state, Signal signal, Wait wait) {
  std::jthread other([&](const std::stop_token& stop) {
    for (wait(0); !stop.stop_requested(); wait(0)) signal(1);
  });
  for (auto _ : state) {
    signal(0);
    wait(1);
  }
  other.request_stop();
  signal(0);
}

void handOverBetweenThreadsMeridian(benchmark::State& state) {
  TaskSemaphore semaphores[] = {TaskSemaphore(1), TaskSemaphore(1)};
  for (TaskSemaphore& semaphore : semaphores) semaphore.waitBlocking();
  signalBackAndForth(
      state, [&](int way) { semaphores[way].signal(); }, [&](int way) { semaphores[way].waitBlocking(); });
}
BENCHMARK(handOverBetweenThreadsMeridian)->Name("semaphore_to_thread_and_back/meridian")->UseRealTime();

void handOverBetweenThreadsStandard(benchmark::State& state) {
  std::binary_semaphore semaphores[] = {std::binary_semaphore(0), std::binary_semaphore(0)};
  signalBackAndForth(state, [&](int way) { semaphores[way].release(); }, [&](int way) { semaphores[way].acquire(); });
}
BENCHMARK(handOverBetweenThreadsStandard)->Name("semaphore_to_thread_and_back/std::counting_semaphore")->UseRealTime();

}  // namespace
}  // namespace meridian::bench
