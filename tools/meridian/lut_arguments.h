// What the lut commands have in common: FILE, and the options of applying a LUT.
#pragma once

#include <vector>

#include "meridian/lut/image_lut_options.h"
#include "tools/meridian/command.h"

namespace meridian::command {

/// Returns the positional FILE.
[[nodiscard]] Option lutFileOption();

/// Returns the options that say how a LUT is applied to floating-point samples.
[[nodiscard]] std::vector<Option> floatLutOptions();

/// Returns the options that say how a LUT is applied to images: those for floating-point samples, and how results
/// become code values.
[[nodiscard]] std::vector<Option> imageLutOptions();

/// Returns what was chosen of `imageLutOptions`.
[[nodiscard]] ImageLutOptions chosenImageLutOptions(const Arguments& arguments);

}  // namespace meridian::command
