/// \file
/// Parses a JSON document from outside strictly and in linear time. For example:
///
///     parseStrictJson(R"(["-out", "a.mov"])")->size();  // 2
///     parseStrictJson(R"({"-vr": "25", "-vr": "24"})").error().code;  // repeatedMember
#pragma once

#include <string_view>

#include "meridian/base/expected.h"
#include "tools/meridian/output.h"
#include "tools/meridian/vector_input_error.h"

namespace meridian::command {

/// Returns the document, with the members of objects in their order. Fails for text that is not JSON, for an object
/// that has a member twice, for a NUL in a text, and for more than 64 levels of lists and objects. The line of an error
/// is counted from `firstLine`.
[[nodiscard]] Expected<Json, VectorInputError> parseStrictJson(std::string_view text, std::size_t firstLine = 1);

}  // namespace meridian::command
