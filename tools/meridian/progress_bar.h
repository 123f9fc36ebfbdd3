// How far a long piece of work has come, on standard error.
#pragma once

#include <chrono>
#include <string_view>

namespace meridian::command {

/// A line that is written over while the work goes on, and cleared at its end. Nothing is shown of work that takes
/// less than a second, and nothing where standard error is no terminal.
class ProgressBar {
 public:
  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ProgressBar(ProgressBar&&) = delete;
  ProgressBar& operator=(ProgressBar&&) = delete;
  ~ProgressBar();

  /// The step at work, and how much of it is done, from 0 to 1.
  void show(std::string_view step, double portion);

 private:
  using Clock = std::chrono::steady_clock;

  bool isTerminal_;
  bool isShown_ = false;
  Clock::time_point next_;
};

}  // namespace meridian::command
