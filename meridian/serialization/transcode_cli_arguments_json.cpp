#include "meridian/serialization/transcode_cli_arguments_json.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/serialization/json_reading.h"

namespace meridian::inline v0_2 {
namespace {

constexpr std::string_view lookupKey = "flagValueLookup";
constexpr std::string_view invalidKey = "invalidKeyValueLookup";
constexpr std::string_view orderKey = "orderedFlags";

template <typename Json>
Json encodedDictionary(const TextDictionary& dictionary) {
  typename Json::object_t object;
  for (const auto& [key, value] : dictionary) {
    // An ordered object compares a new key with all its members; the dictionary's keys are known to be distinct.
    if constexpr (std::is_same_v<Json, nlohmann::ordered_json>) {
      object.push_back({key, value});
    } else {
      object.emplace(key, value);
    }
  }
  return object;
}

template <typename Json>
TextDictionary decodedDictionary(const Json& json, const std::string& path) {
  requireObject(json, path);
  TextDictionary dictionary;
  dictionary.reserve(json.size());
  for (const auto& [key, value] : json.items()) dictionary.set(key, textOf(value, memberPath(path, key)));
  return dictionary;
}

template <typename Json>
std::vector<std::string> decodedList(const Json& json, const std::string& path) {
  requireType(json.is_array(), json, path, "an array");
  std::vector<std::string> list;
  list.reserve(json.size());
  for (const Json& element : json) list.push_back(textOf(element, memberPath(path, std::to_string(list.size()))));
  return list;
}

template <typename Json>
Json encoded(const TranscodeCliArguments& arguments) {
  const TranscodeCliArguments::Stored& stored = arguments.stored();
  Json json = Json::object();
  json[std::string(lookupKey)] = encodedDictionary<Json>(stored.flagValueLookup);
  if (stored.invalidKeyValueLookup) {
    json[std::string(invalidKey)] = encodedDictionary<Json>(*stored.invalidKeyValueLookup);
  }
  if (stored.orderedFlags) json[std::string(orderKey)] = *stored.orderedFlags;
  return json;
}

template <typename Json>
TranscodeCliArguments decoded(const Json& json) {
  requireRecord(json, "", {lookupKey, invalidKey, orderKey});
  TranscodeCliArguments::Stored stored;
  stored.flagValueLookup = decodedDictionary(memberOf(json, "", lookupKey), memberPath("", lookupKey));
  if (const auto found = json.find(invalidKey); found != json.end()) {
    stored.invalidKeyValueLookup = decodedDictionary(*found, memberPath("", invalidKey));
  }
  if (const auto found = json.find(orderKey); found != json.end()) {
    stored.orderedFlags = decodedList(*found, memberPath("", orderKey));
  }
  return TranscodeCliArguments::fromStored(std::move(stored));
}

}  // namespace

void to_json(nlohmann::json& json, const TranscodeCliArguments& arguments) {
  json = encoded<nlohmann::json>(arguments);
}

void to_json(nlohmann::ordered_json& json, const TranscodeCliArguments& arguments) {
  json = encoded<nlohmann::ordered_json>(arguments);
}

void from_json(const nlohmann::json& json, TranscodeCliArguments& arguments) { arguments = decoded(json); }

void from_json(const nlohmann::ordered_json& json, TranscodeCliArguments& arguments) { arguments = decoded(json); }

}  // namespace meridian::inline v0_2
