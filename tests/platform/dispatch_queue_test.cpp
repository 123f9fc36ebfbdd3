#include "meridian/platform/dispatch_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <list>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/watched_thread.h"

namespace meridian {
namespace {

using Qos = QualityOfService;
using Queue = std::shared_ptr<DispatchQueue>;

Queue serial(const std::string& label, Queue target = nullptr) {
  return std::make_shared<DispatchQueue>(label, Qos::unspecified, DispatchQueueAttributes::none,
                                         AutoreleaseFrequency::inherit, std::move(target));
}

Queue concurrent(const std::string& label, Queue target = nullptr) {
  return std::make_shared<DispatchQueue>(label, Qos::utility, DispatchQueueAttributes::concurrent,
                                         AutoreleaseFrequency::inherit, std::move(target));
}

TEST(DispatchQueue, ReturnsItsSettings) {
  const Queue queue = concurrent("cards", DispatchQueue::global(Qos::background));
  EXPECT_EQ(queue->label(), "cards");
  EXPECT_EQ(queue->qualityOfService(), Qos::utility);
  EXPECT_EQ(queue->attributes(), DispatchQueueAttributes::concurrent);
  EXPECT_EQ(queue->autoreleaseFrequency(), AutoreleaseFrequency::inherit);
  EXPECT_EQ(queue->target(), DispatchQueue::global(Qos::background));
  EXPECT_EQ(DispatchQueue("plain").attributes(), DispatchQueueAttributes::none);
  for (const Qos each : allCases<Qos>()) {
    EXPECT_EQ(DispatchQueue::global(each)->qualityOfService(), each);
    EXPECT_EQ(DispatchQueue::global(each), DispatchQueue::global(each));
  }
}

TEST(DispatchQueue, RunsBlocksOnTheCallingThreadAndPassesExceptionsOn) {
  for (const Queue& queue : {serial("serial"), concurrent("concurrent", serial("target"))}) {
    std::thread::id thread;
    queue->sync([&] { thread = std::this_thread::get_id(); });
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_THROW(queue->sync([] { throw std::runtime_error("card removed"); }), std::runtime_error);
    EXPECT_THROW(queue->barrierSync([] { throw std::runtime_error("card removed"); }), std::runtime_error);
    int runs = 0;
    queue->barrierSync([&] { ++runs; });
    EXPECT_EQ(runs, 1);
  }
}

// Two plain blocks arrive while a barrier ends, and each waits inside for the other: a lost wake-up would hang.
TEST(DispatchQueue, PlainBlocksThatArriveAsABarrierEndsRunTogether) {
  constexpr int rounds = 5000;
  DispatchQueue queue("queue", Qos::unspecified, DispatchQueueAttributes::concurrent);
  std::atomic<int> round = 0;
  std::atomic<int> inside = 0;
  std::atomic<int> done = 0;
  std::atomic<bool> isStuck = false;
  const auto meet = [&] {
    for (int own = 1; own <= rounds; ++own) {
      while (round < own) std::this_thread::yield();
      queue.sync([&] {
        ++inside;
        const auto begin = std::chrono::steady_clock::now();
        while (inside < 2 * own && !isStuck) {
          if (std::chrono::steady_clock::now() - begin > std::chrono::seconds(20)) isStuck = true;
          std::this_thread::yield();
        }
      });
      ++done;
    }
  };
  {
    const std::jthread one(meet);
    const std::jthread other(meet);
    for (int own = 1; own <= rounds; ++own) {
      queue.barrierSync([&] { round = own; });
      while (done < 2 * own) std::this_thread::yield();
    }
  }
  EXPECT_FALSE(isStuck);
}

// Each letter is a thread that arrives after those before it: r submits a plain block, w a barrier block.
TEST(DispatchQueue, RunsBlocksInFifoOrder) {
  struct Case {
    DispatchQueueAttributes attributes;
    char first;                       // has its turn while the others arrive
    std::vector<std::string> groups;  // in order of arrival; a group runs together
  };
  const Case cases[] = {
      {DispatchQueueAttributes::concurrent, 'w', {"rr", "w", "r", "w", "w", "rrr"}},
      {DispatchQueueAttributes::concurrent, 'r', {"w", "rr", "w"}},
      {DispatchQueueAttributes::none, 'r', {"r", "r", "w", "r"}},
  };
  for (const Case& each : cases) {
    DispatchQueue queue("queue", Qos::unspecified, each.attributes);
    const auto submit = [&queue](char kind, FunctionRef<void()> block) {
      kind == 'w' ? queue.barrierSync(block) : queue.sync(block);
    };
    std::mutex mutex;
    std::vector<std::size_t> entered;
    std::list<std::latch> groupIsRunning;
    std::latch othersHaveArrived(1);
    std::list<test::WatchedThread> threads;
    threads.emplace_back([&] { submit(each.first, [&] { othersHaveArrived.wait(); }); });
    ASSERT_TRUE(threads.back().waitUntilAsleep());
    for (std::size_t group = 0; group < each.groups.size(); ++group) {
      // No block of a group ends before all of them have begun.
      groupIsRunning.emplace_back(static_cast<std::ptrdiff_t>(each.groups[group].size()));
      for (const char kind : each.groups[group]) {
        threads.emplace_back([&, kind, group, &isRunning = groupIsRunning.back()] {
          submit(kind, [&] {
            {
              const std::lock_guard guard(mutex);
              entered.push_back(group);
            }
            isRunning.arrive_and_wait();
          });
        });
        EXPECT_TRUE(threads.back().waitUntilAsleep()) << "overtook: " << kind << " of group " << group;
      }
    }
    othersHaveArrived.count_down();
    threads.clear();
    EXPECT_TRUE(std::ranges::is_sorted(entered));
  }
}

TEST(DispatchQueue, NeitherReadersNorWritersStarve) {
  const Queue queue = concurrent("queue");
  constexpr int writes = 300;
  // Not guarded by anything else, so that the thread sanitizer sees a queue that does not exclude.
  int left = 0;
  int right = 0;
  std::vector<std::jthread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      // Readers arrive without a pause until everything is written.
      for (int seen = 0; seen < 2 * writes;) {
        queue->sync([&] {
          EXPECT_EQ(left, -right);
          seen = left;
        });
      }
    });
  }
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      for (int write = 0; write < writes; ++write) {
        queue->barrierSync([&] {
          ++left;
          --right;
        });
      }
    });
  }
  threads.clear();
  EXPECT_EQ(left, 2 * writes);
}

