/// \file
/// Encodes the results of an analysis as JSON, and writes them to a file. For example:
///
///     if (const auto written = writeMediaAnalysis(analysis, "/out/results.json"); !written) {
///       removeImages(analysis);
///       return report(written.error().message());
///     }
///
/// The document is {"schema": 1, "tool": {"version", "libav"}, "analysisId", "files": [...], "warnings": [...]}.
/// "files" has an object for each path, in the order of the paths: "path", "error" (null, or "code" and "message"),
/// what media_description_json.h encodes if the item is described, "images", and "deep", which deep_analysis_json.h
/// encodes. What is absent is null. Texts of media that are not valid UTF-8 need an error handler when the document is
/// written.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/engine/media_analysis.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

MERIDIAN_API void to_json(nlohmann::ordered_json& json, const MediaAnalysis& analysis);

/// Writes the document to a new file, which appears as a whole or not at all; U+FFFD replaces bytes that are not valid
/// UTF-8. Returns resultsFileAlreadyExists if any item has the name, and resultsFilePathNotCreated if the file cannot
/// be created or written.
[[nodiscard]] MERIDIAN_API Expected<void, MediaAnalysisBasicOptionsError> writeMediaAnalysis(
    const MediaAnalysis& analysis, const std::string& path);

}  // namespace meridian::inline v0_2
