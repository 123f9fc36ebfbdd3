/// \file
/// Carries out a planned transcode. For example:
///
///     const auto plan = planTranscode(explain(words));
///     if (!plan) return report(plan.error());
///     const auto result = transcode(*plan, {.progress = [](const TranscodeProgress& p) { show(p.portion); }});
///     if (!result) return report(result.error());
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/engine/media_description.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/engine/transcode_run_error.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// How far a transcode has come.
struct TranscodeProgress {
  /// Time of the output by its planned duration, from 0 to 1. Below 1 until the file has its name. 0 where the duration
  /// is not known.
  double portion = 0;
  /// Frames of the output that were encoded or copied; 0 without video.
  std::int64_t frame = 0;
  /// Frames that the output will have; absent if the sources do not state theirs.
  std::optional<std::int64_t> frames;
  /// Time of the output that was written, in seconds.
  double seconds = 0;
  /// Frames a second of the time since the beginning.
  double framesPerSecond = 0;
  /// Seconds of the output in a second of work: 2 is twice as fast as the clip plays.
  double speed = 0;
  /// Seconds that are left at this speed; absent until it is known.
  std::optional<double> secondsLeft;
  /// Bytes of the output so far.
  std::uint64_t bytes = 0;
};

/// What is left to the caller of a transcode.
struct TranscodeOptions {
  /// Goes on after damage and the early end of a source, which are warnings then.
  bool acceptsDamaged = false;
  /// Called about once in each interval, and once at the end, on a thread of the transcode, never twice at a time. It
  /// must not throw.
  std::function<void(const TranscodeProgress&)> progress = {};
  std::chrono::milliseconds interval{250};
  /// Is called, if set, with the size of the complete output and its number in its file system, right before it gets
  /// its name: a caller that writes them down recognises the output even if the process is killed a moment later.
  std::function<void(std::uint64_t size, std::uint64_t fileNumber)> beforePublishing = {};
  /// Ends the transcode with the error `interrupted` as soon as FFmpeg returns from its current frame.
  std::stop_token stop = {};
  /// Threads of each decoder and encoder; 0 for as many as the machine has cores.
  unsigned threads = 0;
};

/// What a transcode wrote.
struct TranscodeResult {
  /// As in the plan.
  std::string path;
  std::uint64_t bytes = 0;
  /// The written file as it was read back.
  MediaDescription output;
  /// Frames of the output; 0 without video.
  std::int64_t frames = 0;
  /// Duration of the output in seconds.
  double seconds = 0;
  /// Time from the call to the return, and CPU time of the process meanwhile.
  std::chrono::milliseconds elapsed{0};
  std::chrono::milliseconds cpuTime{0};
  std::vector<TranscodeRunWarning> warnings;
};

/// Carries out the plan and returns when the output is complete, on the disk and has its name, or with an error and no
/// file. Until then it has no name, or where a file system cannot do that a hidden one. What was promised is looked for
/// in the file before it gets its name. An existing file is replaced only if the plan says so, and stays until then.
/// Blocks, and starts threads of its own. Several calls may run at once.
[[nodiscard]] MERIDIAN_API Expected<TranscodeResult, TranscodeRunError> transcode(const TranscodePlan& plan,
                                                                                  const TranscodeOptions& options = {});

}  // namespace meridian::inline v0_2
