#include "tools/meridian/picture_module.h"

#include <string>

#include "meridian/base/printable.h"
#include "meridian/platform/loaded_module.h"
#include "tools/meridian/command.h"

namespace meridian::command {

const PictureFileModule& pictureFileModule() {
  using Entry = const PictureFileModule* (*)();
  const ModuleSymbol symbol = moduleSymbol(MERIDIAN_PICTURE_MODULE, pictureFileModuleEntry);
  if (symbol.address == nullptr) {
    throw Refusal(
        "this installation of meridian cannot read and write pictures; it was built without OpenImageIO, or "
        "the module is not there: " +
        printable(symbol.fault));
  }
  return *reinterpret_cast<Entry>(symbol.address)();
}

}  // namespace meridian::command
