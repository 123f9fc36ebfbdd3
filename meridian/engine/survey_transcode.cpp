#include "meridian/engine/survey_transcode.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "meridian/cli/transcode_flags.h"
#include "meridian/engine/creation_date.h"
#include "meridian/engine/error_clause.h"
#include "meridian/engine/image_sequence.h"
#include "meridian/engine/libav/text_drawing.h"
#include "meridian/engine/video_encoders.h"
#include "meridian/engine/watermark_file.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/lut/published_lut.h"
#include "meridian/platform/file_identity.h"
#include "meridian/platform/file_queries.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {
namespace {

const ExplainedSetting* settingOf(const TranscodeExplanation& words, std::string_view flag) {
  const auto found = std::ranges::find(words.settings, flag, &ExplainedSetting::flag);
  return found == words.settings.end() ? nullptr : &*found;
}

/// Returns the value of a flag; empty if it is not set.
std::string valueIn(const TranscodeExplanation& words, std::string_view flag) {
  const ExplainedSetting* const setting = settingOf(words, flag);
  return setting != nullptr ? setting->value : std::string();
}

bool hasAny(const TranscodeExplanation& words, std::initializer_list<std::string_view> flags) {
  return std::ranges::any_of(flags, [&words](std::string_view flag) { return settingOf(words, flag) != nullptr; });
}

/// Where an item is, or would be made, once all links are followed.
struct Location {
  FileIdentity directory;
  std::string name;

  friend bool operator==(const Location&, const Location&) = default;
};

std::optional<Location> locationOf(std::string path) {
  constexpr int mostLinks = 40;  // as Linux
  for (int count = 0; count < mostLinks; ++count) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::read_symlink(path, error);
    if (error) break;
    path = (std::filesystem::path(path).parent_path() / target).string();
  }
  const auto directory = targetIdentity(std::string(deletingLastPathComponent(path)));
  return directory ? std::optional(Location{*directory, std::string(lastPathComponent(path))}) : std::nullopt;
}

/// Returns the first of the files that is the item at the path, under whatever name; the path itself for an image of a
/// directory of them. Neither item has to be there.
std::optional<std::string> sameFileAs(const std::string& path, const std::vector<std::string>& files) {
  const auto identity = targetIdentity(path);
  const auto location = locationOf(path);
  const bool isImage = identity && location && isImageName(location->name);
  for (const std::string& file : files) {
    const auto other = targetIdentity(file);
    if (identity ? other == identity : !other && location && locationOf(file) == location) return file;
    if (isImage && other == location->directory) return path;
  }
  return std::nullopt;
}

/// Looks at the paths that are written to, beside the files that are read.
OutputState outputState(const TranscodeExplanation& words, std::vector<std::string> files) {
  OutputState state;
  const std::string output = valueIn(words, SAVOutputFileFlag.rawValue());
  if (!output.empty()) {
    const std::string directory(deletingLastPathComponent(output));
    std::error_code unknown;
    state.exists = nameIsTaken(output);
    state.isDirectory = pathIsDirectory(output);
    state.isSpecial = std::filesystem::is_other(output, unknown);
    state.sameSource = sameFileAs(output, files);
    state.directoryExists = pathIsDirectory(directory);
    const auto error = state.exists ? writableDirectoryError(directory) : newFileError(output);
    state.nameIsTooLong = error == std::errc::filename_too_long;
    state.directoryIsWritable = !error || state.nameIsTooLong;
  }
  const std::string workDirectory = valueIn(words, SAVWorkDirectoryFlag.rawValue());
  if (!workDirectory.empty()) state.workDirectoryIsUsable = !writableDirectoryError(workDirectory);
  const std::string progressFile = valueIn(words, SAVProgressFileFlag.rawValue());
  if (!progressFile.empty()) {
    const auto error = pathExists(progressFile) ? writableFileError(progressFile) : newFileError(progressFile);
    state.progressFileIsWritable = !error;
    if (!output.empty()) files.push_back(output);
    state.sameAsProgressFile = sameFileAs(progressFile, files);
  }
  return state;
}

