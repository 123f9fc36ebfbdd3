/// \file
/// The engine, which describes and transcodes media, as the programs reach it. For example:
///
///     const EngineModule& engine = engineModule();
///     if (const auto planned = engine.plan(explain(words))) std::cout << engine.describe(*planned);
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/engine/media_analysis.h"
#include "meridian/engine/transcode.h"
#include "meridian/engine/transcode_plan.h"

namespace meridian::command {

/// A plan, or every reason why there is none.
using PlannedTranscode = Expected<TranscodePlan, std::vector<TranscodePlanError>>;

/// An analysis, or every reason why it did not begin.
using AnalyzedMedia = Expected<MediaAnalysis, std::vector<MediaAnalysisError>>;

/// The functions of the engine. It is a module of its own because FFmpeg brings some 160 libraries, which take longer
/// to load than most subcommands take to run. A function may be called from several threads at once.
struct EngineModule {
  /// Returns what the listing commands of the words print; absent without any.
  std::optional<std::string> (*listing)(const TranscodeExplanation& words);

  /// Looks at the files that the words name, and plans the transcode. Writes nothing.
  PlannedTranscode (*plan)(const TranscodeExplanation& words);

  /// Returns a plan as sections of indented lines.
  std::string (*describe)(const TranscodePlan& plan);

  /// Returns {"plan": ..., "errors": [...]}; one of them is null or empty. The plan has the warnings.
  nlohmann::ordered_json (*encode)(const PlannedTranscode& planned);

  /// Returns the release of FFmpeg: "5.1.9-0+deb12u1".
  std::string (*ffmpegVersion)();

  /// Carries out a plan, as `transcode`.
  Expected<TranscodeResult, TranscodeRunError> (*transcode)(const TranscodePlan& plan, const TranscodeOptions& options);

  /// Describes media and takes still images of them, as `analyzeMedia`.
  AnalyzedMedia (*analyze)(const BasicMediaAnalysisCLIOptions& basic, const DistributedMediaAnalysisImageOptions* image,
                           MediaAnalysisProgressBlock progress, const std::stop_token& stop,
                           const DeepAnalysisOptions& deep);

  /// Removes the images of an analysis whose results cannot be used.
  void (*removeImages)(const MediaAnalysis& analysis) noexcept;
};

/// The name of the function that returns the module's EngineModule.
inline constexpr const char* engineModuleEntry = "meridianEngineModule";

/// Returns the engine: loaded at the first call by the command, and linked into the programs that always need it.
/// Throws CommandError if the command has no such module, or if it cannot be loaded.
[[nodiscard]] const EngineModule& engineModule();

}  // namespace meridian::command

/// Returns the engine's functions; what `engineModuleEntry` names.
extern "C" const meridian::command::EngineModule* meridianEngineModule();
