// Stored presets of any bytes: reading never fails, and the settings survive being stored again.
#include <cstddef>
#include <cstdint>

#include "fuzz/require.h"
#include "meridian/presets/stored_preset.h"

using namespace meridian;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  stored::PresetInformation preset;
  if (!preset.ParseFromArray(data, static_cast<int>(size))) return 0;

  const TranscodeCliArguments arguments = argumentsOf(preset);
  for (const std::string_view flag : {"-out", "-overwrite", "-progress_file", "-progress_prefix", "-work_dir", "-h"}) {
    require(!arguments.hasArgumentFlag(flag), "a preset does not set flags of one job");
  }
  require(!arguments.inputFiles() && !arguments.hasArgumentFlag("-preset"), "a preset has no inputs and no preset");

  const stored::PresetInformation again = storedPreset(preset.name(), arguments);
  const TranscodeCliArguments::Stored read = argumentsOf(again).stored();
  require(read.flagValueLookup == arguments.flagValueLookup(), "settings survive being stored once");
  require(argumentsOf(storedPreset("", argumentsOf(again))).stored() == read, "settings survive being stored twice");

  stored::PresetInformation updated = preset;
  updateStoredPreset(updated, arguments);
  require(argumentsOf(updated).flagValueLookup() == arguments.flagValueLookup(),
          "an updated preset holds the settings");
  (void)codecType(preset);
  return 0;
}
