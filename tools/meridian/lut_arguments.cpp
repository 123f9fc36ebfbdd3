#include "tools/meridian/lut_arguments.h"

#include "meridian/suite/logger.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

class SilentLogger final : public Logger {
 public:
  void log(LogLevel /*level*/, std::string_view /*message*/) override {}
};

}  // namespace

Expected<std::unique_ptr<const ParsedLutFile>, LutError> parseLut(const std::string& path) {
  setLogger(std::make_shared<SilentLogger>());
  auto file = ParsedLutFactory::parsing(Url::fromFilePath(path));
  setLogger(nullptr);
  return file;
}

std::unique_ptr<const ParsedLutFile> readLut(const Arguments& arguments) {
  return valueOf(parseLut(*arguments.value("lut")));
}

Option lutFileOption() {
  return {.kind = Option::Kind::positional,
          .name = "lut",
          .help = "The look-up table (LUT), a text file such as look.cube",
          .valueName = "FILE",
          .path = true};
}

std::vector<Option> floatLutOptions() {
  return {{Option::Kind::value,
           "axis-order",
           "Which index runs fastest through a cube's rows: blue-fastest (the default), or red-fastest as in the "
           "published .cube format",
           "ORDER",
           {"blue-fastest", "red-fastest"}},
          {Option::Kind::value,
           "domain",
           "Which input values the LUT covers: those of its data (the default), up to a cube's highest value, or those "
           "that the file declares, 0 to 1 if it declares none",
           "DOMAIN",
           {"data", "declared"}},
          {Option::Kind::value,
           "interpolation",
           "How colours between a cube's points are interpolated: trilinear (the default) or tetrahedral",
           "KIND",
           {rawValue(LutInterpolation::trilinear), rawValue(LutInterpolation::tetrahedral)}}};
}

std::vector<Option> imageLutOptions() {
  std::vector<Option> options = floatLutOptions();
  options.push_back(
      {Option::Kind::flag, "round",
       "Round results to the nearest code value, so that an identity changes nothing, instead of truncating "
       "them; floating-point results stay as they are"});
  return options;
}

ImageLutOptions chosenImageLutOptions(const Arguments& arguments) {
  ImageLutOptions chosen;
  if (arguments.value("axis-order") == "red-fastest") chosen.axisOrder = LutAxisOrder::redFastest;
  if (arguments.value("domain") == "declared") chosen.domain = LutInputDomain::declared;
  if (arguments.value("interpolation") == rawValue(LutInterpolation::tetrahedral)) {
    chosen.interpolation = LutInterpolation::tetrahedral;
  }
  if (arguments.has("round")) chosen.rounding = LutRounding::nearest;
  return chosen;
}

}  // namespace meridian::command
