#include "meridian/cli/media_analysis_argument_factory.h"

#include <utility>

namespace meridian::inline v0_2 {

using Factory = MediaAnalysisCLIArgumentFactory;

Factory::BasicOptions::BasicOptions(std::vector<std::string> pathsToAnalyze, std::optional<std::string> analysisId,
                                    std::string workDirectory, std::string resultsFilePath, bool deepAnalysis)
    : pathsToAnalyze_(std::move(pathsToAnalyze)),
      analysisId_(std::move(analysisId)),
      workDirectory_(std::move(workDirectory)),
      resultsFilePath_(std::move(resultsFilePath)),
      deepAnalysis_(deepAnalysis),
      lookup_(dictionaryOfArguments()) {}

// The lookup follows from the other members.
bool operator==(const Factory::BasicOptions& left, const Factory::BasicOptions& right) noexcept {
  return left.pathsToAnalyze_ == right.pathsToAnalyze_ && left.analysisId_ == right.analysisId_ &&
         left.workDirectory_ == right.workDirectory_ && left.resultsFilePath_ == right.resultsFilePath_ &&
         left.deepAnalysis_ == right.deepAnalysis_;
}

Factory::ImageOptions::ImageOptions(std::vector<float> snapshotLocations, float maxImageWidth,
                                    std::optional<float> imageHeight, std::optional<float> compressionFactor,
                                    bool allowFinderImages, std::optional<std::string> lutToApply)
    : snapshotLocations_(std::move(snapshotLocations)),
      maxImageWidth_(maxImageWidth),
      imageHeight_(imageHeight),
      compressionFactor_(compressionFactor),
      allowFinderImages_(allowFinderImages),
      lutToApply_(std::move(lutToApply)),
      lookup_(dictionaryOfArguments()) {}

bool operator==(const Factory::ImageOptions& left, const Factory::ImageOptions& right) noexcept {
  return left.snapshotLocations_ == right.snapshotLocations_ && left.maxImageWidth_ == right.maxImageWidth_ &&
         left.imageHeight_ == right.imageHeight_ && left.compressionFactor_ == right.compressionFactor_ &&
         left.allowFinderImages_ == right.allowFinderImages_ && left.lutToApply_ == right.lutToApply_;
}

Factory::CustodialOptions::CustodialOptions(std::optional<std::int32_t> parentPid,
                                            std::optional<std::int32_t> parentAppNumber)
    : parentPid_(parentPid), parentAppNumber_(parentAppNumber), lookup_(dictionaryOfArguments()) {}

bool operator==(const Factory::CustodialOptions& left, const Factory::CustodialOptions& right) noexcept {
  return left.parentPid_ == right.parentPid_ && left.parentAppNumber_ == right.parentAppNumber_;
}

Factory::BasicOptions Factory::buildBasicOptions(std::vector<std::string> pathsToAnalyze, std::string workDirectory,
                                                 std::string resultsFilePath, std::optional<std::string> analysisId,
                                                 bool deep) {
  return {std::move(pathsToAnalyze), std::move(analysisId), std::move(workDirectory), std::move(resultsFilePath), deep};
}

Factory::ImageOptions Factory::buildImageOptions(std::vector<float> snapshotLocations, float maxImageWidth,
                                                 std::optional<float> compressionFactor, bool allowFinderImages,
                                                 std::optional<std::string> lutToApply) {
  return {std::move(snapshotLocations), maxImageWidth, std::nullopt, compressionFactor, allowFinderImages,
          std::move(lutToApply)};
}

Factory::ImageOptions Factory::buildImageOptions(std::vector<float> snapshotLocations, float imageWidth,
                                                 float imageHeight, std::optional<float> compressionFactor,
                                                 bool allowFinderImages, std::optional<std::string> lutToApply) {
  return {std::move(snapshotLocations), imageWidth, imageHeight, compressionFactor, allowFinderImages,
          std::move(lutToApply)};
}

Factory::CustodialOptions Factory::custodialOptions(std::int32_t forParentProcessId) {
  return CustodialOptions(forParentProcessId);
}

}  // namespace meridian::inline v0_2
