#include "tools/meridian/image_module.h"

#include <string>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"
#include "tools/meridian/loaded_module.h"

namespace meridian::command {

const ImageFileModule& imageFileModule() {
  using Entry = const ImageFileModule* (*)();
  const auto symbol = moduleSymbol(MERIDIAN_IMAGE_MODULE, imageFileModuleEntry);
  if (!symbol) {
    throw CommandError(
        "this installation of meridian cannot read and write images: it was built without OpenImageIO, or the module "
        "is missing: " +
        printable(symbol.error()));
  }
  return *reinterpret_cast<Entry>(*symbol)();
}

}  // namespace meridian::command
