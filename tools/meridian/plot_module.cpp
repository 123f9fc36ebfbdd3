#include "tools/meridian/plot_module.h"

extern "C" const meridian::command::PlotModule* meridianPlotModule() {
  using namespace meridian::command;
  static constexpr PlotModule module{&plotLut, &plotAnalysis};
  return &module;
}
