// What the lut commands have in common: the table that a word names, and the options of looking up.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "tools/meridian/command.h"

namespace meridian::command {

/// Reads a table. The library's own messages are held back, since the commands say themselves what is wrong.
[[nodiscard]] LutParsing parseLut(const std::string& path);

/// What to say of a file that was refused.
[[nodiscard]] std::string refusalText(const std::string& path, const LutRefusal& refusal);

/// The table that FILE names. Throws CommandError where it is none.
[[nodiscard]] std::unique_ptr<const ParsedLutFile> readLut(const Arguments& arguments);

/// The positional FILE.
[[nodiscard]] Option lutFileOption();

/// The options that say how colours are looked up, and what was chosen.
[[nodiscard]] std::vector<Option> lookUpOptions();
[[nodiscard]] ImageLutOptions chosenLookUp(const Arguments& arguments);

}  // namespace meridian::command
