#include "meridian/platform/process_watch.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <limits>
#include <system_error>
#include <thread>

#ifdef __has_feature
#define MERIDIAN_HAS_FEATURE(name) __has_feature(name)
#else
#define MERIDIAN_HAS_FEATURE(name) 0
#endif

namespace meridian {
namespace {

/// Starts a process that waits until it is killed.
pid_t waitingProcess() {
  const pid_t process = fork();
  if (process == 0) {
    pause();
    _exit(0);
  }
  return process;
}

TEST(ProcessWatch, CallsOnceWhenTheProcessEnds) {
  const pid_t process = waitingProcess();
  std::atomic<int> calls = 0;
  {
    const ProcessWatch watch(process, [&] { ++calls; });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(calls, 0);
    kill(process, SIGKILL);
    for (int waited = 0; calls == 0 && waited < 10'000; ++waited)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(calls, 1);
  // It has ended and is not yet collected, and then it is not there any more.
  bool isCalled = false;
  {
    const ProcessWatch watch(process, [&] { isCalled = true; });
    EXPECT_TRUE(isCalled);
  }
  waitpid(process, nullptr, 0);
  for (const std::int32_t gone :
       {static_cast<std::int32_t>(process), 0, -1, std::numeric_limits<std::int32_t>::max()}) {
    isCalled = false;
    const ProcessWatch watch(gone, [&] { isCalled = true; });
    EXPECT_TRUE(isCalled) << gone;
  }
}

TEST(ProcessWatch, ClosesWhatItOpenedIfThereIsNoRoomForAnotherDescriptor) {
#if MERIDIAN_HAS_FEATURE(undefined_behavior_sanitizer)
  GTEST_SKIP() << "the sanitizer opens descriptors of its own";
#endif
  const int next = dup(STDERR_FILENO);
  close(next);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  // One more, where two are needed.
  const rlimit tight{static_cast<rlim_t>(next) + 1, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &tight), 0);
  EXPECT_THROW(ProcessWatch(getpid(), [] {}), std::system_error);
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(dup(STDERR_FILENO), next);
  close(next);
}

TEST(ProcessWatch, IsSilentAfterItsEnd) {
  const pid_t process = waitingProcess();
  std::atomic<int> calls = 0;
  for (int each = 0; each < 100; ++each) const ProcessWatch watch(process, [&] { ++calls; });
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace meridian
