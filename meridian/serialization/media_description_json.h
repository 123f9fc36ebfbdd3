/// \file
/// Encodes what is in a media file as JSON, as an analysis writes it. For example:
///
///     const nlohmann::ordered_json json = describeMedia(Url::fromFilePath("/card/A001.mov")).value();
///     json["video"][0]["frameRateText"]  // "29.97 FPS"
///     json["startTimecodeText"]          // "01:00:58;28"
///
/// Rates and timecodes have the forms of media_json.h, and ratios are objects with a numerator and a denominator, so
/// that nothing is rounded. What is absent is null. Texts of the file are passed through: those that are not valid
/// UTF-8 need an error handler when the document is written.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/engine/media_description.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

MERIDIAN_API void to_json(nlohmann::ordered_json& json, const MediaDescription& description);

}  // namespace meridian::inline v0_2
