// meridian lut plot: draws a LUT.
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <variant>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/lut/lut_description.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/command.h"
#include "tools/meridian/loaded_module.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/lut_reading.h"
#include "tools/meridian/output.h"
#include "tools/meridian/plot_module.h"
#include "tools/meridian/replacement_file.h"

namespace meridian::command {
namespace {

/// Throws CommandError for results so large that nothing of the range from 0 to 1 would be visible.
void checkIsDrawable(const ImageLut& lut) {
  constexpr double most = 1e5;
  constexpr int steps = 1000;
  double reach = 0;
  for (int step = 0; step <= steps; ++step) {
    const double grey = static_cast<double>(step) / steps;
    const LutColor color = lut.pixel({grey, grey, grey});
    for (const double value : {color.red, color.green, color.blue}) reach = std::max(reach, std::fabs(value));
  }
  if (reach <= most) return;
  throw CommandError("the results of the LUT reach " + shortestDecimalText(reach) +
                     "; the largest that can be drawn is " + shortestDecimalText(most));
}

LutPlotLabels labelsOf(const ParsedLutFile& file, const ImageLutOptions& options) {
  const LutDescription lut = describe(file);
  const bool isCube = lut.dimensions == LutDimensions::cube;
  std::string text = std::string(description(lut.dimensions)) + ", " + std::to_string(lut.size) +
                     (isCube ? " points per axis" : " rows");
  text += lut.valueBitDepth ? ", " + std::to_string(*lut.valueBitDepth) + "-bit code values" : ", floating point";
  text += " from " + shortestDecimalText(lut.lowValue) + " to " + shortestDecimalText(lut.highValue);
  text += options.domain == LutInputDomain::declared ? "; declared domain" : "; domain of the data";
  if (isCube) {
    text += options.axisOrder == LutAxisOrder::redFastest ? ", red fastest" : ", blue fastest";
    text += ", " + std::string(rawValue(options.interpolation));
  }
  return {.subtitle = text, .mixesChannels = isCube};
}

LutPlotLabels labelsOf(const PublishedLut& lut, const ImageLutOptions& options) {
  LutPlotLabels labels{.subtitle = std::string(description(lut.format)) + ": "};
  bool usesOption = false;
  for (const LutStage& stage : lut.stages) {
    labels.subtitle += (&stage == &lut.stages.front() ? "" : ", ") + describedStage(stage);
    const auto* const cube = std::get_if<LutCubeStage>(&stage);
    usesOption = usesOption || (cube != nullptr && !cube->interpolation);
    labels.mixesChannels =
        labels.mixesChannels || !(std::holds_alternative<LutCurve>(stage) || std::holds_alternative<LutRange>(stage));
  }
  if (lut.stages.empty()) labels.subtitle += "changes nothing";
  if (usesOption) labels.subtitle += "; " + std::string(rawValue(options.interpolation));
  return labels;
}

Status plotToFile(const Arguments& arguments) {
  const std::string out = *arguments.value("out");
  if (!equalsIgnoringCase(pathExtension(out), "png")) {
    throw CommandError(inQuotes(out) + " is not the name of a PNG image; expected one that ends in .png");
  }
  const auto& plots = loadedModule<PlotModule>(MERIDIAN_PLOT_MODULE, plotModuleEntry, "draw", "cairo");
  const ChosenLut lut = readChosenLut(arguments, LutReading::published);
  printWarnings(lut.warnings);
  const ImageLut prepared = lut.forFloats();
  checkIsDrawable(prepared);
  const ParsedLutFile* const file = lut.suiteFile();
  LutPlotLabels labels =
      file != nullptr ? labelsOf(*file, lut.options) : labelsOf(std::get<PublishedLut>(lut.lut), lut.options);
  labels.title = printable(lastPathComponent(*arguments.value("lut")));
  WholeFile replacement = createReplacement(out);
  plots.plotLut(prepared, labels, replacement.unfinishedPath());
  publishReplacement(replacement, out);
  return done;
}

}  // namespace

Subcommand lutPlotCommand() {
  Subcommand command{
      .group = "lut",
      .name = "plot",
      .description = "Draw a LUT as a PNG image",
      .details =
          "The image shows the results for greys as three curves, slices through a cube, and greys and hues before\n"
          "and after, all as \"meridian lut apply\" computes them for floating point. FILE is read as there.",
      .example = "meridian lut plot look.cube look.png\nmeridian lut plot look.cube suite.png --reading suite",
      .options = {lutFileOption(),
                  {.kind = Option::Kind::positional,
                   .name = "out",
                   .help = "The image to write",
                   .valueName = "OUT.png",
                   .path = true}},
      .action = plotToFile,
  };
  command.options.push_back(readingOption(LutReading::published));
  for (Option& option : floatLutOptions()) command.options.push_back(std::move(option));
  return command;
}

}  // namespace meridian::command
