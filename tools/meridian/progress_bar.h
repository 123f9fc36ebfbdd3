// Shows on standard error how far a long task has come.
#pragma once

#include <chrono>
#include <string_view>

namespace meridian::command {

/// A line that is rewritten while the task goes on, and cleared at its end. Nothing is shown of a task that takes less
/// than a second, or if standard error is not a terminal.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ProgressBar(ProgressBar&&) = delete;
  ProgressBar& operator=(ProgressBar&&) = delete;
  ~ProgressBar();

  /// Shows the current step and how much of it is done, from 0 to 1.
  void show(std::string_view step, double portion);

 private:
  using Clock = std::chrono::steady_clock;

  bool isTerminal_;
  bool isShown_ = false;
  Clock::time_point next_;
};

}  // namespace meridian::command
