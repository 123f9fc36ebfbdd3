/// \file
/// Builds the options that an application passes to the media-analysis tool. For example:
///
///     using Factory = MediaAnalysisCLIArgumentFactory;
///     const auto basic = Factory::buildBasicOptions({"/card/a.mov"}, "/tmp", "/out/a.json", std::nullopt, true);
///     const auto image = Factory::buildImageOptions({0.5F}, 1920, std::nullopt, false, std::nullopt);
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/cli/media_analysis_options.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Builds options for the analysis tool. Accepts every value; see `MediaAnalysisCLIOptions` for what checks them.
class MERIDIAN_API MediaAnalysisCLIArgumentFactory {
 public:
  class BasicOptions;
  class ImageOptions;
  class CustodialOptions;

  /// Builds what is analysed, and where the results go.
  [[nodiscard]] static BasicOptions buildBasicOptions(std::vector<std::string> pathsToAnalyze,
                                                      std::string workDirectory, std::string resultsFilePath,
                                                      std::optional<std::string> analysisId, bool deep);

  /// Builds options for images no wider than `maxImageWidth` pixels, with the media's own aspect ratio.
  [[nodiscard]] static ImageOptions buildImageOptions(std::vector<float> snapshotLocations, float maxImageWidth,
                                                      std::optional<float> compressionFactor, bool allowFinderImages,
                                                      std::optional<std::string> lutToApply);
  /// Builds options for images of this width and height in pixels.
  [[nodiscard]] static ImageOptions buildImageOptions(std::vector<float> snapshotLocations, float imageWidth,
                                                      float imageHeight, std::optional<float> compressionFactor,
                                                      bool allowFinderImages, std::optional<std::string> lutToApply);

  /// Builds the options that name the process that starts the tool.
  [[nodiscard]] static CustodialOptions custodialOptions(std::int32_t forParentProcessId);
};

/// Holds what is analysed, and where the results go.
class MERIDIAN_API MediaAnalysisCLIArgumentFactory::BasicOptions final : public BasicMediaAnalysisCLIOptions {
 public:
  BasicOptions(std::vector<std::string> pathsToAnalyze, std::optional<std::string> analysisId,
               std::string workDirectory, std::string resultsFilePath, bool deepAnalysis);

  [[nodiscard]] std::span<const std::string> pathsToAnalyze() const noexcept override { return pathsToAnalyze_; }
  [[nodiscard]] std::optional<std::string_view> analysisId() const noexcept override { return analysisId_; }
  [[nodiscard]] std::string_view workDirectory() const noexcept override { return workDirectory_; }
  [[nodiscard]] std::string_view resultsFilePath() const noexcept override { return resultsFilePath_; }
  [[nodiscard]] bool deepAnalysis() const noexcept override { return deepAnalysis_; }
  [[nodiscard]] const TextDictionary& flagValueLookup() const noexcept override { return lookup_; }

  MERIDIAN_API friend bool operator==(const BasicOptions& left, const BasicOptions& right) noexcept;

 private:
  std::vector<std::string> pathsToAnalyze_;
  std::optional<std::string> analysisId_;
  std::string workDirectory_;
  std::string resultsFilePath_;
  bool deepAnalysis_;
  TextDictionary lookup_;
};

/// Holds which still images are taken.
class MERIDIAN_API MediaAnalysisCLIArgumentFactory::ImageOptions final : public DistributedMediaAnalysisImageOptions {
 public:
  ImageOptions(std::vector<float> snapshotLocations, float maxImageWidth, std::optional<float> imageHeight,
               std::optional<float> compressionFactor, bool allowFinderImages, std::optional<std::string> lutToApply);

  [[nodiscard]] std::span<const float> snapshotLocations() const noexcept override { return snapshotLocations_; }
  [[nodiscard]] float maxImageWidth() const noexcept override { return maxImageWidth_; }
  [[nodiscard]] std::optional<float> imageHeight() const noexcept override { return imageHeight_; }
  [[nodiscard]] std::optional<float> compressionFactor() const noexcept override { return compressionFactor_; }
  [[nodiscard]] bool allowFinderImages() const noexcept override { return allowFinderImages_; }
  [[nodiscard]] std::optional<std::string_view> lutToApply() const noexcept override { return lutToApply_; }
  [[nodiscard]] const TextDictionary& flagValueLookup() const noexcept override { return lookup_; }

  MERIDIAN_API friend bool operator==(const ImageOptions& left, const ImageOptions& right) noexcept;

 private:
  std::vector<float> snapshotLocations_;
  float maxImageWidth_;
  std::optional<float> imageHeight_;
  std::optional<float> compressionFactor_;
  bool allowFinderImages_;
  std::optional<std::string> lutToApply_;
  TextDictionary lookup_;
};

/// Holds which application starts the tool.
class MERIDIAN_API MediaAnalysisCLIArgumentFactory::CustodialOptions final : public MediaAnalysisCLICustodialOptions {
 public:
  explicit CustodialOptions(std::optional<std::int32_t> parentPid,
                            std::optional<std::int32_t> parentAppNumber = std::nullopt);

  [[nodiscard]] std::optional<std::int32_t> parentPid() const noexcept override { return parentPid_; }
  [[nodiscard]] std::optional<std::int32_t> parentAppNumber() const noexcept override { return parentAppNumber_; }
  [[nodiscard]] const TextDictionary& flagValueLookup() const noexcept override { return lookup_; }

  MERIDIAN_API friend bool operator==(const CustodialOptions& left, const CustodialOptions& right) noexcept;

 private:
  std::optional<std::int32_t> parentPid_;
  std::optional<std::int32_t> parentAppNumber_;
  TextDictionary lookup_;
};

}  // namespace meridian::inline v0_2
