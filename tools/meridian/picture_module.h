// Finds the module of picture files.
#pragma once

#include "tools/meridian/picture_file.h"

namespace meridian::command {

/// Loads the module. Throws Refusal where it is not installed or cannot be loaded.
[[nodiscard]] const PictureFileModule& pictureFileModule();

}  // namespace meridian::command
