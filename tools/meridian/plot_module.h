/// \file
/// Draws what subcommands found: the module that the command loads when it draws. For example:
///
///     const auto& plots = loadedModule<PlotModule>(MERIDIAN_PLOT_MODULE, plotModuleEntry, "draw", "cairo");
///     plots.plotAnalysis(analysis.items.front(), "/out/page.png");
#pragma once

#include "tools/meridian/analysis_plot.h"
#include "tools/meridian/lut_plot.h"

namespace meridian::command {

/// The functions of the module. It is a module of its own because cairo brings some twenty libraries, X11 among them,
/// which no other subcommand should load. Each writes a PNG image of 1600 x 900 pixels and overwrites the path. They
/// throw std::runtime_error if that fails.
struct PlotModule {
  void (*plotLut)(const ImageLut& lut, const LutPlotLabels& labels, const std::string& path);
  void (*plotAnalysis)(const MediaAnalysisItem& item, const std::string& path);
};

/// The name of the function that returns the module's PlotModule.
inline constexpr const char* plotModuleEntry = "meridianPlotModule";

}  // namespace meridian::command
