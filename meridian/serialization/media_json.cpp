#include "meridian/serialization/media_json.h"

#include <string>

#include "meridian/serialization/json_reading.h"

namespace meridian::inline v0_2 {
namespace {

template <typename Json>
Json encoded(const NumericRational& ratio) {
  return {{"numerator", ratio.numerator}, {"denominator", ratio.denominator}};
}

template <typename Json>
Json encoded(const MediaRational& ratio) {
  return ratio.rawValue();
}

template <typename Json>
Json encoded(const VideoFrameRate& rate) {
  Json payload = Json::object();
  if (rate.kind() == VideoFrameRateKind::custom) payload["_0"] = encoded<Json>(rate.rawValue());
  Json record = Json::object();
  record[std::string(rawValue(rate.kind()))] = std::move(payload);
  return record;
}

template <typename Json>
Json encoded(const TimecodeComponents& timecode) {
  return {{"hours", timecode.hours},
          {"minutes", timecode.minutes},
          {"seconds", timecode.seconds},
          {"frames", timecode.frames},
          {"isDropFrame", timecode.isDropFrame}};
}

template <typename Json>
std::int64_t integerMember(const Json& record, std::string_view name) {
  return integerOf(memberOf(record, "", name), memberPath("", name));
}

template <typename Json>
NumericRational decodedNumericRational(const Json& json) {
  return {integerMember(json, "numerator"), integerMember(json, "denominator")};
}

template <typename Json>
MediaRational decodedMediaRational(const Json& json, const std::string& path) {
  const auto ratio = MediaRational::fromRawValue(numberOf(json, path));
  if (!ratio) throw DecodingError(path, "expected a finite number other than 0 within 64 bits in millionths");
  return *ratio;
}

template <typename Json>
VideoFrameRate decodedVideoFrameRate(const Json& json) {
  const Json* payload = nullptr;
  VideoFrameRateKind kind{};
  for (const VideoFrameRateKind each : allCases<VideoFrameRateKind>()) {
    const Json* const member = optionalMemberOf(json, "", rawValue(each));
    if (member == nullptr) continue;
    if (payload != nullptr) throw DecodingError("", "Invalid number of keys found, expected one.");
    payload = member;
    kind = each;
  }
  if (payload == nullptr) throw DecodingError("", "Invalid number of keys found, expected one.");
  const std::string path = memberPath("", rawValue(kind));
  requireType(payload->is_object(), *payload, path, "an object");
  if (kind == VideoFrameRateKind::custom) {
    return VideoFrameRate::custom(decodedMediaRational(memberOf(*payload, path, "_0"), memberPath(path, "_0")));
  }
  return standardVideoFrameRates[static_cast<std::size_t>(kind)];
}

template <typename Json>
TimecodeComponents decodedTimecodeComponents(const Json& json) {
  return {integerMember(json, "hours"), integerMember(json, "minutes"), integerMember(json, "seconds"),
          integerMember(json, "frames"), booleanOf(memberOf(json, "", "isDropFrame"), "/isDropFrame")};
}

}  // namespace

void to_json(nlohmann::json& json, const NumericRational& ratio) { json = encoded<nlohmann::json>(ratio); }
void to_json(nlohmann::ordered_json& json, const NumericRational& ratio) {
  json = encoded<nlohmann::ordered_json>(ratio);
}
void from_json(const nlohmann::json& json, NumericRational& ratio) { ratio = decodedNumericRational(json); }
void from_json(const nlohmann::ordered_json& json, NumericRational& ratio) { ratio = decodedNumericRational(json); }

void to_json(nlohmann::json& json, const MediaRational& ratio) { json = encoded<nlohmann::json>(ratio); }
void to_json(nlohmann::ordered_json& json, const MediaRational& ratio) {
  json = encoded<nlohmann::ordered_json>(ratio);
}
void from_json(const nlohmann::json& json, MediaRational& ratio) { ratio = decodedMediaRational(json, ""); }
void from_json(const nlohmann::ordered_json& json, MediaRational& ratio) { ratio = decodedMediaRational(json, ""); }

void to_json(nlohmann::json& json, const VideoFrameRate& rate) { json = encoded<nlohmann::json>(rate); }
void to_json(nlohmann::ordered_json& json, const VideoFrameRate& rate) { json = encoded<nlohmann::ordered_json>(rate); }
void from_json(const nlohmann::json& json, VideoFrameRate& rate) { rate = decodedVideoFrameRate(json); }
void from_json(const nlohmann::ordered_json& json, VideoFrameRate& rate) { rate = decodedVideoFrameRate(json); }

void to_json(nlohmann::json& json, const TimecodeComponents& timecode) { json = encoded<nlohmann::json>(timecode); }
void to_json(nlohmann::ordered_json& json, const TimecodeComponents& timecode) {
  json = encoded<nlohmann::ordered_json>(timecode);
}
void from_json(const nlohmann::json& json, TimecodeComponents& timecode) { timecode = decodedTimecodeComponents(json); }
void from_json(const nlohmann::ordered_json& json, TimecodeComponents& timecode) {
  timecode = decodedTimecodeComponents(json);
}

}  // namespace meridian::inline v0_2
