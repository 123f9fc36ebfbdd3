/// \file
/// Encodes the model of the transcoder's command line as JSON. The form is:
///
///     {
///       "flagValueLookup": {"-out": "/out/a.mov", "-overwrite": ""},
///       "invalidKeyValueLookup": {"-foo": "1"},
///       "orderedFlags": ["-overwrite", "-out"]
///     }
///
/// The last two are omitted if they are absent. The functions are those that nlohmann::json calls:
///
///     const nlohmann::json json = arguments;
///     json.get<TranscodeCliArguments>();  // equal to arguments
///
/// A `nlohmann::json` object keeps its members in byte order, an `ordered_json` object in the order of the store:
/// decode from the latter if the order of flags that "orderedFlags" does not list matters. But nlohmann::json parses an
/// `ordered_json` object in quadratic time, so for thousands of inputs keep the order in "orderedFlags" and decode from
/// a `nlohmann::json`.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/export.h"
#include "meridian/serialization/coding_error.h"

namespace meridian::inline v0_2 {

/// Encodes the three stored properties unchanged. JSON cannot carry texts that are not valid UTF-8: throws
/// EncodingError with the path of the first such flag or value, and `json` is then unchanged. To keep these bytes,
/// store the elements of `commandLine()` as they are, each with a NUL after it.
MERIDIAN_API void to_json(nlohmann::json& json, const TranscodeCliArguments& arguments);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodeCliArguments& arguments);

/// Decodes the three properties without normalising or checking them again. Ignores unknown members and
/// reads null, also as the value of a flag, as absent. Throws DecodingError if "flagValueLookup" is missing or anything
/// has another type; `arguments` is then unchanged.
MERIDIAN_API void from_json(const nlohmann::json& json, TranscodeCliArguments& arguments);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, TranscodeCliArguments& arguments);

}  // namespace meridian::inline v0_2
