// The functions of the engine: a module of the command, and a part of the programs that always need it.
#include <algorithm>
#include <iterator>
#include <vector>

#include "meridian/engine/encoder_inventory.h"
#include "meridian/engine/transcode_listing.h"
#include "tools/meridian/engine_module.h"

namespace meridian::command {
namespace {

std::optional<std::string> listing(const TranscodeExplanation& words) {
  const EncoderInventory& inventory = encoderInventory();
  std::vector<std::string> devices;
  const auto isAsked = [](const ExplainedSetting& setting) {
    return setting.flag == SAVCliGpuPlatformsFlag.rawValue();
  };
  if (std::ranges::any_of(words.settings, isAsked)) {
    std::ranges::copy_if(inventory.devices, std::back_inserter(devices), deviceOpens);
  }
  return listingOf(words, inventory, devices);
}

}  // namespace
}  // namespace meridian::command

extern "C" const meridian::command::EngineModule* meridianEngineModule() {
  using namespace meridian::command;
  static constexpr EngineModule module{&listing};
  return &module;
}
