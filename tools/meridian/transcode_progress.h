/// \file
/// Tells how far a transcode is: on a terminal, in a file, and in lines on standard output. For example:
///
///     TranscodeReport progress(plan.output, stop);
///     const auto result = transcode(plan, {.progress = [&](const auto& each) { progress.show(each); }});
///     progress.end(result);
#pragma once

#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/transcode.h"
#include "tools/meridian/progress_bar.h"
#include "tools/meridian/progress_file.h"

namespace meridian::command {

/// Returns what a person reads beside a bar: "61.2 fps  2.55x  0:27 left".
[[nodiscard]] std::string paceText(const TranscodeProgress& progress);

/// What a plan's output asks for, and a bar on standard error if that is a terminal.
class TranscodeReport {
 public:
  enum class Bar : bool { hidden, shown };

  /// Opens the progress file. Throws CommandError if that fails.
  TranscodeReport(const PlannedOutput& output, Bar bar, const std::stop_token& stop);

  void show(const TranscodeProgress& progress);

  /// Writes the last line of the file: "done", "failed" or "cancelled" with the error; clears the bar. With success the
  /// last line on standard output is that of the whole.
  void end(const Expected<TranscodeResult, TranscodeRunError>& result);

 private:
  void printPortion(double portion) const;

  std::optional<ProgressFile> file_;
  std::optional<std::string> prefix_;
  std::optional<ProgressBar> bar_;
  TranscodeProgress last_;
};

}  // namespace meridian::command