/// Returns why the LUT cannot be used; absent if it can.
std::optional<std::string> lutErrorOf(const std::string& path) {
  const Url url = Url::fromFilePath(path);
  const auto published = readPublishedLut(url);
  if (published) return std::nullopt;
  if (published.error().code != LutErrorCode::noPublishedFormat) return clauseOf(published.error());
  const auto rows = ParsedLutFactory::parsing(url);
  return rows ? std::nullopt : std::optional(clauseOf(rows.error()));
}

/// Returns the machine's offset from UTC at the time of creation of the first source with an image, or else its last
/// change.
std::chrono::seconds utcOffset(const std::vector<Expected<MediaDescription, MediaError>>& media) {
  for (const auto& each : media) {
    if (!each || each->mainVideo() == nullptr) continue;
    const auto created = creationDateFrom(each->creationDate);
    const std::chrono::sys_seconds time = created ? created->time : each->modificationTime;
    const std::time_t seconds = time.time_since_epoch().count();
    std::tm local{};
    if (localtime_r(&seconds, &local) != nullptr) return std::chrono::seconds(local.tm_gmtoff);
  }
  return {};
}

}  // namespace

TranscodeSurvey surveyTranscode(const TranscodeExplanation& words, const EncoderInventory& inventory,
                                const DescriptionLimits& limits) {
  TranscodeSurvey survey;
  const std::vector<std::string> sources = words.arguments.inputFiles().value_or(std::vector<std::string>());
  survey.media.reserve(sources.size());
  for (const std::string& source : sources) survey.media.push_back(describeMedia(Url::fromFilePath(source), limits));

  TranscodeSurroundings& found = survey.surroundings;
  std::vector<std::string> files = sources;
  const std::string lut = valueIn(words, SAVColorLutFileFlag.rawValue());
  if (!lut.empty()) {
    found.lutError = lutErrorOf(lut);
    files.push_back(lut);
  }
  const ExplainedSetting* const watermark = settingOf(words, SAVWatermarkFileBurnFilePathFlag.rawValue());
  if (watermark != nullptr && !watermark->value.empty()) {
    found.watermark = findWatermark(watermark->writtenValue, watermark->value, limits);
    if (*found.watermark) files.push_back((*found.watermark)->path);
  }
  found.output = outputState(words, std::move(files));
  if (inventory.hasFilter("drawtext") &&
      hasAny(words, {SAVTimecodeAddBurnFlag.rawValue(), SAVWatermarkTextAddBurnFlag.rawValue()})) {
    found.hasFont = libav::textCanBeDrawn();
  }
  if (hasAny(words, {SAVVideoGPUDecodingFlag.rawValue(), SAVVideoGPUEncodingFlag.rawValue()})) {
    found.openDevices = openGpuDevices(inventory);
  }
  if (hasAny(words, {SAVTimecodeFromCreationDateFlag.rawValue()})) found.utcOffset = utcOffset(survey.media);
  return survey;
}

Expected<TranscodePlan, std::vector<TranscodePlanError>> planTranscode(const TranscodeExplanation& words,
                                                                       const DescriptionLimits& limits) {
  const EncoderInventory& inventory = encoderInventory();
  const TranscodeSurvey survey = surveyTranscode(words, inventory, limits);
  return planTranscode(words, survey.media, inventory, survey.surroundings);
}

std::vector<std::string> openGpuDevices(const EncoderInventory& inventory) {
  // Other kinds of devices, such as OpenCL, do not encode.
  const auto encodes = [](const std::string& kind) {
    return std::ranges::find(gpuEncoderRows, kind, &GpuEncoderRow::device) != std::ranges::end(gpuEncoderRows);
  };
  std::vector<std::string> open;
  std::ranges::copy_if(inventory.devices, std::back_inserter(open),
                       [&](const std::string& kind) { return encodes(kind) && deviceOpens(kind); });
  return open;
}

}  // namespace meridian::inline v0_2
