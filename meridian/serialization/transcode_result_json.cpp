#include "meridian/serialization/transcode_result_json.h"

#include <optional>

#include "meridian/serialization/media_description_json.h"

namespace meridian::inline v0_2 {
namespace {

using ResultJson = nlohmann::ordered_json;

ResultJson resultValueOrNull(const auto& value) { return value ? ResultJson(*value) : ResultJson(); }

ResultJson encodedNotice(const auto& notice) {
  return {{"code", rawValue(notice.code)},
          {"place", notice.place},
          {"detail", notice.detail},
          {"message", notice.message()}};
}

double secondsOfMilliseconds(std::chrono::milliseconds time) { return std::chrono::duration<double>(time).count(); }

}  // namespace

void to_json(ResultJson& json, const TranscodeProgress& progress) {
  json = {{"portion", progress.portion},
          {"frame", progress.frame},
          {"frames", resultValueOrNull(progress.frames)},
          {"seconds", progress.seconds},
          {"fps", progress.framesPerSecond},
          {"speed", progress.speed},
          {"eta", resultValueOrNull(progress.secondsLeft)},
          {"bytes", progress.bytes}};
}

void to_json(ResultJson& json, const TranscodeRunError& error) { json = encodedNotice(error); }
void to_json(ResultJson& json, const TranscodeRunWarning& warning) { json = encodedNotice(warning); }

void to_json(ResultJson& json, const TranscodeResult& result) {
  json = {{"path", result.path},
          {"bytes", result.bytes},
          {"frames", result.frames},
          {"seconds", result.seconds},
          {"elapsed", secondsOfMilliseconds(result.elapsed)},
          {"cpu", secondsOfMilliseconds(result.cpuTime)},
          {"warnings", result.warnings},
          {"output", result.output}};
}

}  // namespace meridian::inline v0_2
