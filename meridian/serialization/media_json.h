// The encoded forms of rationals, frame rates and timecode, as JSON.
//
//   NumericRational     {"numerator": 30000, "denominator": 1001}
//   MediaRational       29.97
//   VideoFrameRate      {"ntsc30p": {}}, {"custom": {"_0": 12.5}}
//   TimecodeComponents  {"hours": 1, "minutes": 2, "seconds": 3, "frames": 4, "isDropFrame": true}
//
// `nlohmann::json j = rate;` and `j.get<VideoFrameRate>()` work as for every other type, within larger documents too.
// Decoding throws DecodingError, with the path within the value, when the document has not exactly this shape, and
// then leaves the value as it was.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/export.h"
#include "meridian/media/rational.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_frame_rate.h"
#include "meridian/serialization/decoding_error.h"

namespace meridian::inline v0_2 {

MERIDIAN_API void to_json(nlohmann::json& json, const NumericRational& ratio);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const NumericRational& ratio);
MERIDIAN_API void from_json(const nlohmann::json& json, NumericRational& ratio);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, NumericRational& ratio);

/// The quotient alone. A quotient that is not finite has no JSON text: it is written as null, which does not decode.
MERIDIAN_API void to_json(nlohmann::json& json, const MediaRational& ratio);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const MediaRational& ratio);
/// By `MediaRational::fromRawValue`, so generally not the ratio that was encoded; a number that has no ratio there,
/// such as 0, is refused.
MERIDIAN_API void from_json(const nlohmann::json& json, MediaRational& ratio);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, MediaRational& ratio);

MERIDIAN_API void to_json(nlohmann::json& json, const VideoFrameRate& rate);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const VideoFrameRate& rate);
/// A custom rate stays one, even where the rational is that of a standard rate.
MERIDIAN_API void from_json(const nlohmann::json& json, VideoFrameRate& rate);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, VideoFrameRate& rate);

MERIDIAN_API void to_json(nlohmann::json& json, const TimecodeComponents& timecode);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TimecodeComponents& timecode);
MERIDIAN_API void from_json(const nlohmann::json& json, TimecodeComponents& timecode);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, TimecodeComponents& timecode);

}  // namespace meridian::inline v0_2
