/// \file
/// Checked reading of encoded documents: each function returns the value or throws a DecodingError with its place.
/// For example:
///
///     const std::int64_t hours = integerOf(memberOf(json, "", "hours"), "/hours");
///
/// Unknown members are ignored, so that a record of a later version can be read.
/// `path` is always the JSON pointer of the value that is read.
#pragma once

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/serialization/coding_error.h"

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

/// Returns the member of a record, which must be an object; null if there is none or if the member is null.
template <typename Json>
[[nodiscard]] const Json* optionalMemberOf(const Json& record, const std::string& path, std::string_view name) {
  requireType(record.is_object(), record, path, "an object");
  const auto found = record.find(name);
  return found == record.end() || found->is_null() ? nullptr : &*found;
}

/// Returns the member of a record, which must be an object; throws if it is missing or null.
template <typename Json>
[[nodiscard]] const Json& memberOf(const Json& record, const std::string& path, std::string_view name) {
  const Json* const found = optionalMemberOf(record, path, name);
  if (found == nullptr) throw DecodingError(memberPath(path, name), "is missing");
  return *found;
}

}  // namespace meridian::inline v0_2
