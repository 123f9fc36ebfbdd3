/// \file
/// Draws a LUT as a page. For example:
///
///     plotLut(lut, {.title = "look.cube"}, "/out/look.png");
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

/// Draws the results of a LUT for greys as three curves, slices through a cube, and ramps before and after. The LUT is
/// prepared for floating point.
void plotLut(const ImageLut& lut, const LutPlotLabels& labels, const std::string& path);

}  // namespace meridian::command
