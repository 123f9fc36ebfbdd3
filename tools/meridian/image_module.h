// Loads the module of image files.
#pragma once

#include "tools/meridian/image_file.h"

namespace meridian::command {

/// Loads the module, once. Throws CommandError if it is not installed, cannot be loaded, or needs more address space
/// than the process may have.
[[nodiscard]] const ImageFileModule& imageFileModule();

}  // namespace meridian::command
