#include "meridian/serialization/media_analysis_json.h"

#include <optional>
#include <system_error>

#include "meridian/base/numbers.h"
#include "meridian/platform/whole_file.h"
#include "meridian/serialization/deep_analysis_json.h"
#include "meridian/serialization/media_description_json.h"
#include "meridian/serialization/media_json.h"
#include "meridian/version.h"

namespace meridian::inline v0_2 {
namespace {

using AnalysisJson = nlohmann::ordered_json;

template <typename Value>
AnalysisJson valueOrNull(const std::optional<Value>& value) {
  return value ? AnalysisJson(*value) : AnalysisJson();
}

AnalysisJson encodedError(const std::optional<MediaAnalysisError>& error) {
  if (!error) return nullptr;
  return {{"code", codeOf(*error)}, {"message", messageOf(*error)}};
}

AnalysisJson encodedImage(const MediaAnalysisImage& image) {
  const auto& timecode = image.timecode;
  return {
      // The number as it was written, not the float's exact value as a double.
      {"location", AnalysisJson::parse(shortestDecimalText(image.location))},
      {"frame", valueOrNull(image.frame)},
      {"seconds", valueOrNull(image.seconds)},
      {"timecode", valueOrNull(timecode)},
      {"timecodeText", timecode ? AnalysisJson(timecode->timecodeString()) : AnalysisJson()},
      {"path", image.path},
      {"width", image.width},
      {"height", image.height},
  };
}

AnalysisJson encodedItem(const MediaAnalysisItem& item) {
  AnalysisJson json{{"path", item.path}, {"error", encodedError(item.error)}};
  if (item.description) json.update(AnalysisJson(*item.description));
  AnalysisJson images = AnalysisJson::array();
  for (const MediaAnalysisImage& image : item.images) images.push_back(encodedImage(image));
  json["images"] = std::move(images);
  json["deep"] = valueOrNull(item.deep);
  return json;
}

template <typename Warnings>
void appendWarnings(AnalysisJson& list, const Warnings& warnings) {
  for (const auto& warning : warnings) {
    list.push_back({{"code", rawValue(warning.code)}, {"message", warning.message()}});
  }
}

}  // namespace

void to_json(nlohmann::ordered_json& json, const MediaAnalysis& analysis) {
  AnalysisJson files = AnalysisJson::array();
  for (const MediaAnalysisItem& item : analysis.items) files.push_back(encodedItem(item));
  AnalysisJson warnings = AnalysisJson::array();
  appendWarnings(warnings, analysis.warnings);
  appendWarnings(warnings, analysis.lutWarnings);
  json = {{"schema", 1},
          {"tool", {{"version", versionText()}, {"libav", analysis.ffmpegVersion}}},
          {"analysisId", valueOrNull(analysis.analysisId)},
          {"files", std::move(files)},
          {"warnings", std::move(warnings)}};
}

Expected<void, MediaAnalysisBasicOptionsError> writeMediaAnalysis(const MediaAnalysis& analysis,
                                                                  const std::string& path) {
  using enum MediaAnalysisCLIError;
  const auto failure = [&path](std::error_code error) {
    const bool isTaken = error == std::errc::file_exists;
    return Unexpected(
        MediaAnalysisBasicOptionsError{.code = isTaken ? resultsFileAlreadyExists : resultsFilePathNotCreated,
                                       .place = path,
                                       .systemError = isTaken ? std::error_code() : error});
  };
  const std::string text =
      AnalysisJson(analysis).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
  auto file = WholeFile::create(path);
  if (!file) return failure(file.error());
  if (const auto error = file->write(text)) return failure(error);
  if (const auto error = file->publish()) return failure(error);
  return {};
}

}  // namespace meridian::inline v0_2
