// Why a file is no look-up table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

enum class LutRefusalReason : std::uint8_t {
  xmlDocument,
  unsupportedExtension,
  notOpened,
  notRead,
  noRows,
  unknownDimensions,
  unusableRowCount,
  tooFewRows,
};

template <>
struct EnumerationTable<LutRefusalReason> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutRefusalReason>>({
      {LutRefusalReason::xmlDocument, "xmlDocument", "it is an XML document, and only tables written as text are read"},
      {LutRefusalReason::unsupportedExtension, "unsupportedExtension",
       "its extension is that of another kind of file, or it has none"},
      {LutRefusalReason::notOpened, "notOpened", "it cannot be opened"},
      {LutRefusalReason::notRead, "notRead", "it cannot be read to its end"},
      {LutRefusalReason::noRows, "noRows", "it has no row of three numbers with one blank between them"},
      {LutRefusalReason::unknownDimensions, "unknownDimensions",
       "it does not say whether it is a 1D table or a cube, and its number of rows is neither that of a cube (4913, "
       "35937, 274625) nor a power of two"},
      {LutRefusalReason::unusableRowCount, "unusableRowCount",
       "it is a 1D table, and its number of rows is no power of two (256, 512, 1024 ...)"},
      {LutRefusalReason::tooFewRows, "tooFewRows", "it is a 1D table of fewer than 256 rows"},
  });
};

/// Why a file was refused, with what is known of it.
struct LutRefusal {
  LutRefusalReason reason = LutRefusalReason::noRows;
  /// The rows of three numbers that were read.
  std::size_t rows = 0;
  /// What the system said of a file that is not opened or not read.
  std::error_code systemError;

  /// The reason for a person, with the number of rows or the system's words: "it cannot be opened: Permission denied".
  [[nodiscard]] MERIDIAN_API std::string message() const;
};

}  // namespace meridian::inline v0_2
