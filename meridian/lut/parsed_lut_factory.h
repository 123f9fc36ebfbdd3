/// \file
/// LUT files: from a path to a LUT that can be applied to samples and images. For example:
///
///     const auto file = ParsedLutFactory::parsing(Url::fromFilePath("/looks/show.cube"));
///     if (!file) return report(file.error().message());
///     const RGBSample pixel = (*file)->inputConverter().convert(64, 512, 940, 10);
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "meridian/base/expected.h"
#include "meridian/export.h"
#include "meridian/lut/lut_cube.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_file.h"
#include "meridian/lut/lut_values.h"
#include "meridian/lut/sample_converter.h"
#include "meridian/lut/text_lut_interpreter.h"
#include "meridian/media/file_extension.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Reads LUT files written as text, in the lenient, line-oriented form that most programs write: keyword lines and
/// comments, then rows of three numbers. The header lines and the data decide whether a file holds a 1D LUT or a cube,
/// and code values or floating point. XML documents are deliberately not read.
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

  /// Returns the LUT in a file; null for every failure. The extension has to be one of
  /// FileExtensionSet::colorLutFileExtensions or unknown to the vocabulary; a file without an extension fails, since no
  /// extension is that of a directory. Only three failures are logged: a known extension of another kind, a file that
  /// cannot be opened or is not a regular file, and a 1D LUT that is too short. Throws nothing but std::bad_alloc: the
  /// rows need 24 bytes each.
  [[nodiscard]] static std::unique_ptr<const ParsedLutFile> parsed(const Url& lutFilePath);

  /// Returns the LUT in a file as `parsed` does, or why there is none. Every extension is permitted if no set is given;
  /// with a set, `acceptsUnknownExtensions` permits extensions that the vocabulary does not know. The pointer is never
  /// null.
  [[nodiscard]] static Expected<std::unique_ptr<const ParsedLutFile>, LutError> parsing(
      const Url& lutFilePath,
      const std::optional<FileExtensionSet>& permittedExtensions = FileExtensionSet::colorLutFileExtensions(),
      bool acceptsUnknownExtensions = true);
};

/// A 1D LUT, of code values or floating point.
class MERIDIAN_API ParsedLutFactory::ParsedOneDimensionLutFile final : public ParsedLutFile {
 public:
  ParsedOneDimensionLutFile(Url file, const LutDeclaredDomain& declaredDomain,
                            std::unique_ptr<const OneDimensionConverter> inputConverter,
                            const LutTextFacts& textFacts = {});
  ~ParsedOneDimensionLutFile() override;

  [[nodiscard]] const Url& file() const noexcept override { return file_; }
  [[nodiscard]] LutDimensions dimensions() const noexcept override { return LutDimensions::oneD; }
  [[nodiscard]] LutMarkupType fileMarkup() const noexcept override { return LutMarkupType::txt; }
  [[nodiscard]] std::string_view className() const noexcept override { return "ParsedOneDimensionLutFile"; }
  [[nodiscard]] const OneDimensionConverter& inputConverter() const noexcept override { return *inputConverter_; }
  [[nodiscard]] const LutDeclaredDomain& declaredDomain() const noexcept override { return declaredDomain_; }
  [[nodiscard]] const LutTextFacts& textFacts() const noexcept override { return textFacts_; }
  [[nodiscard]] const LutValueTriplets& orderedValues() const noexcept override {
    return inputConverter_->orderedEntries();
  }

 private:
  Url file_;
  LutDeclaredDomain declaredDomain_;
  LutTextFacts textFacts_;
  std::unique_ptr<const OneDimensionConverter> inputConverter_;
};

/// A cube of code values.
class MERIDIAN_API ParsedLutFactory::ParsedThreeDimensionalIntegerFile final : public UnsignedIntegerLutFile {
 public:
  ParsedThreeDimensionalIntegerFile(Url file, const LutDeclaredDomain& declaredDomain,
                                    std::shared_ptr<const LutValueTriplets> orderedValues,
                                    std::shared_ptr<const LutCube> cube, std::int64_t bitDepth,
                                    const LutTextFacts& textFacts = {});
  ~ParsedThreeDimensionalIntegerFile() override;

  [[nodiscard]] const Url& file() const noexcept override { return file_; }
  [[nodiscard]] LutDimensions dimensions() const noexcept override { return LutDimensions::cube; }
  [[nodiscard]] LutMarkupType fileMarkup() const noexcept override { return LutMarkupType::txt; }
  [[nodiscard]] std::string_view className() const noexcept override { return "ParsedThreeDimensionalIntegerFile"; }
  [[nodiscard]] const LutValueTriplets& orderedValues() const noexcept override { return *orderedValues_; }
  [[nodiscard]] const Integer3DSampleConverter& inputConverter() const noexcept override { return inputConverter_; }
  [[nodiscard]] const LutDeclaredDomain& declaredDomain() const noexcept override { return declaredDomain_; }
  [[nodiscard]] const LutTextFacts& textFacts() const noexcept override { return textFacts_; }
  [[nodiscard]] std::int64_t bitDepth() const noexcept override { return inputConverter_.bitDepth(); }

 private:
  Url file_;
  LutDeclaredDomain declaredDomain_;
  LutTextFacts textFacts_;
  std::shared_ptr<const LutValueTriplets> orderedValues_;
  Integer3DSampleConverter inputConverter_;
};

/// A cube of floating-point values.
class MERIDIAN_API ParsedLutFactory::ParsedThreeDimensionalFloatingPointFile final : public ParsedLutFile {
 public:
  ParsedThreeDimensionalFloatingPointFile(Url file, const LutDeclaredDomain& declaredDomain,
                                          std::shared_ptr<const LutValueTriplets> orderedValues,
                                          std::shared_ptr<const LutCube> cube, const LutTextFacts& textFacts = {});
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
  [[nodiscard]] const LutTextFacts& textFacts() const noexcept override { return textFacts_; }

 private:
  Url file_;
  LutDeclaredDomain declaredDomain_;
  LutTextFacts textFacts_;
  std::shared_ptr<const LutValueTriplets> orderedValues_;
  NormalizedFloatingPoint3DSampleConverter inputConverter_;
};

}  // namespace meridian::inline v0_2
