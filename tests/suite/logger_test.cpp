#include "meridian/suite/logger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace meridian {
namespace {

std::mutex mutex;
std::vector<std::string> recorded;

struct RecordingLogger : Logger {
  void log(LogLevel level, std::string_view message) override {
    const std::lock_guard lock(mutex_);
    recorded.push_back(std::string(rawValue(level)) + ": " + std::string(message));
  }
  std::mutex& mutex_ = mutex;  // a member, so that the sanitizers see the use of a destroyed logger
};

struct LoggerThatLogsInItsDestructor : RecordingLogger {
  ~LoggerThatLogsInItsDestructor() override { meridian::log(LogLevel::info, "MRD_TEST_D-", "destroyed"); }
};

class LoggerTest : public testing::Test {
 protected:
  LoggerTest() { recorded.clear(); }
  ~LoggerTest() override { setLogger(nullptr); }
};

TEST_F(LoggerTest, EveryMessageReachesOneLoggerWhileLoggersAreReplaced) {
  setLogger(std::make_shared<RecordingLogger>());
  std::atomic<int> running = 3;
  std::vector<std::thread> threads;
  std::vector<std::string> expected;
  for (const std::string name : {"one ", "two ", "three "}) {
    for (int i = 0; i < 1000; ++i) expected.push_back("info: MRD_TEST_A1-" + name + std::to_string(i));
    threads.emplace_back([name, &running] {
      for (int i = 0; i < 1000; ++i) log(LogLevel::info, "MRD_TEST_A1-", name + std::to_string(i));
      --running;
    });
    // The replaced logger is destroyed once no thread uses it.
    threads.emplace_back([&running] {
      while (running > 0) setLogger(std::make_shared<RecordingLogger>());
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::ranges::sort(expected);
  std::ranges::sort(recorded);
  EXPECT_EQ(recorded, expected);
}

TEST_F(LoggerTest, NullRestoresTheLoggerThatWritesEscapedLinesToStandardError) {
  setLogger(std::make_shared<RecordingLogger>());
  setLogger(nullptr);
  testing::internal::CaptureStderr();
  log(LogLevel::error, "MRD_TEST_B-", "clip\ninfo: forged\x1b[2J\xff");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: MRD_TEST_B-clip\\ninfo: forged\\x1b[2J\\xff\n");
  EXPECT_TRUE(recorded.empty());
}

TEST_F(LoggerTest, AReplacedLoggerMayLogInItsDestructor) {
  setLogger(std::make_shared<LoggerThatLogsInItsDestructor>());
  setLogger(std::make_shared<RecordingLogger>());
  EXPECT_EQ(recorded, std::vector<std::string>{"info: MRD_TEST_D-destroyed"});
}

}  // namespace
}  // namespace meridian
