// Look-up table files: from a path to a table that samples and images can be led through.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "meridian/export.h"
#include "meridian/lut/lut_cube.h"
#include "meridian/lut/lut_file.h"
#include "meridian/lut/lut_refusal.h"
#include "meridian/lut/lut_values.h"
#include "meridian/lut/sample_converter.h"
#include "meridian/lut/text_lut_interpreter.h"
#include "meridian/media/file_extension.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// What the reading of a file gave: the table, or why there is none. Of the two exactly one is there.
struct LutParsing {
  std::unique_ptr<const ParsedLutFile> file;
  std::optional<LutRefusal> refusal;
};

/// Reads look-up table files written as text, in the lenient, line-oriented form that most programs write: keyword
/// lines and comments, then rows of three numbers. Whether a file holds a one-dimensional table or a cube, and code
/// values or floating point, is decided by its header lines and its data. XML documents are refused on purpose.
class MERIDIAN_API ParsedLutFactory {
 public:
  using LutValueTriplet = meridian::LutValueTriplet;
  using GenericTextLutInterpreter = meridian::GenericTextLutInterpreter;
  using LutCube = meridian::LutCube;
  using Integer3DSampleConverter = meridian::Integer3DSampleConverter;
  using NormalizedFloatingPoint3DSampleConverter = meridian::NormalizedFloatingPoint3DSampleConverter;

  class ParsedOneDimensionLutFile;
  class ParsedThreeDimensionalIntegerFile;
  class ParsedThreeDimensionalFloatingPointFile;

  ParsedLutFactory() = delete;

  /// The table in a file with an extension of FileExtensionSet::colorLutFileExtensions or with one that is no known
  /// extension at all; null for every failure. A file without an extension is refused, since that is a folder's. Only
  /// three failures are logged: a known extension of another kind, a file that cannot be opened, and a 1D table that is
  /// too short. Throws nothing but std::bad_alloc: the memory is in proportion to the rows, 24 bytes each.
  [[nodiscard]] static std::unique_ptr<const ParsedLutFile> parsed(const Url& lutFilePath);

  /// As `parsed`, and says why a file was refused. Without permitted extensions every extension will do; with them,
  /// `acceptsUnknownExtensions` says whether one that is no known extension will do too.
  [[nodiscard]] static LutParsing parsing(
      const Url& lutFilePath,
      const std::optional<FileExtensionSet>& permittedExtensions = FileExtensionSet::colorLutFileExtensions(),
      bool acceptsUnknownExtensions = true);
};

/// A one-dimensional table, of code values or floating point.
class MERIDIAN_API ParsedLutFactory::ParsedOneDimensionLutFile final : public ParsedLutFile {
 public:
  ParsedOneDimensionLutFile(Url file, const LutDeclaredDomain& declaredDomain,
                            std::unique_ptr<const OneDimensionConverter> inputConverter);
  ~ParsedOneDimensionLutFile() override;

  [[nodiscard]] const Url& file() const noexcept override { return file_; }
  [[nodiscard]] LutDimensions dimensions() const noexcept override { return LutDimensions::oneD; }
  [[nodiscard]] LutMarkupType fileMarkup() const noexcept override { return LutMarkupType::txt; }
  [[nodiscard]] std::string_view className() const noexcept override { return "ParsedOneDimensionLutFile"; }
  [[nodiscard]] const OneDimensionConverter& inputConverter() const noexcept override { return *inputConverter_; }
  [[nodiscard]] const LutDeclaredDomain& declaredDomain() const noexcept override { return declaredDomain_; }
  [[nodiscard]] const LutValueTriplets& orderedValues() const noexcept override {
    return inputConverter_->orderedEntries();
  }

 private:
  Url file_;
  LutDeclaredDomain declaredDomain_;
  std::unique_ptr<const OneDimensionConverter> inputConverter_;
};

/// A cube of code values.
class MERIDIAN_API ParsedLutFactory::ParsedThreeDimensionalIntegerFile final : public UnsignedIntegerLutFile {
 public:
  ParsedThreeDimensionalIntegerFile(Url file, const LutDeclaredDomain& declaredDomain,
                                    std::shared_ptr<const LutValueTriplets> orderedValues,
                                    std::shared_ptr<const LutCube> cube, std::int64_t bitDepth);
  ~ParsedThreeDimensionalIntegerFile() override;

  [[nodiscard]] const Url& file() const noexcept override { return file_; }
  [[nodiscard]] LutDimensions dimensions() const noexcept override { return LutDimensions::cube; }
  [[nodiscard]] LutMarkupType fileMarkup() const noexcept override { return LutMarkupType::txt; }
  [[nodiscard]] std::string_view className() const noexcept override { return "ParsedThreeDimensionalIntegerFile"; }
  [[nodiscard]] const LutValueTriplets& orderedValues() const noexcept override { return *orderedValues_; }
  [[nodiscard]] const Integer3DSampleConverter& inputConverter() const noexcept override { return inputConverter_; }
  [[nodiscard]] const LutDeclaredDomain& declaredDomain() const noexcept override { return declaredDomain_; }
  [[nodiscard]] std::int64_t bitDepth() const noexcept override { return inputConverter_.bitDepth(); }

 private:
  Url file_;
  LutDeclaredDomain declaredDomain_;
  std::shared_ptr<const LutValueTriplets> orderedValues_;
  Integer3DSampleConverter inputConverter_;
};

/// A cube of floating-point values.
class MERIDIAN_API ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile final : public ParsedLutFile {
 public:
  ParsedThreeDimensionalFloatingPointFile(Url file, const LutDeclaredDomain& declaredDomain,
                                          std::shared_ptr<const LutValueTriplets> orderedValues,
                                          std::shared_ptr<const LutCube> cube);
  ~ParsedThreeDimensionalFloatingPointFile() override;

  [[nodiscard]] const Url& file() const noexcept override { return file_; }
  [[nodiscard]] LutDimensions dimensions() const noexcept override { return LutDimensions::cube; }
  [[nodiscard]] LutMarkupType fileMarkup() const noexcept override { return LutMarkupType::txt; }
  [[nodiscard]] std::string_view className() const noexcept override {
    return "ParsedThreeDimensionalFloatingPointFile";
  }
  [[nodiscard]] const LutValueTriplets& orderedValues() const noexcept override { return *orderedValues_; }
  [[nodiscard]] const NormalizedFloatingPoint3DSampleConverter& inputConverter() const noexcept override {
    return inputConverter_;
  }
  [[nodiscard]] const LutDeclaredDomain& declaredDomain() const noexcept override { return declaredDomain_; }

 private:
  Url file_;
  LutDeclaredDomain declaredDomain_;
  std::shared_ptr<const LutValueTriplets> orderedValues_;
  NormalizedFloatingPoint3DSampleConverter inputConverter_;
};

}  // namespace meridian::inline v0_2
