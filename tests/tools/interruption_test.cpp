#include "tools/meridian/interruption.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temporary_directory.h"

namespace meridian::command {
namespace {

TEST(RemovedOnInterruptionDeathTest, RemovesTheFilesThatExistThenAndEndsAsItWouldHave) {
  const test::TemporaryDirectory directory;
  const auto write = [&directory](const char* name) { return directory.write(name, "unfinished"); };
  const auto ended = [&](const auto& end) {
    const RemovedOnInterruption one(write("one"));
    const RemovedOnInterruption two(write("two"));
    {
      const RemovedOnInterruption finished(write("finished"));
    }
    end();
  };
  for (const int signal : {SIGTERM, SIGPIPE, SIGABRT, SIGSEGV, SIGBUS, SIGFPE}) {
    EXPECT_EXIT(ended([signal] { std::raise(signal); }), testing::KilledBySignal(signal), "");
    EXPECT_EXIT(ended([signal] { std::thread([signal] { std::raise(signal); }).join(); }),
                testing::KilledBySignal(signal), "");
    EXPECT_EQ(directory.names(), std::vector<std::string>{"finished"}) << signal;
  }
}

TEST(RemovedOnInterruptionDeathTest, NothingIsCreatedOnceTheProcessIsEnding) {
  // In a process in which nothing is registered yet, so that this function is called after the removal.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  static std::atomic<bool> isRegistered;
  const auto ended = [] {
    std::atexit([] {
      std::thread([] {
        const RemovedOnInterruption late("late");
        isRegistered = true;
      }).detach();
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      _exit(isRegistered ? 1 : 0);
    });
    {
      const RemovedOnInterruption early("early");
    }
    std::exit(2);
  };
  EXPECT_EXIT(ended(), testing::ExitedWithCode(0), "");
}

TEST(InterruptionsHeldDeathTest, DelaysASignalToTheEndOfTheScope) {
  const auto interrupted = [] {
    {
      const InterruptionsHeld held;
      std::raise(SIGTERM);
      std::cerr << "the work is done" << std::flush;
    }
    std::cerr << ", and more";
  };
  EXPECT_EXIT(interrupted(), testing::KilledBySignal(SIGTERM), "the work is done$");
}

}  // namespace
}  // namespace meridian::command
