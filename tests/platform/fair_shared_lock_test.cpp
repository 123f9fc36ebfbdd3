#include "meridian/platform/fair_shared_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

namespace meridian {
namespace {

// The number is plain, so that the thread sanitizer sees access that is not exclusive. A lost wake-up would hang.
TEST(FairSharedLock, ExcludesWritersAndWakesEveryWaiter) {
  constexpr int threadCount = 6;
  constexpr int rounds = 20000;
  FairSharedLock lock;
  int number = 0;
  std::atomic<int> writes = 0;
  std::atomic<int> readers = 0;
  const auto work = [&](unsigned seed) {
    std::mt19937 random(seed);
    for (int round = 0; round < rounds; ++round) {
      if (random() % 4 == 0) {
        lock.lock(LockAccess::exclusive);
        EXPECT_EQ(readers, 0);
        ++number;
        ++writes;
        lock.unlock(LockAccess::exclusive);
      } else {
        lock.lock(LockAccess::shared);
        ++readers;
        EXPECT_EQ(number, writes);
        --readers;
        lock.unlock(LockAccess::shared);
      }
    }
  };
  {
    std::vector<std::jthread> threads;
    for (unsigned seed = 0; seed < threadCount; ++seed) threads.emplace_back(work, seed);
  }
  EXPECT_EQ(number, writes);
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
