#include "tools/meridian/engine_module.h"

#include "tools/meridian/loaded_module.h"

namespace meridian::command {

const EngineModule& engineModule() {
  return loadedModule<EngineModule>(MERIDIAN_ENGINE_MODULE, engineModuleEntry, "describe or transcode media", "FFmpeg");
}

}  // namespace meridian::command
