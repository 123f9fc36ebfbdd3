// Draws a LUT.
#pragma once

#include <string>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_file.h"

namespace meridian::command {

/// Writes a PNG image of 1600 x 900 pixels: the results for greys as three curves, slices through a cube, and ramps
/// before and after. `title` must be safe to display; `path` is overwritten. Throws std::runtime_error if that fails.
void plotLut(const ParsedLutFile& lut, const ImageLutOptions& options, const std::string& title,
             const std::string& path);

}  // namespace meridian::command
