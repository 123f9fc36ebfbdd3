#include "tools/meridian/image_module.h"

#include <string>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/loaded_module.h"

namespace meridian::command {

const ImageFileModule& imageFileModule() {
  using Entry = const ImageFileModule* (*)();
  const ModuleSymbol symbol = moduleSymbol(MERIDIAN_IMAGE_MODULE, imageFileModuleEntry);
  if (symbol.address == nullptr) {
    throw Refusal(
        "this installation of meridian cannot read and write images: it was built without OpenImageIO, or "
        "the module is missing: " +
        printable(symbol.fault));
  }
  return *reinterpret_cast<Entry>(symbol.address)();
}

}  // namespace meridian::command
