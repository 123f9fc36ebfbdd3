#include "tools/meridian/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <string>
#include <utility>

#include "tools/meridian/terminal.h"

namespace meridian::command {

ProgressBar::ProgressBar()
    : isTerminal_(standardErrorIsRewritable()), next_(Clock::now() + std::chrono::milliseconds(1000)) {}

ProgressBar::~ProgressBar() { clear(); }

void ProgressBar::clear() {
  if (std::exchange(isShown_, false)) std::cerr << "\r\x1b[K" << std::flush;
}

void ProgressBar::show(std::string_view step, double portion) {
  constexpr std::size_t length = columns - std::string_view(" [] 100% ").size();
  if (!isTerminal_ || Clock::now() < next_) return;
  next_ = Clock::now() + std::chrono::milliseconds(100);
  isShown_ = true;
  const double bounded = std::clamp(portion, 0.0, 1.0);
  const auto filled = static_cast<std::size_t>(std::lround(bounded * static_cast<double>(length)));
  std::cerr << "\r\x1b[K" << step << " [" << std::string(filled, '#') << std::string(length - filled, '.') << "] "
            << std::lround(bounded * 100) << '%' << std::flush;
}

}  // namespace meridian::command
