#include "tools/meridian/interruption.h"

#include <gtest/gtest.h>

#include <csignal>
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
