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
  });
};

/// Names the file in `place`. `detail` gives the number of rows that were read, where there were any, and for
/// notRegularFile what it is: "a directory", "a FIFO", "a device" or "a socket". `systemError` is set for notOpened and
/// notRead.
using LutError = Error<LutErrorCode>;

}  // namespace meridian::inline v0_2
