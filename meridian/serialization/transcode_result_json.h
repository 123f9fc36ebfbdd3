/// \file
/// Encodes what a transcode tells and writes as JSON. For example:
///
///     nlohmann::ordered_json line = progress;   // {"portion":0.42,"frame":1234,"frames":2938,"seconds":51.5, ...}
///     line["state"] = "running";
///
/// Progress is {"portion", "frame", "frames", "seconds", "fps", "speed", "eta", "bytes"}: the part of the whole from 0
/// to 1, frames of the output, seconds of the output, frames a second, seconds of the output in a second, seconds that
/// are left, and bytes. A result is {"path", "bytes", "frames", "seconds", "elapsed", "cpu", "warnings", "output"},
/// with the times in seconds and the output as media_description_json.h encodes it. Errors and warnings are {"code",
/// "place", "detail", "message"}. What is absent is null. Paths that are not valid UTF-8 need an error handler when the
/// document is written.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/engine/transcode.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodeProgress& progress);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodeRunError& error);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodeRunWarning& warning);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodeResult& result);

}  // namespace meridian::inline v0_2
