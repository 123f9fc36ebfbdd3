#include "meridian/lut/lut_description.h"

#include "meridian/lut/lut_parts.h"

namespace meridian::inline v0_2 {

detail::LutParts detail::partsOf(const ParsedLutFile& file) noexcept {
  const LutRGBSampleConverter& converter = file.inputConverter();
  LutParts parts;
  parts.cube = dynamic_cast<const ThreeDimensionalLutConverter*>(&converter);
  parts.table = dynamic_cast<const OneDimensionConverter*>(&converter);
  parts.integerTable = dynamic_cast<const OneDimensionsUnsignedIntegerConverter*>(parts.table);
  if (const auto* const integers = dynamic_cast<const UnsignedIntegerLutFile*>(&file)) {
    parts.cubeBitDepth = integers->bitDepth();
  }
  return parts;
}

LutDescription describe(const ParsedLutFile& file) {
  const detail::LutParts parts = detail::partsOf(file);
  LutDescription result{.dimensions = file.dimensions(),
                        .rows = file.orderedValues().size(),
                        .lowValue = file.inputConverter().lowValue(),
                        .highValue = file.inputConverter().highValue(),
                        .declaredDomain = file.declaredDomain()};
  if (parts.cube != nullptr) {
    result.size = parts.cube->interpolator().cube()->faceSize();
    result.inputBitDepth = result.valueBitDepth = parts.cubeBitDepth;
  } else if (parts.table != nullptr) {
    result.size = static_cast<std::int64_t>(parts.table->totalEntries());
  }
  if (parts.integerTable != nullptr) {
    result.inputBitDepth = parts.integerTable->lutBitDepth();
    result.valueBitDepth = parts.integerTable->valueBitDepth();
  }
  if (result.valueBitDepth) result.valueType = LutValueType::integer;
  return result;
}

}  // namespace meridian::inline v0_2
