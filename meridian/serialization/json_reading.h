// How encoded documents are read: each value is checked, and a refusal names its place.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/serialization/decoding_error.h"

namespace meridian::inline v0_2 {

/// The JSON pointer of a member or element.
[[nodiscard]] std::string memberPath(const std::string& parent, std::string_view name);

template <typename Json>
[[noreturn]] void refuse(const std::string& path, std::string_view expected, const Json& found) {
  throw DecodingError(path, "expected " + std::string(expected) + ", found " + found.type_name());
}

template <typename Json>
[[nodiscard]] const std::string& textOf(const Json& json, const std::string& path) {
  if (!json.is_string()) refuse(path, "a string", json);
  return json.template get_ref<const std::string&>();
}

template <typename Json>
[[nodiscard]] bool booleanOf(const Json& json, const std::string& path) {
  if (!json.is_boolean()) refuse(path, "a boolean", json);
  return json.template get<bool>();
}

template <typename Json>
[[nodiscard]] double numberOf(const Json& json, const std::string& path) {
  if (!json.is_number()) refuse(path, "a number", json);
  return json.template get<double>();
}

/// A signed 64-bit integer. JSON has one kind of number, so 25.0 is one too.
template <typename Json>
[[nodiscard]] std::int64_t integerOf(const Json& json, const std::string& path) {
  if (json.is_number_unsigned()) {
    const auto number = json.template get<std::uint64_t>();
    if (number <= std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return static_cast<std::int64_t>(number);
  } else if (json.is_number_integer()) {
    return json.template get<std::int64_t>();
  } else if (json.is_number_float()) {
    const auto number = json.template get<double>();
    const auto truncated = truncatedInteger(number);
    if (truncated && static_cast<double>(*truncated) == number) return *truncated;
  }
  if (json.is_number()) throw DecodingError(path, "expected an integer within 64 bits, found " + json.dump());
  refuse(path, "an integer within 64 bits", json);
}

/// The member of a record; one that is missing is refused.
template <typename Json>
[[nodiscard]] const Json& memberOf(const Json& record, const std::string& path, std::string_view name) {
  const auto found = record.find(name);
  if (found == record.end()) throw DecodingError(memberPath(path, name), "is missing");
  return *found;
}

/// Refuses what is no record, and a record with a key other than these.
template <typename Json>
void requireRecordOf(const Json& json, const std::string& path, std::initializer_list<std::string_view> keys) {
  if (!json.is_object()) refuse(path, "an object", json);
  for (const auto& [key, value] : json.items()) {
    bool isKnown = false;
    for (const std::string_view known : keys) isKnown = isKnown || known == key;
    if (!isKnown) throw DecodingError(memberPath(path, key), "is none of the record's keys");
  }
}

}  // namespace meridian::inline v0_2
