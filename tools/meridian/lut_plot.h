// Draws a LUT: the module that the command loads when it draws.
#pragma once

#include <string>

#include "meridian/lut/image_lut.h"

namespace meridian::command {

/// What a plot says and shows besides a LUT's results. The texts must be safe to display.
struct LutPlotLabels {
  std::string title{};
  std::string subtitle{};
  /// Whether each result depends on all channels, which slices through a cube show.
  bool mixesChannels = false;
};

/// The function of the module of plots. It is a module of its own because cairo brings some twenty libraries, X11 among
/// them, which no other subcommand should load.
struct LutPlotModule {
  /// Writes a PNG image of 1600 x 900 pixels: the results of a LUT for greys as three curves, slices through a cube,
  /// and ramps before and after. The LUT is prepared for floating point; `path` is overwritten. Throws
  /// std::runtime_error if that fails.
  void (*plot)(const ImageLut& lut, const LutPlotLabels& labels, const std::string& path);
};

/// The name of the function that returns the module's LutPlotModule.
inline constexpr const char* lutPlotModuleEntry = "meridianLutPlotModule";

}  // namespace meridian::command
