// A look-up table as an image to look at.
#pragma once

#include <string>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_file.h"

namespace meridian::command {

/// Writes a PNG image of 1600 x 900 pixels: what the table makes of greys as three curves, slices through a cube, and
/// ramps before and after. `title` is safe to show; `path` is written over. Throws std::runtime_error where it fails.
void plotLut(const ParsedLutFile& lut, const ImageLutOptions& options, const std::string& title,
             const std::string& path);

}  // namespace meridian::command
