/// \file
/// Encodes a planned transcode as JSON, whole: every member of the plan under its own name. For example:
///
///     const nlohmann::ordered_json json = plan;
///     json["video"]["steps"][0]["step"];  // "scale"
///
/// Rates, ratios and timecode have the forms of media_json.h. What is absent is null. Codes of errors and warnings are
/// their raw values.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/engine/transcode_error.h"
#include "meridian/engine/transcode_plan.h"

namespace meridian::inline v0_2 {

void to_json(nlohmann::ordered_json& json, const TranscodePlan& plan);

/// Encodes an error or a warning: {"code": "outputExists", "place": "-out", "message": ...}.
void to_json(nlohmann::ordered_json& json, const TranscodePlanError& error);
void to_json(nlohmann::ordered_json& json, const TranscodePlanWarning& warning);

}  // namespace meridian::inline v0_2