TEST(DispatchQueue, QueuesWithACommonSerialTargetExcludeEachOther) {
  const Queue serialTarget = serial("serial target");
  const Queue concurrentTarget = concurrent("concurrent target", DispatchQueue::global(Qos::utility));
  const Queue global = DispatchQueue::global(Qos::utility);
  struct Case {
    Queue one;
    Queue other;
    bool isConcurrent;
  };
  const Case cases[] = {
      {serial("a"), serial("b"), true},
      {serial("a", global), serial("b", global), true},
      {serial("a", serialTarget), serial("b", serialTarget), false},
      {serial("a", serial("between", serialTarget)), serialTarget, false},
      {concurrent("a", serialTarget), concurrent("b", serialTarget), false},
      {concurrent("a", concurrentTarget), concurrent("b", concurrentTarget), true},  // a barrier on "a" only
      {serial("a", concurrentTarget), concurrentTarget, true},
      {concurrentTarget, serial("b", concurrentTarget), false},
      {global, global, true},
  };
  for (const auto& [one, other, isConcurrent] : cases) {
    bool otherWaited = false;
    {
      std::list<test::WatchedThread> thread;
      one->barrierSync([&] {
        thread.emplace_back([&, queue = other] { queue->sync([] {}); });
        otherWaited = thread.back().waitUntilAsleep();
      });
    }
    EXPECT_EQ(otherWaited, !isConcurrent) << one->label() << " and " << other->label();
  }
}

TEST(DispatchQueueDeathTest, TerminatesIfABlockWouldWaitForItself) {
  const Queue target = serial("the\x1bqueue");
  const Queue above = concurrent("above", target);
  const Queue beside = serial("beside", target);
  const Queue other = serial("other");
  const std::string message = R"(fatal: DispatchQueue "the\\x1bqueue": a block that is running)";
  EXPECT_DEATH(target->sync([&] { target->sync([] {}); }), message);
  EXPECT_DEATH(target->sync([&] { other->sync([&] { target->barrierSync([] {}); }); }), message);
  EXPECT_DEATH(above->sync([&] { target->sync([] {}); }), message);
  EXPECT_DEATH(target->sync([&] { above->sync([] {}); }), message);
  EXPECT_DEATH(beside->sync([&] { above->sync([] {}); }), message);
  Queue owned = serial("owned");
  EXPECT_DEATH(owned->sync([&] { owned.reset(); }), "\"owned\": a block that is running on the queue destroys it");
  // Two plain blocks would deadlock as soon as a barrier arrived between them.
  EXPECT_DEATH(above->sync([&] { above->sync([] {}); }), "\"above\": a block that is running");
}

TEST(DispatchQueue, BlocksMaySubmitToOtherQueues) {
  const Queue global = DispatchQueue::global(Qos::default_);
  const Queue one = serial("one", global);
  const Queue two = serial("two", global);
  int runs = 0;
  const auto count = [&] { ++runs; };
  one->sync([&] { two->sync([&] { global->barrierSync([&] { global->sync(count); }); }); });
  two->sync([&] { one->sync(count); });
  // Turns belong to a thread.
  one->sync([&] { std::jthread([&] { two->sync(count); }); });
  EXPECT_EQ(runs, 3);
}

}  // namespace
}  // namespace meridian
