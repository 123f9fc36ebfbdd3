/// \file
/// Encodes a planned transcode as JSON, whole: every member of the plan under its own name. For example:
///
///     const nlohmann::ordered_json json = plan;
///     json["video"]["steps"][0]["step"];  // "scale"
///
/// Rates and timecode have the forms of media_json.h, and ratios are objects with a numerator and a denominator. What
/// is absent is null. Codes of errors and warnings are their raw values. Texts are passed through: those that are not
/// valid UTF-8 need an error handler when the document is written.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/engine/transcode_error.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodePlan& plan);

/// Encodes an error or a warning: {"code": "outputExists", "place": "-out", "text": "is there already", "detail": ...,
/// "remedy": ..., "message": ...}, of which the message is all but the code.
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodePlanError& error);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodePlanWarning& warning);

}  // namespace meridian::inline v0_2
