/// \file
/// The two readings of a LUT file: as its format publishes it, and as the suite reads every text. For example:
///
///     const ChosenLut lut = readChosenLut(arguments, LutReading::published);
///     printWarnings(lut.warnings);
///     const ImageLut prepared = lut.forFloats();
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/expected.h"
#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_formats.h"

namespace meridian::command {

enum class LutReading : std::uint8_t { published, suite };

}  // namespace meridian::command

namespace meridian {

template <>
struct EnumerationTable<command::LutReading> {
  static constexpr auto rows = std::to_array<EnumerationRow<command::LutReading>>({
      {command::LutReading::published, "published"},
      {command::LutReading::suite, "suite"},
  });
};

}  // namespace meridian

namespace meridian::command {

/// Reads a LUT as the suite does.
[[nodiscard]] Expected<std::unique_ptr<const ParsedLutFile>, LutError> parseLut(const std::string& path);

/// Reads a LUT as its format publishes it, by the library or by the module of LUT formats. Returns otherPublishedFormat
/// if the module is needed and cannot be loaded, and noPublishedFormat for a file that only `parseLut` may read.
[[nodiscard]] Expected<PublishedLut, LutError> readPublished(const std::string& path);

/// Returns whether files of the format hold the rows that the suite reads; it takes others for rows of its own.
[[nodiscard]] bool isReadBySuite(LutFormat format) noexcept;

/// A LUT in the reading that was chosen, with what was chosen for images.
struct ChosenLut {
  /// The suite's reading, or the published one.
  std::variant<std::shared_ptr<const ParsedLutFile>, PublishedLut> lut;
  ImageLutOptions options;
  std::vector<LutWarning> warnings;

  [[nodiscard]] const ParsedLutFile* suiteFile() const noexcept;
  [[nodiscard]] ImageLut forFloats() const;
  /// The depths have to be 1 to 16 bits.
  [[nodiscard]] ImageLut forCodeValues(int source, int destination) const;
};

/// Returns the reading of --reading or else the default. Without --reading, --axis-order and --domain choose the
/// suite's. Throws UsageError if they are given with --reading published.
[[nodiscard]] LutReading chosenReading(const Arguments& arguments, LutReading byDefault);

/// Returns the LUT that FILE names. A text in no published format is read as the suite does, with a warning. Published
/// LUTs always round code values to the nearest. Throws CommandError if there is no LUT.
[[nodiscard]] ChosenLut readChosenLut(const Arguments& arguments, LutReading byDefault);

/// Returns the warning without the file's name, and with the options that do what its remedy says.
[[nodiscard]] std::string messageOf(const LutWarning& warning);

/// Prints a line for each warning on standard error: meridian: "FILE": warning: MESSAGE
void printWarnings(std::span<const LutWarning> warnings);

/// Returns what a stage is: "cube of 33 points per axis, tetrahedral".
[[nodiscard]] std::string describedStage(const LutStage& stage);

/// Returns the option --reading.
[[nodiscard]] Option readingOption(LutReading byDefault);

}  // namespace meridian::command
