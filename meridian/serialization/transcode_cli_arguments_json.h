// The encoded form of the transcoder command-line model, as JSON.
//
//   {
//     "flagValueLookup": {"-out": "/out/a.mov", "-overwrite": ""},
//     "invalidKeyValueLookup": {"-foo": "1"},
//     "orderedFlags": ["-overwrite", "-out"]
//   }
//
// The last two are left out when they are absent. `nlohmann::json j = arguments;` and `j.get<TranscodeCliArguments>()`
// work as for every other type. A `nlohmann::json` object keeps its members in byte order, an `ordered_json` object in
// the order of the store: decode from the latter where the order of the remainder matters. Parsing a text into an
// `ordered_json` takes time in proportion to the square of an object's members, though, so a store of thousands of
// inputs is better built with its order kept (in "orderedFlags") and decoded from a `nlohmann::json`.
#pragma once

#include <nlohmann/json.hpp>

#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/export.h"
#include "meridian/serialization/decoding_error.h"

namespace meridian::inline v0_2 {

/// Encodes the three stored properties as they are.
MERIDIAN_API void to_json(nlohmann::json& json, const TranscodeCliArguments& arguments);
MERIDIAN_API void to_json(nlohmann::ordered_json& json, const TranscodeCliArguments& arguments);

/// Decodes the three properties as they are, with nothing normalised or checked again. Throws DecodingError when the
/// document has not exactly the shape above; `arguments` is then unchanged.
MERIDIAN_API void from_json(const nlohmann::json& json, TranscodeCliArguments& arguments);
MERIDIAN_API void from_json(const nlohmann::ordered_json& json, TranscodeCliArguments& arguments);

}  // namespace meridian::inline v0_2
