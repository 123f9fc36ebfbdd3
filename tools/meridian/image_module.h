// Loads the module of image files.
#pragma once

#include "tools/meridian/image_file.h"

namespace meridian::command {

/// Loads the module, once. Throws CommandError if it is not installed or cannot be loaded.
[[nodiscard]] const ImageFileModule& imageFileModule();

}  // namespace meridian::command
