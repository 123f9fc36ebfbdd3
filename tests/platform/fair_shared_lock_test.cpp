#include "meridian/platform/fair_shared_lock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <latch>
#include <thread>
#include <vector>

namespace meridian {
namespace {

// The sum is plain, so that the thread sanitizer sees access that is not exclusive. A lost wake-up would hang; the
// accesses are short, so that many arrive as the holders leave.
TEST(FairSharedLock, ExcludesWritersAndWakesEveryWaiter) {
  constexpr int threadCount = 4;
  constexpr int rounds = 300'000;
  FairSharedLock lock;
  std::int64_t sum = 0;
  std::latch allAreRunning(threadCount);
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
      threads.emplace_back([&, thread] {
        allAreRunning.arrive_and_wait();
        for (int round = 0; round < rounds; ++round) {
          const bool reads = (thread + round) % 4 == 0;
          const LockAccess access = reads ? LockAccess::shared : LockAccess::exclusive;
          lock.lock(access);
          if (reads) {
            EXPECT_GE(sum, 0);
          } else {
            ++sum;
          }
          lock.unlock(access);
        }
      });
    }
  }
  EXPECT_EQ(sum, std::int64_t{threadCount} * rounds * 3 / 4);
  EXPECT_TRUE(lock.isFree());
}

TEST(FairSharedLock, IsFreeOnlyWhileUnheld) {
  FairSharedLock lock;
  for (const LockAccess access : {LockAccess::shared, LockAccess::exclusive}) {
    EXPECT_TRUE(lock.isFree());
    lock.lock(access);
    EXPECT_FALSE(lock.isFree());
    lock.unlock(access);
  }
  lock.lock(LockAccess::shared);
  lock.lock(LockAccess::shared);
  lock.unlock(LockAccess::shared);
  EXPECT_FALSE(lock.isFree());
  lock.unlock(LockAccess::shared);
  EXPECT_TRUE(lock.isFree());
}

}  // namespace
}  // namespace meridian
