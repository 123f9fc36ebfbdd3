/// \file
/// Checked reading of encoded documents: each function returns the value or throws a DecodingError with its place.
/// For example:
///
///     requireRecord(json, "", {"hours", "minutes"});
///     const std::int64_t hours = integerOf(memberOf(json, "", "hours"), "/hours");
///
/// `path` is always the JSON pointer of the value that is read.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/serialization/decoding_error.h"

namespace meridian::inline v0_2 {

/// Returns the JSON pointer of a member or element.
[[nodiscard]] std::string memberPath(const std::string& parent, std::string_view name);

/// Throws if the value does not have the expected type; `expected` names it, as in "a string".
template <typename Json>
void requireType(bool hasType, const Json& json, const std::string& path, std::string_view expected) {
  if (!hasType) throw DecodingError(path, "expected " + std::string(expected) + ", found " + json.type_name());
}

template <typename Json>
[[nodiscard]] const std::string& textOf(const Json& json, const std::string& path) {
  requireType(json.is_string(), json, path, "a string");
  return json.template get_ref<const std::string&>();
}

template <typename Json>
[[nodiscard]] bool booleanOf(const Json& json, const std::string& path) {
  requireType(json.is_boolean(), json, path, "a boolean");
  return json.template get<bool>();
}

template <typename Json>
[[nodiscard]] double numberOf(const Json& json, const std::string& path) {
  requireType(json.is_number(), json, path, "a number");
  return json.template get<double>();
}

/// Returns a signed 64-bit integer. JSON has one kind of number, so 25.0 is an integer too.
template <typename Json>
[[nodiscard]] std::int64_t integerOf(const Json& json, const std::string& path) {
  constexpr std::string_view expected = "an integer within 64 bits";
  requireType(json.is_number(), json, path, expected);
  if (json.is_number_unsigned()) {
    const auto number = json.template get<std::uint64_t>();
    if (number <= std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return static_cast<std::int64_t>(number);
  } else if (json.is_number_integer()) {
    return json.template get<std::int64_t>();
  } else {
    const auto number = json.template get<double>();
    const auto truncated = truncatedInteger(number);
    if (truncated && static_cast<double>(*truncated) == number) return *truncated;
  }
  throw DecodingError(path, "expected " + std::string(expected) + ", found " + json.dump());
}

/// Returns the member of a record; throws if it is missing.
template <typename Json>
[[nodiscard]] const Json& memberOf(const Json& record, const std::string& path, std::string_view name) {
  const auto found = record.find(name);
  if (found == record.end()) throw DecodingError(memberPath(path, name), "is missing");
  return *found;
}

template <typename Json>
void requireObject(const Json& json, const std::string& path) {
  requireType(json.is_object(), json, path, "an object");
}

/// Throws if the value is not an object or has a key other than these.
template <typename Json>
void requireRecord(const Json& json, const std::string& path, std::initializer_list<std::string_view> keys) {
  requireObject(json, path);
  for (const auto& [key, value] : json.items()) {
    if (std::ranges::find(keys, std::string_view(key)) == keys.end())
      throw DecodingError(memberPath(path, key), "is not a key of the record");
  }
}

}  // namespace meridian::inline v0_2
