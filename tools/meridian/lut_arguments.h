// What the lut commands have in common: reading the LUT that FILE names, and the options of applying it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "tools/meridian/command.h"

namespace meridian::command {

/// Reads a LUT. The library's own messages are suppressed, since the commands report errors themselves.
[[nodiscard]] Expected<std::unique_ptr<const ParsedLutFile>, LutError> parseLut(const std::string& path);

/// Returns the LUT that FILE names. Throws CommandError if there is none.
[[nodiscard]] std::unique_ptr<const ParsedLutFile> readLut(const Arguments& arguments);

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
