/// \file
/// What every parsed LUT file offers, whatever its kind. For example:
///
///     const std::unique_ptr<const ParsedLutFile> look = ParsedLutFactory::parsed(url);
///     look->inputConverter().convert(64, 512, 940, 10);  // the LUT's result for a pixel of 10 bits
#pragma once

#include <cstdint>
#include <string_view>

#include "meridian/export.h"
#include "meridian/lut/lut_values.h"
#include "meridian/lut/sample_converter.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Where a LUT file is and what kind of LUT it holds.
class MERIDIAN_API LutFile {
 public:
  LutFile() = default;
  LutFile(const LutFile&) = delete;
  LutFile& operator=(const LutFile&) = delete;
  LutFile(LutFile&&) = delete;
  LutFile& operator=(LutFile&&) = delete;
  virtual ~LutFile();

  /// Returns the URL of the file.
  [[nodiscard]] virtual const Url& file() const noexcept = 0;
  /// Returns whether it holds a 1D LUT or a cube.
  [[nodiscard]] virtual LutDimensions dimensions() const noexcept = 0;
  /// Returns how the file is written.
  [[nodiscard]] virtual LutMarkupType fileMarkup() const noexcept = 0;
};

/// A file whose values were read, and the converter made of them.
class MERIDIAN_API ParsedLutFile : public LutFile, public LutEssence {
 public:
  /// Returns the name of the file's class, such as "ParsedThreeDimensionalIntegerFile".
  [[nodiscard]] virtual std::string_view className() const noexcept = 0;

  /// Returns the converter made of the file's values, valid as long as the file.
  [[nodiscard]] virtual const LutRGBSampleConverter& inputConverter() const noexcept = 0;

  /// Returns the range of input values that the file declares; 0 to 1 if it declares none. The converters deliberately
  /// ignore it: they derive the range from the data.
  [[nodiscard]] virtual const LutDeclaredDomain& declaredDomain() const noexcept = 0;

  /// Returns what the file's lines say beyond its rows, for warnings (`warningsOf`).
  [[nodiscard]] virtual const LutTextFacts& textFacts() const noexcept = 0;
};

/// A file that holds unsigned code values of some bit depth.
class MERIDIAN_API UnsignedIntegerLutFile : public ParsedLutFile {
 public:
  /// Returns the depth of the file's code values in bits.
  [[nodiscard]] virtual std::int64_t bitDepth() const noexcept = 0;
};

}  // namespace meridian::inline v0_2
