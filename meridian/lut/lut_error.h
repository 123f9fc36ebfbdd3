/// \file
/// Why a file is not a LUT. For example:
///
///     const auto file = ParsedLutFactory::parsing(Url::fromFilePath("/looks/short.cube"));
///     if (!file) std::cerr << file.error().message();
///     // "/looks/short.cube": is a 1D LUT of fewer than 256 rows: 128 rows read; export it with at least 256 rows
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"

namespace meridian::inline v0_2 {

/// Why a file is not read as a LUT.
enum class LutErrorCode : std::uint8_t {
  xmlDocument,
  unsupportedExtension,
  notOpened,
  notRegularFile,
  notRead,
  noRows,
  unknownDimensions,
  unusableRowCount,
  tooFewRows,
  otherPublishedFormat,
  noPublishedFormat,
  notReadByLibrary,
  refersToOtherFile,
  malformedLine,
  unsupportedSize,
  invalidDomain,
  truncated,
  surplusRows,
  unknownCubeSize,
  implausibleValues,
};

template <>
struct EnumerationTable<LutErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<LutErrorCode>>({
      {LutErrorCode::xmlDocument, "xmlDocument", "is an XML document, which is not a supported LUT format",
       "export the LUT as a text file such as .cube"},
      {LutErrorCode::unsupportedExtension, "unsupportedExtension", "has an unsupported extension or none",
       "if it is a LUT written as text, change its extension to .cube"},
      {LutErrorCode::notOpened, "notOpened", "cannot be opened", "check the spelling and that you may read it"},
      {LutErrorCode::notRegularFile, "notRegularFile", "is not a regular file", "name the file that holds the LUT"},
      {LutErrorCode::notRead, "notRead", "cannot be read to its end", "check the volume that it is on"},
      {LutErrorCode::noRows, "noRows", "has no row of three numbers with single blanks between them",
       "check that it is a LUT written as text"},
      {LutErrorCode::unknownDimensions, "unknownDimensions",
       "is declared neither as a 1D LUT nor as a cube, and its number of rows fits neither",
       "add a line LUT_1D_SIZE or LUT_3D_SIZE with the size"},
      {LutErrorCode::unusableRowCount, "unusableRowCount", "is a 1D LUT whose number of rows is not a power of two",
       "export it with 256, 512, 1024 ... rows"},
      {LutErrorCode::tooFewRows, "tooFewRows", "is a 1D LUT of fewer than 256 rows",
       "export it with at least 256 rows"},
      {LutErrorCode::otherPublishedFormat, "otherPublishedFormat", "is in a LUT format that is not read here",
       "export the LUT as .cube"},
      {LutErrorCode::noPublishedFormat, "noPublishedFormat", "is not in a published LUT format",
       "export the LUT as .cube"},
      {LutErrorCode::notReadByLibrary, "notReadByLibrary", "cannot be read as its format publishes it",
       "copy or export the LUT again"},
      {LutErrorCode::refersToOtherFile, "refersToOtherFile", "refers to another file", "export it as one file"},
      {LutErrorCode::malformedLine, "malformedLine", "has a line that its format does not allow",
       "correct the line or export the LUT again"},
      {LutErrorCode::unsupportedSize, "unsupportedSize", "declares a size that its format does not allow",
       "use 2 to 65536 rows for a 1D LUT, 2 to 256 points per axis for a cube"},
      {LutErrorCode::invalidDomain, "invalidDomain", "declares a domain that is empty or inverted",
       "declare a maximum above the minimum for each channel"},
      {LutErrorCode::truncated, "truncated", "has fewer rows than its size needs", "copy or export the LUT again"},
      {LutErrorCode::surplusRows, "surplusRows", "has more rows than its size needs",
       "correct the declared size or export the LUT again"},
      {LutErrorCode::unknownCubeSize, "unknownCubeSize", "has a number of rows that no cube has",
       "check that the file is complete, or export the LUT again"},
      {LutErrorCode::implausibleValues, "implausibleValues",
       "has a highest code value below 128, too low for any bit depth", "check that its values are code values"},
  });
};

/// Names the file in `place`. `detail` gives the number of rows that were read, where there were any, the number of the
/// line and the line for errors of a single line, the format for otherPublishedFormat, the other file for
/// refersToOtherFile, and for notRegularFile what it is: "a directory", "a FIFO", "a device" or "a socket".
/// `systemError` is set for notOpened and notRead.
using LutError = Error<LutErrorCode>;

/// Returns whether `readPublishedLut` left the file to another reader: it is in another published format or in none.
[[nodiscard]] constexpr bool isOfOtherFormat(const LutError& error) noexcept {
  return error.code == LutErrorCode::otherPublishedFormat || error.code == LutErrorCode::noPublishedFormat;
}

}  // namespace meridian::inline v0_2
