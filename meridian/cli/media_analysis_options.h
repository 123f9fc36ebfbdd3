/// \file
/// The options of the media-analysis tool as interfaces, each of which renders its argument vector. For example:
///
///     for (const std::string& word : options.commandLineArguments()) std::cout << word << '\n';
///     // -pathToAnalyze, /card/a.mov, -workDirectory, /tmp, -resultsFilePath, /out/a.json, -deepAnalysis
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/cli/cli_argument_store.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Options of the analysis tool. They may hold anything: `warningsOfWriting` finds what a command line cannot carry,
/// and `errorsOf` what the tool cannot work with.
class MERIDIAN_API MediaAnalysisCLIOptions : public CliArgumentStore {
 public:
  /// Receives a flag and its value, or none. The texts are valid during the call only.
  using ArgumentBlock = FunctionRef<void(std::string_view flag, std::optional<std::string_view> value)>;

  ~MediaAnalysisCLIOptions() override;

  /// Calls the block with each flag in the order of the argument vector, once for each value of a flag that repeats.
  virtual void enumerateArguments(ArgumentBlock block) const = 0;

  /// Returns the argument vector, without a program path. A flag without a value is one element, not two.
  [[nodiscard]] std::vector<std::string> commandLineArguments() const override;

 protected:
  MediaAnalysisCLIOptions() = default;
  MediaAnalysisCLIOptions(const MediaAnalysisCLIOptions&) = default;
  MediaAnalysisCLIOptions& operator=(const MediaAnalysisCLIOptions&) = default;
  MediaAnalysisCLIOptions(MediaAnalysisCLIOptions&&) = default;
  MediaAnalysisCLIOptions& operator=(MediaAnalysisCLIOptions&&) = default;

  /// Returns the arguments as a dictionary in the same order: a flag that repeats has its first place and its last
  /// value.
  [[nodiscard]] TextDictionary dictionaryOfArguments() const;
};

/// What is analysed, and where the results go.
class MERIDIAN_API BasicMediaAnalysisCLIOptions : public MediaAnalysisCLIOptions {
 public:
  ~BasicMediaAnalysisCLIOptions() override;

  /// Returns the paths of the media to analyse, in the caller's order.
  [[nodiscard]] virtual std::span<const std::string> pathsToAnalyze() const noexcept = 0;
  /// Returns the name of the run, if it has one.
  [[nodiscard]] virtual std::optional<std::string_view> analysisId() const noexcept = 0;
  /// Returns the directory for scratch files.
  [[nodiscard]] virtual std::string_view workDirectory() const noexcept = 0;
  /// Returns the path of the file that the tool writes its results to.
  [[nodiscard]] virtual std::string_view resultsFilePath() const noexcept = 0;
  /// Returns true if the deep analysis is requested.
  [[nodiscard]] virtual bool deepAnalysis() const noexcept = 0;

  /// Enumerates the paths, the work directory, the results file, the identifier, the deep analysis.
  void enumerateArguments(ArgumentBlock block) const final;

 protected:
  BasicMediaAnalysisCLIOptions() = default;
  BasicMediaAnalysisCLIOptions(const BasicMediaAnalysisCLIOptions&) = default;
  BasicMediaAnalysisCLIOptions& operator=(const BasicMediaAnalysisCLIOptions&) = default;
  BasicMediaAnalysisCLIOptions(BasicMediaAnalysisCLIOptions&&) = default;
  BasicMediaAnalysisCLIOptions& operator=(BasicMediaAnalysisCLIOptions&&) = default;
};

/// Which still images are taken of the media.
class MERIDIAN_API DistributedMediaAnalysisImageOptions : public MediaAnalysisCLIOptions {
 public:
  ~DistributedMediaAnalysisImageOptions() override;

  /// Returns the positions in the media at which images are taken.
  [[nodiscard]] virtual std::span<const float> snapshotLocations() const noexcept = 0;
  /// Returns the largest width of an image, in pixels.
  [[nodiscard]] virtual float maxImageWidth() const noexcept = 0;
  /// Returns the height of every image in pixels, if it is fixed.
  [[nodiscard]] virtual std::optional<float> imageHeight() const noexcept = 0;
  /// Returns the compression factor of the images, if one is given.
  [[nodiscard]] virtual std::optional<float> compressionFactor() const noexcept = 0;
  /// Returns true if the desktop's file browser may show the images.
  [[nodiscard]] virtual bool allowFinderImages() const noexcept = 0;
  /// Returns the path of the LUT file that is applied to the images, if one is.
  [[nodiscard]] virtual std::optional<std::string_view> lutToApply() const noexcept = 0;

  /// Enumerates the locations, the width, the height, the compression, the file browser, the LUT; numbers as the
  /// shortest text that parses as the same 32-bit float ("0.5", "1920.0").
  void enumerateArguments(ArgumentBlock block) const final;

 protected:
  DistributedMediaAnalysisImageOptions() = default;
  DistributedMediaAnalysisImageOptions(const DistributedMediaAnalysisImageOptions&) = default;
  DistributedMediaAnalysisImageOptions& operator=(const DistributedMediaAnalysisImageOptions&) = default;
  DistributedMediaAnalysisImageOptions(DistributedMediaAnalysisImageOptions&&) = default;
  DistributedMediaAnalysisImageOptions& operator=(DistributedMediaAnalysisImageOptions&&) = default;
};

/// Which application starts the tool.
class MERIDIAN_API MediaAnalysisCLICustodialOptions : public MediaAnalysisCLIOptions {
 public:
  ~MediaAnalysisCLICustodialOptions() override;

  /// Returns the application's process identifier, if it is known.
  [[nodiscard]] virtual std::optional<std::int32_t> parentPid() const noexcept = 0;
  /// Returns which application of the suite it is; has no meaning without a process identifier.
  [[nodiscard]] virtual std::optional<std::int32_t> parentAppNumber() const noexcept = 0;

  /// Enumerates the process identifier and, if given, the application's number, both in decimal. Enumerates nothing
  /// without a process identifier.
  void enumerateArguments(ArgumentBlock block) const final;

 protected:
  MediaAnalysisCLICustodialOptions() = default;
  MediaAnalysisCLICustodialOptions(const MediaAnalysisCLICustodialOptions&) = default;
  MediaAnalysisCLICustodialOptions& operator=(const MediaAnalysisCLICustodialOptions&) = default;
  MediaAnalysisCLICustodialOptions(MediaAnalysisCLICustodialOptions&&) = default;
  MediaAnalysisCLICustodialOptions& operator=(MediaAnalysisCLICustodialOptions&&) = default;
};

}  // namespace meridian::inline v0_2
