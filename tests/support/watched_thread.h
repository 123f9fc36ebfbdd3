/// \file
/// A thread that a test can observe going to sleep, so that threads arrive in a known order.
#pragma once

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>

namespace meridian::test {

/// Runs the work, and is joined by its destructor.
class WatchedThread {
 public:
  explicit WatchedThread(std::function<void()> work)
      : thread_([this, work = std::move(work)] {
          id_ = gettid();
          work();
          isDone_ = true;
        }) {}

  /// Returns true once the thread sleeps, which means that it waits for another one; false if its work is done first.
  bool waitUntilAsleep() {
    int timesAsleep = 0;
    while (timesAsleep < 5) {  // a brief sleep does not count
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      if (isDone_) return false;
      timesAsleep = isAsleep() ? timesAsleep + 1 : 0;
    }
    return true;
  }

 private:
  [[nodiscard]] bool isAsleep() const {
    std::ifstream file("/proc/self/task/" + std::to_string(id_) + "/stat");
    std::string text;
    std::getline(file, text);
    return id_ != 0 && text.substr(text.rfind(')') + 1).starts_with(" S");
  }

  std::atomic<pid_t> id_ = 0;
  std::atomic<bool> isDone_ = false;
  std::jthread thread_;
};

}  // namespace meridian::test
