// The options of the media-analysis tool as interfaces, each with the argument vector that says them.
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

/// Options of the analysis tool. Nothing is checked: what a command line cannot carry is told by `lossesInReading`, and
/// what the tool would refuse by `faultsOf` and `errorsOf`.
class MERIDIAN_API MediaAnalysisCLIOptions : public CliArgumentStore {
 public:
  /// A flag and its value, or none. The texts live for the length of the call.
  using ArgumentBlock = FunctionRef<void(std::string_view flag, std::optional<std::string_view> value)>;

  ~MediaAnalysisCLIOptions() override;

  /// Calls the block with each flag in the order of the argument vector; a flag that repeats comes once for each value.
  virtual void enumerateArguments(ArgumentBlock block) const = 0;

  /// The argument vector, without a program path. A flag without a value is one element, and not two.
  [[nodiscard]] std::vector<std::string> commandLineArguments() const override;

 protected:
  MediaAnalysisCLIOptions() = default;
  MediaAnalysisCLIOptions(const MediaAnalysisCLIOptions&) = default;
  MediaAnalysisCLIOptions& operator=(const MediaAnalysisCLIOptions&) = default;
  MediaAnalysisCLIOptions(MediaAnalysisCLIOptions&&) = default;
  MediaAnalysisCLIOptions& operator=(MediaAnalysisCLIOptions&&) = default;

  /// The arguments as a dictionary in the same order: a flag that repeats keeps its first place and its last value.
  [[nodiscard]] TextDictionary dictionaryOfArguments() const;
};

/// What is analysed, and where the results go.
class MERIDIAN_API BasicMediaAnalysisCLIOptions : public MediaAnalysisCLIOptions {
 public:
  ~BasicMediaAnalysisCLIOptions() override;

  /// The media to analyse, in the caller's order.
  [[nodiscard]] virtual std::span<const std::string> pathsToAnalyze() const noexcept = 0;
  /// Names the run.
  [[nodiscard]] virtual std::optional<std::string_view> analysisId() const noexcept = 0;
  /// A folder for scratch files.
  [[nodiscard]] virtual std::string_view workDirectory() const noexcept = 0;
  /// The file that the tool writes its results to.
  [[nodiscard]] virtual std::string_view resultsFilePath() const noexcept = 0;
  /// Whether the deep pass is asked for.
  [[nodiscard]] virtual bool deepAnalysis() const noexcept = 0;

  /// The paths, the work directory, the results file, the identifier, the deep pass.
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

  /// The positions at which images are taken.
  [[nodiscard]] virtual std::span<const float> snapshotLocations() const noexcept = 0;
  /// The largest width of an image.
  [[nodiscard]] virtual float maxImageWidth() const noexcept = 0;
  /// The height of every image, where it is fixed.
  [[nodiscard]] virtual std::optional<float> imageHeight() const noexcept = 0;
  [[nodiscard]] virtual std::optional<float> compressionFactor() const noexcept = 0;
  /// Whether the desktop's file browser may show the images.
  [[nodiscard]] virtual bool allowFinderImages() const noexcept = 0;
  /// The path of the look-up table file that the images are led through.
  [[nodiscard]] virtual std::optional<std::string_view> lutToApply() const noexcept = 0;

  /// The locations, the width, the height, the compression, the file browser, the look-up table; numbers as the
  /// shortest text that reads back ("0.5", "1920.0").
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

  /// The application's process identifier.
  [[nodiscard]] virtual std::optional<std::int32_t> parentPid() const noexcept = 0;
  /// Which application of the suite it is; says nothing without a process identifier.
  [[nodiscard]] virtual std::optional<std::int32_t> parentAppNumber() const noexcept = 0;

  /// The process identifier and the application's number, each where it is there, in decimal; nothing without a process
  /// identifier.
  void enumerateArguments(ArgumentBlock block) const final;

 protected:
  MediaAnalysisCLICustodialOptions() = default;
  MediaAnalysisCLICustodialOptions(const MediaAnalysisCLICustodialOptions&) = default;
  MediaAnalysisCLICustodialOptions& operator=(const MediaAnalysisCLICustodialOptions&) = default;
  MediaAnalysisCLICustodialOptions(MediaAnalysisCLICustodialOptions&&) = default;
  MediaAnalysisCLICustodialOptions& operator=(MediaAnalysisCLICustodialOptions&&) = default;
};

}  // namespace meridian::inline v0_2
