// meridian lut plot: draws a LUT.
#include <algorithm>
#include <cmath>
#include <string>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/lut/lut_description.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/command.h"
#include "tools/meridian/loaded_module.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/lut_plot.h"
#include "tools/meridian/output.h"
#include "tools/meridian/replacement_file.h"

namespace meridian::command {
namespace {

/// Throws CommandError for values so large that nothing of the range from 0 to 1 would be visible.
void checkIsDrawable(const ParsedLutFile& lut) {
  constexpr double most = 1e5;
  const LutDescription description = describe(lut);
  const bool hasCodeValues = description.valueType == LutValueType::integer;
  if (hasCodeValues || description.dimensions == LutDimensions::oneD) return;  // drawn on the scale from 0 to 1
  const double reach = std::max(std::fabs(description.lowValue), std::fabs(description.highValue));
  if (reach > most) {
    throw CommandError("the values of the LUT reach " + shortestDecimalText(reach) +
                       "; the largest that can be drawn is " + shortestDecimalText(most));
  }
}

Status plotToFile(const Arguments& arguments) {
  const std::string out = *arguments.value("out");
  if (!equalsIgnoringCase(pathExtension(out), "png")) {
    throw CommandError(inQuotes(out) + " is not the name of a PNG image; expected one that ends in .png");
  }
  const auto& plots = loadedModule<LutPlotModule>(MERIDIAN_PLOT_MODULE, lutPlotModuleEntry, "draw", "cairo");
  const auto lut = readLut(arguments);
  checkIsDrawable(*lut);
  ReplacementFile replacement(out);
  const std::string name(lastPathComponent(*arguments.value("lut")));
  plots.plot(*lut, chosenImageLutOptions(arguments), printable(name), replacement.path());
  replacement.replace();
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
          "and after, all as \"meridian lut apply\" computes them for floating point.",
      .example = "meridian lut plot look.cube look.png --axis-order red-fastest",
      .options = {lutFileOption(),
                  {.kind = Option::Kind::positional,
                   .name = "out",
                   .help = "The image to write",
                   .valueName = "OUT.png",
                   .path = true}},
      .action = plotToFile,
  };
  for (Option& option : floatLutOptions()) command.options.push_back(std::move(option));
  return command;
}

}  // namespace meridian::command
