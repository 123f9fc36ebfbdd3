// meridian lut plot: a look-up table as an image to look at.
#include <algorithm>
#include <cmath>
#include <string>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/lut_plot.h"
#include "tools/meridian/output.h"
#include "tools/meridian/replacement_file.h"

namespace meridian::command {
namespace {

#ifdef MERIDIAN_HAS_PLOTS

/// Refuses values that would leave nothing to see of the range from 0 to 1.
void checkIsDrawable(const ParsedLutFile& lut) {
  constexpr double most = 1e5;
  const bool hasCodeValues = dynamic_cast<const UnsignedIntegerLutFile*>(&lut) != nullptr;
  const LutRGBSampleConverter& converter = lut.inputConverter();
  if (hasCodeValues || lut.dimensions() == LutDimensions::oneD) return;  // drawn on the scale from 0 to 1
  const double reach = std::max(std::fabs(converter.lowValue()), std::fabs(converter.highValue()));
  if (reach > most) {
    throw CommandError("its values reach " + shortestDecimalText(reach) + "; what is drawn goes up to " +
                       shortestDecimalText(most));
  }
}

Status plotTable(const Arguments& arguments) {
  const std::string out = *arguments.value("out");
  if (!equalsIgnoringCase(pathExtension(out), "png")) {
    throw UsageError(inQuotes(out) + " is no name of a PNG image; write one that ends in .png");
  }
  const auto lut = readLut(arguments);
  checkIsDrawable(*lut);
  ReplacementFile replacement(out);
  const std::string name(lastPathComponent(*arguments.value("lut")));
  plotLut(*lut, chosenLookUp(arguments), printable(name), replacement.path());
  replacement.take();
  return done;
}

#else

Status plotTable(const Arguments& /*arguments*/) {
  throw CommandError("this build of meridian cannot draw: cairo was not there when it was built");
}

#endif

}  // namespace

Subcommand lutPlotCommand() {
  Subcommand command{
      .group = "lut",
      .name = "plot",
      .description = "Draw a look-up table as a PNG image",
      .details =
          "It shows what the table makes of greys as three curves, slices through a cube, and greys and hues before\n"
          "and after, all as \"meridian lut apply\" gives them for floating point.",
      .example = "meridian lut plot look.cube look.png --axis-order red-fastest",
      .options = {lutFileOption(),
                  {.kind = Option::Kind::positional,
                   .name = "out",
                   .help = "The image to write",
                   .valueName = "OUT.png",
                   .path = true}},
      .action = plotTable,
  };
  for (Option& option : lookUpOptions()) command.options.push_back(std::move(option));
  return command;
}

}  // namespace meridian::command
