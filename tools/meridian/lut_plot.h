// Draws a LUT: the module that the command loads when it draws.
#pragma once

#include <string>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_file.h"

namespace meridian::command {

/// The function of the module of plots. It is a module of its own because cairo brings some twenty libraries, X11 among
/// them, which no other subcommand should load.
struct LutPlotModule {
  /// Writes a PNG image of 1600 x 900 pixels: the results for greys as three curves, slices through a cube, and ramps
  /// before and after. `title` must be safe to display; `path` is overwritten. Throws std::runtime_error if that fails.
  void (*plot)(const ParsedLutFile& lut, const ImageLutOptions& options, const std::string& title,
               const std::string& path);
};

/// The name of the function that returns the module's LutPlotModule.
inline constexpr const char* lutPlotModuleEntry = "meridianLutPlotModule";

}  // namespace meridian::command
