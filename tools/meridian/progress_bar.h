/// \file
/// Shows on standard error how far a long task has come. For example:
///
///     ProgressBar bar;
///     for (int done = 0; done < 1000; ++done) bar.show(std::to_string(done) + " of 1000 images", done / 1000.0);
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

namespace meridian::command {

/// A line that is rewritten while the task goes on, and cleared at its end. Nothing is shown of a task that takes less
/// than a second, or if standard error is not a terminal.
class ProgressBar {
 public:
  /// How many columns the line has beside the text of the step; the terminal's last one stays free.
  static constexpr std::size_t columns = 49;

  ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ProgressBar(ProgressBar&&) = delete;
  ProgressBar& operator=(ProgressBar&&) = delete;
  ~ProgressBar();

  /// Shows the current step and how much of it is done, from 0 to 1.
  void show(std::string_view step, double portion);

  /// Clears the line, so that something else can be printed; the next `show` brings it back.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  bool isTerminal_;
  bool isShown_ = false;
  Clock::time_point next_;
};

}  // namespace meridian::command
