#include "meridian/concurrency/task_semaphore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/coroutine_task.h"
#include "tests/support/watched_thread.h"

namespace meridian {
namespace {

using test::Task;
using testing::ElementsAre;
using testing::IsEmpty;

Task recordWhenItHasASlot(TaskSemaphore& semaphore, std::vector<int>& recorded, int number) {
  co_await semaphore.wait();
  recorded.push_back(number);
}

TEST(TaskSemaphore, MatchesAPlainModel) {
  std::mt19937 random(71);
  for (const int limit : {-5, 0, 1, 2, 7}) {
    TaskSemaphore semaphore(limit);
    int count = 0;
    std::deque<int> waiting;
    std::vector<int> expected;

    std::vector<std::optional<Task>> tasks;
    std::vector<int> recorded;
    for (int step = 0; step < 5000; ++step) {
      const unsigned choice = random() % 16;
      if (choice < 7) {
        const int number = static_cast<int>(tasks.size());
        if (count >= limit) {
          waiting.push_back(number);
        } else {
          ++count;
          expected.push_back(number);
        }
        tasks.emplace_back(recordWhenItHasASlot(semaphore, recorded, number));
      } else if (choice < 15) {
        if (!waiting.empty()) {
          expected.push_back(waiting.front());
          waiting.pop_front();
        } else if (count > 0) {
          --count;
        }
        semaphore.signal();
      } else if (!waiting.empty()) {
        const auto leaving = waiting.begin() + static_cast<std::ptrdiff_t>(random() % waiting.size());
        tasks[static_cast<std::size_t>(*leaving)].reset();
        waiting.erase(leaving);
      }
      ASSERT_EQ(semaphore.activeTasks(), count);
      ASSERT_EQ(recorded, expected);
    }
    EXPECT_EQ(semaphore.limit(), limit);
  }
}

Task recordAndPassOn(TaskSemaphore& semaphore, std::vector<int>& recorded, int number) {
  co_await semaphore.wait();
  const SignalAtScopeEnd atEnd(semaphore);
  recorded.push_back(number);
}

TEST(TaskSemaphore, AChainOfAMillionUsesConstantStack) {
  constexpr int many = 1'000'000;
  TaskSemaphore semaphore(1);
  semaphore.waitBlocking();
  std::vector<int> recorded;
  std::vector<Task> tasks;
  tasks.reserve(many);
  for (int i = 0; i < many; ++i) tasks.push_back(recordAndPassOn(semaphore, recorded, i));
  EXPECT_THAT(recorded, IsEmpty());
  semaphore.signal();
  EXPECT_EQ(recorded.size(), many);
  EXPECT_TRUE(std::ranges::is_sorted(recorded));
  EXPECT_EQ(semaphore.activeTasks(), 0);
}

Task waitOften(TaskSemaphore& semaphore, int times) {
  for (int i = 0; i < times; ++i) {
    co_await semaphore.wait();
    semaphore.signal();
  }
}

TEST(TaskSemaphore, AMillionImmediateSlotsUseConstantStack) {
  TaskSemaphore semaphore(1);
  EXPECT_TRUE(waitOften(semaphore, 1'000'000).isDone());
  EXPECT_EQ(semaphore.activeTasks(), 0);
}

struct Stage {
  TaskSemaphore semaphore{0};
  std::vector<std::string> recorded;
};

Task recordAround(Stage& stage, std::string name, const std::function<void()>& act) {
  co_await stage.semaphore.wait();
  stage.recorded.push_back(name + " begins");
  act();
  stage.recorded.push_back(name + " ends");
}

TEST(TaskSemaphore, ANestedSignalResumesItsWaiterLater) {
  Stage stage;
  const std::function<void()> signalTwice = [&] {
    stage.semaphore.signal();
    stage.semaphore.signal();
  };
  const std::function<void()> nothing = [] {};
  const Task a = recordAround(stage, "a", signalTwice);
  const Task b = recordAround(stage, "b", nothing);
  const Task c = recordAround(stage, "c", nothing);
  stage.semaphore.signal();
  EXPECT_THAT(stage.recorded, ElementsAre("a begins", "a ends", "b begins", "b ends", "c begins", "c ends"));
}

TEST(TaskSemaphore, AScheduledWaiterThatIsDestroyedPassesItsSlotOn) {
  Stage stage;
  std::optional<Task> second;
  const std::function<void()> signalAndDestroy = [&] {
    stage.semaphore.signal();
    second.reset();
  };
  const std::function<void()> nothing = [] {};
  const Task first = recordAround(stage, "first", signalAndDestroy);
  second.emplace(recordAround(stage, "second", nothing));
  const Task third = recordAround(stage, "third", nothing);
  stage.semaphore.signal();
  EXPECT_THAT(stage.recorded, ElementsAre("first begins", "first ends", "third begins", "third ends"));
}

TEST(TaskSemaphore, WaitersMayBeDestroyedBeforeOrAfterTheSemaphore) {
  std::vector<int> recorded;
  auto semaphore = std::make_unique<TaskSemaphore>(0);
  std::vector<Task> tasks;
  for (int i = 0; i < 4; ++i) tasks.push_back(recordWhenItHasASlot(*semaphore, recorded, i));
  tasks.pop_back();
  semaphore.reset();
  EXPECT_THAT(recorded, IsEmpty());
  for (const Task& task : tasks) EXPECT_FALSE(task.isDone());
}

Task act(TaskSemaphore& semaphore, const std::function<void()>& action) {
  co_await semaphore.wait();
  action();
}

TEST(TaskSemaphore, AResumedCoroutineMayDestroyTheSemaphore) {
  std::vector<int> recorded;
  auto semaphore = std::make_unique<TaskSemaphore>(0);
  std::optional<Task> destroyed;
  const std::function<void()> destroy = [&] {
    for (int i = 0; i < 2; ++i) semaphore->signal();
    semaphore.reset();
    destroyed.reset();
  };
  const Task destroyer = act(*semaphore, destroy);
  destroyed.emplace(recordWhenItHasASlot(*semaphore, recorded, 1));
  const Task withSlot = recordWhenItHasASlot(*semaphore, recorded, 2);
  const Task withoutSlot = recordWhenItHasASlot(*semaphore, recorded, 3);
  semaphore->signal();
  EXPECT_TRUE(destroyer.isDone());
  EXPECT_THAT(recorded, ElementsAre(2));
  EXPECT_FALSE(withoutSlot.isDone());
}

TEST(TaskSemaphore, ThreadsAndCoroutinesShareOneQueue) {
  TaskSemaphore semaphore(1);
  semaphore.waitBlocking();
  std::vector<int> recorded;
  std::list<test::WatchedThread> threads;
  std::vector<Task> tasks;
  for (int i = 0; i < 8; ++i) {
    if (i % 3 == 0) {
      tasks.push_back(recordAndPassOn(semaphore, recorded, i));
    } else {
      threads.emplace_back([&semaphore, &recorded, i] {
        semaphore.waitBlocking();
        const SignalAtScopeEnd atEnd(semaphore);
        recorded.push_back(i);
      });
      ASSERT_TRUE(threads.back().waitUntilAsleep());
    }
  }
  semaphore.signal();
  threads.clear();
  EXPECT_THAT(recorded, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
  EXPECT_EQ(semaphore.activeTasks(), 0);
}

struct Workshop {
  TaskSemaphore semaphore{3};
  std::atomic<int> atWork = 0;
  std::atomic<int> most = 0;
  std::atomic<int> done = 0;

  void work() {
    const int now = ++atWork;
    int before = most;
    while (now > before && !most.compare_exchange_weak(before, now)) {
    }
    EXPECT_GE(semaphore.activeTasks(), 1);
    std::this_thread::yield();
    ++done;
    --atWork;
  }
};

Task workOften(Workshop& workshop, int times) {
  for (int i = 0; i < times; ++i) {
    co_await workshop.semaphore.wait();
    const SignalAtScopeEnd atEnd(workshop.semaphore);
    workshop.work();
  }
}

TEST(TaskSemaphore, NeverMoreThanTheLimitRunOnManyThreads) {
  constexpr int times = 150;
  Workshop workshop;
  std::vector<std::vector<Task>> tasks(4);
  {
    std::vector<std::jthread> threads;
    for (auto& own : tasks) {
      threads.emplace_back([&] {
        for (int i = 0; i < 5; ++i) own.push_back(workOften(workshop, times));
      });
      threads.emplace_back([&] {
        for (int i = 0; i < times; ++i) {
          workshop.semaphore.waitBlocking();
          const SignalAtScopeEnd atEnd(workshop.semaphore);
          workshop.work();
        }
      });
    }
  }
  EXPECT_LE(workshop.most, 3);
  EXPECT_EQ(workshop.done, 4 * 6 * times);
  EXPECT_EQ(workshop.semaphore.activeTasks(), 0);
  for (const auto& own : tasks) {
    for (const Task& task : own) EXPECT_TRUE(task.isDone());
  }
}

// The number is guarded by the slot only.
TEST(TaskSemaphore, OrdersMemoryAccessesUnderASlot) {
  constexpr int times = 20000;
  TaskSemaphore semaphore(1);
  int number = 0;
  const auto count = [&] {
    for (int i = 0; i < times; ++i) {
      semaphore.waitBlocking();
      const SignalAtScopeEnd atEnd(semaphore);
      ++number;
    }
  };
  {
    const std::jthread one(count);
    const std::jthread other(count);
  }
  EXPECT_EQ(number, 2 * times);
}

TEST(TaskSemaphore, OfTwoSignalsForOneWaiterOneReleasesTheSlot) {
  constexpr int rounds = 5000;
  TaskSemaphore semaphore(1);
  std::vector<int> recorded;
  std::barrier<> gate(3);
  const auto signalOften = [&] {
    for (int round = 0; round < rounds; ++round) {
      gate.arrive_and_wait();
      semaphore.signal();
      gate.arrive_and_wait();
    }
  };
  const std::jthread one(signalOften);
  const std::jthread other(signalOften);
  for (int round = 0; round < rounds; ++round) {
    semaphore.waitBlocking();
    const Task task = recordWhenItHasASlot(semaphore, recorded, round);
    gate.arrive_and_wait();
    gate.arrive_and_wait();
    EXPECT_TRUE(task.isDone());
    EXPECT_EQ(semaphore.activeTasks(), 0);
  }
  EXPECT_EQ(recorded.size(), rounds);
}

TEST(TaskSemaphore, MayBeDestroyedOnceAThreadHasItsSlot) {
  for (int round = 0; round < 30; ++round) {
    auto semaphore = std::make_unique<TaskSemaphore>(0);
    test::WatchedThread thread([&] { semaphore->waitBlocking(); });
    ASSERT_TRUE(thread.waitUntilAsleep());
    semaphore->signal();
    semaphore.reset();
  }
}

TEST(TaskSemaphoreDeathTest, TerminatesIfDestroyedWhileAnotherThreadHasScheduledAWaiter) {
  auto semaphore = std::make_unique<TaskSemaphore>(0);
  const std::function<void()> scheduleAndDestroyElsewhere = [&] {
    semaphore->signal();
    std::jthread([&] { semaphore.reset(); }).join();
  };
  const std::function<void()> nothing = [] {};
  const Task first = act(*semaphore, scheduleAndDestroyElsewhere);
  const Task second = act(*semaphore, nothing);
  EXPECT_DEATH(semaphore->signal(), "fatal: TaskSemaphore destroyed while another thread");
}

TEST(TaskSemaphoreDeathTest, TerminatesIfDestroyedWhileAThreadWaits) {
  EXPECT_DEATH(
      {
        auto semaphore = std::make_unique<TaskSemaphore>(0);
        test::WatchedThread thread([&] { semaphore->waitBlocking(); });
        thread.waitUntilAsleep();
        semaphore.reset();
      },
      "fatal: TaskSemaphore destroyed while a thread waits");
}

}  // namespace
}  // namespace meridian
