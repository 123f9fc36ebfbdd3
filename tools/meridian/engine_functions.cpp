// The functions of the engine: a module of the command, and a part of the programs that always need it.
#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "meridian/engine/encoder_inventory.h"
#include "meridian/engine/media_analysis.h"
#include "meridian/engine/survey_transcode.h"
#include "meridian/engine/transcode_listing.h"
#include "meridian/engine/transcode_plan_text.h"
#include "meridian/serialization/transcode_plan_json.h"
#include "tools/meridian/engine_module.h"

namespace meridian::command {
namespace {

std::optional<std::string> listing(const TranscodeExplanation& words) {
  const EncoderInventory& inventory = encoderInventory();
  constexpr std::string_view gpuPlatforms = SAVCliGpuPlatformsFlag.rawValue();
  const bool isAskedForGpus =
      std::ranges::find(words.settings, gpuPlatforms, &ExplainedSetting::flag) != words.settings.end();
  return listingOf(words, inventory, isAskedForGpus ? openGpuDevices(inventory) : std::vector<std::string>());
}

nlohmann::ordered_json encode(const PlannedTranscode& planned) {
  nlohmann::ordered_json document{{"plan", nullptr}, {"errors", nlohmann::ordered_json::array()}};
  if (planned) {
    document["plan"] = *planned;
  } else {
    document["errors"] = planned.error();
  }
  return document;
}

/// Has all threads take memory from the same arena of the C library. Images go from thread to thread; with an arena for
/// each of them, the memory of images that are gone is kept several times over.
void shareMemory() noexcept {
#ifdef M_ARENA_MAX
  mallopt(M_ARENA_MAX, 1);
#endif
}

Expected<TranscodeResult, TranscodeRunError> carryOut(const TranscodePlan& plan, const TranscodeOptions& options) {
  shareMemory();
  return meridian::transcode(plan, options);
}

}  // namespace
}  // namespace meridian::command

extern "C" const meridian::command::EngineModule* meridianEngineModule() {
  using namespace meridian;
  using namespace meridian::command;
  static constexpr EngineModule module{
      &listing,
      [](const TranscodeExplanation& words) { return planTranscode(words); },
      &describe,
      &encode,
      [] { return encoderInventory().version; },
      &carryOut,
      [](const auto& basic, const auto* image, auto progress, const auto& stop, const auto& deep) {
        return analyzeMedia(basic, image, progress, stop, {}, deep);
      },
      &meridian::removeImages};
  return &module;
}
