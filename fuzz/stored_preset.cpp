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
    require(!arguments.hasArgumentFlag(flag), "no preset sets a flag of one job");
  }
  require(!arguments.inputFiles() && !arguments.hasArgumentFlag("-preset"), "no preset brings inputs or a preset");

  const stored::PresetInformation again = storedPreset(preset.name(), arguments);
  const TranscodeCliArguments::Stored read = argumentsOf(again).stored();
  require(read.flagValueLookup == arguments.flagValueLookup(), "settings survive being stored");
  require(argumentsOf(storedPreset("", argumentsOf(again))).stored() == read, "and once more");

  stored::PresetInformation updated = preset;
  updateStoredPreset(updated, arguments);
  require(argumentsOf(updated).flagValueLookup() == arguments.flagValueLookup(), "an update holds the settings");
  (void)codecType(preset);
  return 0;
}
