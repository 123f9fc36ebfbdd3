#include "tools/meridian/lut_arguments.h"

#include "meridian/base/printable.h"
#include "meridian/suite/logger.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

class SilentLogger final : public Logger {
 public:
  void log(LogLevel /*level*/, std::string_view /*message*/) override {}
};

}  // namespace

LutParsing parseLut(const std::string& path) {
  setLogger(std::make_shared<SilentLogger>());
  LutParsing parsing = ParsedLutFactory::parsing(Url::fromFilePath(path));
  setLogger(nullptr);
  return parsing;
}

std::string refusalText(const std::string& path, const LutRefusal& refusal) {
  return inQuotes(path) + " is refused as a look-up table: " + printable(refusal.message());
}

std::unique_ptr<const ParsedLutFile> readLut(const Arguments& arguments) {
  const std::string path = *arguments.value("lut");
  LutParsing parsing = parseLut(path);
  if (parsing.refusal) throw CommandError(refusalText(path, *parsing.refusal));
  return std::move(parsing.file);
}

Option lutFileOption() {
  return {.kind = Option::Kind::positional,
          .name = "lut",
          .help = "The look-up table, a file of text such as look.cube",
          .valueName = "FILE",
          .path = true};
}

std::vector<Option> lookUpOptions() {
  return {{Option::Kind::value,
           "axis-order",
           "Which axis a cube's rows run along first: blue-fastest (the default), or red-fastest, as the published "
           ".cube format has it",
           "ORDER",
           {"blue-fastest", "red-fastest"}},
          {Option::Kind::value,
           "domain",
           "Which input values the table stands for: those of its data (the default), up to a cube's highest value, "
           "or those that the file declares, 0 to 1 where it declares none",
           "DOMAIN",
           {"data", "declared"}},
          {Option::Kind::value,
           "interpolation",
           "How colours between a cube's points are found: trilinear (the default) or tetrahedral",
           "KIND",
           {rawValue(LutInterpolation::trilinear), rawValue(LutInterpolation::tetrahedral)}}};
}

ImageLutOptions chosenLookUp(const Arguments& arguments) {
  ImageLutOptions chosen;
  if (arguments.value("axis-order") == "red-fastest") chosen.axisOrder = LutAxisOrder::redFastest;
  if (arguments.value("domain") == "declared") chosen.domain = LutInputDomain::declared;
  if (arguments.value("interpolation") == rawValue(LutInterpolation::tetrahedral)) {
    chosen.interpolation = LutInterpolation::tetrahedral;
  }
  return chosen;
}

}  // namespace meridian::command
