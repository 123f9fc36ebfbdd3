// meridian lut plot: a look-up table as a picture to look at.
#include <string>

#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/lut_plot.h"
#include "tools/meridian/replacement_file.h"

namespace meridian::command {
namespace {

#ifdef MERIDIAN_HAS_PLOTS

Status plotTable(const Arguments& arguments) {
  const std::string out = *arguments.value("out");
  if (!equalsIgnoringCase(pathExtension(out), "png")) {
    throw UsageError(inQuotes(out) + " is no name of a PNG picture; write one that ends in .png");
  }
  const auto lut = readLut(arguments);
  ReplacementFile replacement(out);
  const std::string name(lastPathComponent(*arguments.value("lut")));
  plotLut(*lut, chosenLookUp(arguments), printable(name), replacement.path());
  replacement.take();
  return done;
}

#else

Status plotTable(const Arguments& /*arguments*/) {
  throw Refusal("this build of meridian cannot draw: cairo was not there when it was built");
}

#endif

}  // namespace

Subcommand lutPlotCommand() {
  Subcommand command{
      .group = "lut",
      .name = "plot",
      .description = "Draw a look-up table as a PNG picture",
      .details =
          "It shows what the table makes of greys as three curves, slices through a cube, and greys and hues before\n"
          "and after, all as \"meridian lut apply\" gives them for floating point.",
      .example = "meridian lut plot look.cube look.png --axis-order red-fastest",
      .options = {lutFileOption(),
                  {.kind = Option::Kind::positional,
                   .name = "out",
                   .help = "The picture to write",
                   .valueName = "OUT.png",
                   .path = true}},
      .action = plotTable,
  };
  for (Option& option : lookUpOptions()) command.options.push_back(std::move(option));
  return command;
}

}  // namespace meridian::command
