// The engine of the programs that always need it, and are linked with it.
#include "tools/meridian/engine_module.h"

namespace meridian::command {

const EngineModule& engineModule() { return *meridianEngineModule(); }

}  // namespace meridian::command
