// What every parsed look-up table file offers, whatever its kind.
#pragma once

#include <cstdint>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"
#include "meridian/lut/lut_values.h"
#include "meridian/lut/sample_converter.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// How a look-up table file is written. Every file that is read here is `txt`; XML documents are refused.
enum class LutMarkupType : std::uint8_t { xml, txt };

template <>
struct EnumerationTable<LutMarkupType> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutMarkupType>>({
      {LutMarkupType::xml, "xml", "XML"},
      {LutMarkupType::txt, "txt", "text"},
  });
};

/// Where a look-up table file lies and what kind of table it holds.
class MERIDIAN_API LutFile {
 public:
  LutFile() = default;
  LutFile(const LutFile&) = delete;
  LutFile& operator=(const LutFile&) = delete;
  LutFile(LutFile&&) = delete;
  LutFile& operator=(LutFile&&) = delete;
  virtual ~LutFile();

  [[nodiscard]] virtual const Url& file() const noexcept = 0;
  [[nodiscard]] virtual LutDimensions dimensions() const noexcept = 0;
  [[nodiscard]] virtual LutMarkupType fileMarkup() const noexcept = 0;
};

/// A file whose values were read, and the converter made of them.
class MERIDIAN_API ParsedLutFile : public LutFile, public LutEssence {
 public:
  /// The name of the file's class, such as "ParsedThreeDimensionalIntegerFile".
  [[nodiscard]] virtual std::string_view className() const noexcept = 0;

  [[nodiscard]] virtual const LutRGBSampleConverter& inputConverter() const noexcept = 0;

  /// The range of input values that the file declares for itself; 0 to 1 when it declares none. The converters do not
  /// use it, on purpose: they take the range from the data.
  [[nodiscard]] virtual const LutDeclaredDomain& declaredDomain() const noexcept = 0;
};

/// A file that holds unsigned code values of some bit depth.
class MERIDIAN_API UnsignedIntegerLutFile : public ParsedLutFile {
 public:
  /// The depth of the file's code values in bits.
  [[nodiscard]] virtual std::int64_t bitDepth() const noexcept = 0;
};

}  // namespace meridian::inline v0_2
