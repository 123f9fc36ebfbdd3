/// \file
/// Encodes rationals, frame rates and timecode as JSON. The forms are:
///
///     NumericRational     {"numerator": 30000, "denominator": 1001}
///     MediaRational       29.97
///     VideoFrameRate      {"ntsc30p": {}}, {"custom": {"_0": 12.5}}
///     TimecodeComponents  {"hours": 1, "minutes": 2, "seconds": 3, "frames": 4, "isDropFrame": true}
///
/// The functions are those that nlohmann::json calls, within larger documents too:
///
///     const nlohmann::json json = VideoFrameRate::ntsc30p;
///     json.get<VideoFrameRate>();  // VideoFrameRate::ntsc30p
///
/// Decoding ignores unknown members and reads a member that is null as absent, so that data of a later
/// version or of another encoder can be read: {"p24": {}, "p30": null} is p24. It throws DecodingError, with the path
/// within the value, if a member is missing or has another type; the value is then unchanged.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/export.h"
#include "meridian/media/rational.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_frame_rate.h"
#include "meridian/serialization/coding_error.h"

namespace meridian::inline v0_2 {

MERIDIAN_API void to_json(nlohmann::json& json, const NumericRational& ratio);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const NumericRational& ratio);
MERIDIAN_API void from_json(const nlohmann::json& json, NumericRational& ratio);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, NumericRational& ratio);

/// Encodes the quotient. One that is not finite has no JSON text: it is written as null, which does not decode.
MERIDIAN_API void to_json(nlohmann::json& json, const MediaRational& ratio);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const MediaRational& ratio);
/// Decodes by `MediaRational::fromRawValue`: within a millionth of the encoded ratio, and generally with other terms.
/// Throws for a number that it has no ratio for, such as 0.
MERIDIAN_API void from_json(const nlohmann::json& json, MediaRational& ratio);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, MediaRational& ratio);

MERIDIAN_API void to_json(nlohmann::json& json, const VideoFrameRate& rate);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const VideoFrameRate& rate);
/// Decodes a custom rate as a custom rate, even if a standard rate has the same rational.
MERIDIAN_API void from_json(const nlohmann::json& json, VideoFrameRate& rate);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, VideoFrameRate& rate);

MERIDIAN_API void to_json(nlohmann::json& json, const TimecodeComponents& timecode);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TimecodeComponents& timecode);
MERIDIAN_API void from_json(const nlohmann::json& json, TimecodeComponents& timecode);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, TimecodeComponents& timecode);

}  // namespace meridian::inline v0_2
