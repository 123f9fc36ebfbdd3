/// \file
/// Keeps what FFmpeg says from the terminal. For example:
///
///     LogCollector log;
///     const int status = avformat_open_input(&input, nullptr, nullptr, nullptr);
///     if (status < 0) return damaged(log.firstError());
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace meridian::inline v0_2::libav {

/// Collects what FFmpeg says on this thread while it exists. Collectors of a thread nest; the innermost collects. The
/// first one replaces FFmpeg's log callback for the process and for good, since FFmpeg does not tell which it had: what
/// FFmpeg says on threads without a collector then goes where FFmpeg's own callback writes it, to standard error.
class LogCollector {
 public:
  LogCollector();
  LogCollector(const LogCollector&) = delete;
  LogCollector& operator=(const LogCollector&) = delete;
  LogCollector(LogCollector&&) = delete;
  LogCollector& operator=(LogCollector&&) = delete;
  ~LogCollector();

  /// Returns the first line of the level "error" or worse, without its newline, cut off where it is longer than 511
  /// bytes; empty if there is none.
  [[nodiscard]] std::string firstError() const { return std::string(firstError_.text()); }

  /// Returns what FFmpeg said first that it has not got, such as "unknown version 0"; empty if it said nothing of the
  /// kind. The view ends with the collector.
  [[nodiscard]] std::string_view missingFeature() const noexcept { return isMissing_ ? lastWarning_.text() : ""; }

  /// Takes a message of the log. FFmpeg's C calls it, so it allocates nothing.
  void take(int level, std::string_view message) const noexcept;

 private:
  /// The beginning of a line.
  class Line {
   public:
    [[nodiscard]] std::string_view text() const noexcept { return {bytes_.data(), size_}; }
    void assign(std::string_view text) noexcept { size_ = text.copy(bytes_.data(), bytes_.size()); }

   private:
    std::array<char, 511> bytes_{};
    std::size_t size_ = 0;
  };

  const LogCollector* outer_;
  // Written while FFmpeg runs, also in a collector that its owner only reads.
  mutable Line firstError_;
  mutable Line lastWarning_;
  mutable bool isMissing_ = false;
};

/// While one exists, what FFmpeg says without a context or as a converter, on a thread without a collector, is dropped:
/// decoders and filters of ours have threads of their own.
class QuietDecoding {
 public:
  QuietDecoding() noexcept;
  QuietDecoding(const QuietDecoding&) = delete;
  QuietDecoding& operator=(const QuietDecoding&) = delete;
  QuietDecoding(QuietDecoding&&) = delete;
  QuietDecoding& operator=(QuietDecoding&&) = delete;
  ~QuietDecoding();
};

}  // namespace meridian::inline v0_2::libav
