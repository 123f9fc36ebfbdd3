#include "meridian/lut/lut_description.h"

#include <algorithm>
#include <limits>
#include <variant>
#include <vector>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/lut/bit_depth.h"
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

LutDescription describe(const PublishedLut& lut) {
  LutDescription result;
  const auto add = [&](std::int64_t size, const std::vector<LutColor>& colors, const LutDeclaredDomain& domain) {
    if (result.size == 0) result.declaredDomain = domain;
    result.size = size;
    result.lowValue = std::numeric_limits<double>::infinity();
    result.highValue = -result.lowValue;
    for (const LutColor& color : colors) {
      result.lowValue = std::min({result.lowValue, color.red, color.green, color.blue});
      result.highValue = std::max({result.highValue, color.red, color.green, color.blue});
    }
  };
  for (const LutStage& stage : lut.stages) {
    if (const auto* const curve = std::get_if<LutCurve>(&stage)) {
      add(static_cast<std::int64_t>(curve->rows->size()), *curve->rows, curve->domain);
    } else if (const auto* const cube = std::get_if<LutCubeStage>(&stage)) {
      add(cube->faceSize, *cube->points, cube->domain);
      result.dimensions = LutDimensions::cube;
    }
  }
  return result;
}

bool canConvertAll(const LutDescription& lut, std::int64_t outputBitDepth) noexcept {
  if (lut.lowValue < 0 || (lut.dimensions == LutDimensions::cube && lut.highValue <= 0)) return false;
  // Results are between the lowest and the highest value, but for rounding.
  const double highest = lut.highValue * (1 + 0x1p-40);
  if (!lut.valueBitDepth) {
    return truncatedUnsignedInteger(highest * static_cast<double>(largestCodeValue(outputBitDepth))).has_value();
  }
  const auto code = truncatedUnsignedInteger(highest);
  return code && rescaledCodeValue(*code, *lut.valueBitDepth, outputBitDepth);
}

}  // namespace meridian::inline v0_2
