/// \file
/// Encodes a deep analysis as JSON. For example:
///
///     nlohmann::ordered_json(*deep)["video"]["black"][0]["end"]   // 2.5
///
/// {"assumedRate", "video", "audio": [...], "errors": [{"seconds", "track", "message"}], "errorCount"}. "video", null
/// without images, has "frameCount", "seconds", "shortestFrame", "longestFrame", "isVariable", "black", "frozen",
/// "sceneChanges", "fields", "luma" and "md5"; each of "audio" has "track", "sampleCount", "start", "seconds",
/// "silent", "loudness" and "md5". Times are seconds, intervals have "start" and "end", and what is absent is null.
/// Curves and the filmstrip are left out.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/engine/deep_analysis.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

MERIDIAN_API void to_json(nlohmann::ordered_json& json, const DeepAnalysis& deep);

}  // namespace meridian::inline v0_2
