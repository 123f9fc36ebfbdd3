/// \file
/// Keeps what FFmpeg says from the terminal. For example:
///
///     LogCollector log;
///     const int status = avformat_open_input(&input, nullptr, nullptr, nullptr);
///     if (status < 0) return damaged(log.firstError());
#pragma once

#include <string>
#include <string_view>

namespace meridian::inline v0_2::libav {

/// Collects what FFmpeg says on this thread while it exists. Collectors of a thread nest; the innermost collects. What
/// FFmpeg says on threads without a collector is printed as FFmpeg prints it, since it is the application's.
class LogCollector {
 public:
  LogCollector();
  LogCollector(const LogCollector&) = delete;
  LogCollector& operator=(const LogCollector&) = delete;
  LogCollector(LogCollector&&) = delete;
  LogCollector& operator=(LogCollector&&) = delete;
  ~LogCollector();

  /// Returns the first line of the level "error" or worse, without its newline; empty if there is none.
  [[nodiscard]] const std::string& firstError() const noexcept { return firstError_; }

  /// Takes a message of the log.
  void take(int level, std::string_view message);

 private:
  LogCollector* outer_;
  std::string firstError_;
};

}  // namespace meridian::inline v0_2::libav
