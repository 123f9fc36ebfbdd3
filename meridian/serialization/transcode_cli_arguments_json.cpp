#include "meridian/serialization/transcode_cli_arguments_json.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/serialization/json_reading.h"

namespace meridian::inline v0_2 {
namespace {

constexpr std::string_view lookupKey = "flagValueLookup";
constexpr std::string_view invalidKey = "invalidKeyValueLookup";
constexpr std::string_view orderKey = "orderedFlags";

void requireUtf8(std::string_view text, const std::string& parent, std::string_view name) {
  if (isValidUtf8(text)) return;
  throw EncodingError(memberPath(parent, name),
                      inQuotes(text) +
                          " is not valid UTF-8, which JSON cannot carry; store the words of the argument "
                          "vector instead, each with a NUL after it");
}

template <typename Json>
Json encodedDictionary(const TextDictionary& dictionary, const std::string& path) {
  typename Json::object_t object;
  for (const auto& [key, value] : dictionary) {
    requireUtf8(key, path, key);
    requireUtf8(value, path, key);
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
  requireType(json.is_object(), json, path, "an object");
  TextDictionary dictionary;
  dictionary.reserve(json.size());
  for (const auto& [key, value] : json.items()) {
    if (!value.is_null()) dictionary.set(key, textOf(value, memberPath(path, key)));
  }
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
  json[std::string(lookupKey)] = encodedDictionary<Json>(stored.flagValueLookup, memberPath("", lookupKey));
  if (stored.invalidKeyValueLookup) {
    json[std::string(invalidKey)] = encodedDictionary<Json>(*stored.invalidKeyValueLookup, memberPath("", invalidKey));
  }
  if (stored.orderedFlags) {
    const std::string path = memberPath("", orderKey);
    for (std::size_t place = 0; place < stored.orderedFlags->size(); ++place) {
      requireUtf8((*stored.orderedFlags)[place], path, std::to_string(place));
    }
    json[std::string(orderKey)] = *stored.orderedFlags;
  }
  return json;
}

template <typename Json>
TranscodeCliArguments decoded(const Json& json) {
  TranscodeCliArguments::Stored stored;
  stored.flagValueLookup = decodedDictionary(memberOf(json, "", lookupKey), memberPath("", lookupKey));
  if (const Json* const found = optionalMemberOf(json, "", invalidKey)) {
    stored.invalidKeyValueLookup = decodedDictionary(*found, memberPath("", invalidKey));
  }
  if (const Json* const found = optionalMemberOf(json, "", orderKey)) {
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
