#include "tools/meridian/interruption.h"

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>

namespace meridian::command {
namespace {

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
