#include "tools/meridian/lut_arguments.h"

namespace meridian::command {

Option lutFileOption() {
  return {.kind = Option::Kind::positional,
          .name = "lut",
          .help = "The look-up table (LUT), such as look.cube",
          .valueName = "FILE",
          .path = true};
}

std::vector<Option> floatLutOptions() {
  return {{Option::Kind::value,
           "axis-order",
           "In the suite's reading, which index runs fastest through a cube's rows: blue-fastest (the default) or "
           "red-fastest. Chooses that reading; an error with --reading published",
           "ORDER",
           {"blue-fastest", "red-fastest"}},
          {Option::Kind::value,
           "domain",
           "In the suite's reading, which input values the LUT covers: those of its data (the default), up to a cube's "
           "highest value, or those that the file declares, 0 to 1 if it declares none. Chooses that reading; an error "
           "with --reading published",
           "DOMAIN",
           {"data", "declared"}},
          {Option::Kind::value,
           "interpolation",
           "How colours between a cube's points are interpolated: trilinear (the default, unless a published file "
           "declares another) or tetrahedral",
           "KIND",
           {rawValue(LutInterpolation::trilinear), rawValue(LutInterpolation::tetrahedral)}}};
}

std::vector<Option> imageLutOptions() {
  std::vector<Option> options = floatLutOptions();
  options.push_back(
      {Option::Kind::flag, "round",
       "Round results to the nearest code value, so that an identity changes nothing, instead of truncating them; a "
       "published reading always does; floating-point results stay as they are"});
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
