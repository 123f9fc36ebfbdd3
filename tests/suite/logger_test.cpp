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
std::vector<std::string> noted;

struct NotingLogger : Logger {
  void log(LogLevel level, std::string_view message) override {
    const std::lock_guard lock(mutex_);
    noted.push_back(std::string(rawValue(level)) + ": " + std::string(message));
  }
  std::mutex& mutex_ = mutex;  // a member, gone with the object
};

struct LoggerThatLogsAsItGoes : NotingLogger {
  ~LoggerThatLogsAsItGoes() override { meridian::log(LogLevel::info, "MRD_TEST_D-", "gone"); }
};

class LoggerTest : public testing::Test {
 protected:
  LoggerTest() { noted.clear(); }
  ~LoggerTest() override { setLogger(nullptr); }
};

TEST_F(LoggerTest, EveryMessageReachesOneLoggerWhileLoggersAreReplaced) {
  setLogger(std::make_shared<NotingLogger>());
  std::atomic<int> running = 3;
  std::vector<std::thread> threads;
  std::vector<std::string> expected;
  for (const std::string name : {"one ", "two ", "three "}) {
    for (int i = 0; i < 1000; ++i) expected.push_back("info: MRD_TEST_A1-" + name + std::to_string(i));
    threads.emplace_back([name, &running] {
      for (int i = 0; i < 1000; ++i) log(LogLevel::info, "MRD_TEST_A1-", name + std::to_string(i));
      --running;
    });
    // The logger before goes as soon as nobody uses it any more.
    threads.emplace_back([&running] {
      while (running > 0) setLogger(std::make_shared<NotingLogger>());
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::ranges::sort(expected);
  std::ranges::sort(noted);
  EXPECT_EQ(noted, expected);
}

TEST_F(LoggerTest, NullBringsBackTheOneThatWritesAnEscapedLineToStandardError) {
  setLogger(std::make_shared<NotingLogger>());
  setLogger(nullptr);
  testing::internal::CaptureStderr();
  log(LogLevel::error, "MRD_TEST_B-", "clip\ninfo: forged\x1b[2J\xff");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "error: MRD_TEST_B-clip\\ninfo: forged\\x1b[2J\\xff\n");
  EXPECT_TRUE(noted.empty());
}

TEST_F(LoggerTest, OldLoggerMayLogAsItGoes) {
  setLogger(std::make_shared<LoggerThatLogsAsItGoes>());
  setLogger(std::make_shared<NotingLogger>());
  EXPECT_EQ(noted, std::vector<std::string>{"info: MRD_TEST_D-gone"});
}

}  // namespace
}  // namespace meridian
