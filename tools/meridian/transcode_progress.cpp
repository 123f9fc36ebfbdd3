#include "tools/meridian/transcode_progress.h"

#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/base/numbers.h"
#include "meridian/serialization/transcode_result_json.h"

namespace meridian::command {

std::string paceText(const TranscodeProgress& progress) {
  std::string text;
  if (progress.frame > 0) text += fixedDecimalText(progress.framesPerSecond, 1) + " fps  ";
  text += fixedDecimalText(progress.speed, 2) + "x";
  if (!progress.secondsLeft) return text;
  const auto seconds = std::llround(*progress.secondsLeft);
  const auto twoDigits = [](long long number) { return (number < 10 ? "0" : "") + std::to_string(number); };
  const std::string minutes = seconds >= 3600 ? std::to_string(seconds / 3600) + ":" + twoDigits(seconds / 60 % 60)
                                              : std::to_string(seconds / 60);
  return text + "  " + minutes + ":" + twoDigits(seconds % 60) + " left";
}

TranscodeReport::TranscodeReport(const PlannedOutput& output, Bar bar, const std::stop_token& stop)
    : prefix_(output.progressPrefix) {
  if (!output.progressFile.empty()) file_.emplace(output.progressFile, stop);
  // Lines on the same terminal would break the bar.
  if (bar == Bar::shown && !prefix_) bar_.emplace();
}

void TranscodeReport::show(const TranscodeProgress& progress) {
  last_ = progress;
  // The last line says that the file has its name.
  if (progress.portion >= 1) return;
  if (bar_) bar_->show(paceText(progress), progress.portion);
  if (prefix_) printPortion(progress.portion);
  if (!file_) return;
  nlohmann::ordered_json line{{"state", "running"}};
  line.update(nlohmann::ordered_json(progress));
  file_->write(line);
}

void TranscodeReport::end(const Expected<TranscodeResult, TranscodeRunError>& result) {
  if (bar_) bar_->clear();
  if (result && prefix_) printPortion(1);
  if (!file_) return;
  const char* state = "done";
  if (!result) state = result.error().code == TranscodeRunErrorCode::interrupted ? "cancelled" : "failed";
  nlohmann::ordered_json line{{"state", state}};
  line.update(nlohmann::ordered_json(last_));
  line["error"] = result ? nlohmann::ordered_json() : nlohmann::ordered_json(result.error());
  file_->write(line);
}

void TranscodeReport::printPortion(double portion) const {
  // In one piece, since jobs that run side by side print theirs too.
  std::cout << (*prefix_ + fixedDecimalText(portion, 4) + '\n') << std::flush;
}

}  // namespace meridian::command
