#include "meridian/lut/image_definition.h"

#include <cmath>
#include <utility>

namespace meridian::inline v0_2::detail {
namespace {

std::array<AxisRule, 3> declaredAxes(const LutDeclaredDomain& domain) noexcept {
  const auto axis = [](double low, double high) { return AxisRule{low, high, low, high - low}; };
  return {axis(domain.minimum.red, domain.maximum.red), axis(domain.minimum.green, domain.maximum.green),
          axis(domain.minimum.blue, domain.maximum.blue)};
}

/// The axes of a table of code values up to `largest`, where the file declares nothing.
std::array<AxisRule, 3> axesOfCodeValues(double largest) noexcept {
  const AxisRule axis{0, largest, 0, largest};
  return {axis, axis, axis};
}

/// All code values of a depth as a number, also where the depth is that of 64 bits.
double largestOfDepth(std::int64_t depth) noexcept {
  const std::uint64_t largest = largestCodeValue(depth);
  return largest == 0 ? 18446744073709551615.0 : static_cast<double>(largest);
}

}  // namespace

CubeDefinition::CubeDefinition(std::shared_ptr<const ThreeDimensionalLutCube> sharedCube,
                               std::optional<std::int64_t> depth, const LutDeclaredDomain& declaredDomain,
                               const ImageLutOptions& options)
    : cube(std::move(sharedCube)),
      integerDepth(depth),
      interpolation(options.interpolation),
      faceSize(cube->faceSize()) {
  const auto face = static_cast<std::size_t>(faceSize);
  strides = options.axisOrder == LutAxisOrder::blueFastest ? LatticeStrides{face * face, face, 1}
                                                           : LatticeStrides{1, face, face * face};
  if (options.domain == LutInputDomain::dataRange) {
    const AxisRule axis{cube->lowValue(), cube->highValue(), 0, cube->highValue()};
    axes = {axis, axis, axis};
  } else if (integerDepth && !declaredDomain.isDeclared) {
    axes = axesOfCodeValues(largestOfDepth(*integerDepth));
  } else {
    axes = declaredAxes(declaredDomain);
  }
}

double CubeDefinition::unit() const noexcept { return integerDepth ? largestOfDepth(*integerDepth) : 1; }

PixelCodes CubeDefinition::codeValues(const PixelCodes& input, const ImageDepths& depths) const noexcept {
  std::array<AxisPosition, 3> places;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    places[channel] = placeOnAxis(axes[channel].position(axisValue(input[channel], depths.source), faceSize), faceSize);
  }
  const LutColor result =
      interpolatedColor(interpolation, cube->lattice().data(), strides, places[0], places[1], places[2]);
  const double scale = resultScale(depths.destination);
  const auto codeValue = [&](double value) {
    return limitedCodeValue(value * scale, resultDepth(depths.destination), depths.destination);
  };
  return {codeValue(result.red), codeValue(result.green), codeValue(result.blue)};
}

LutColor CubeDefinition::color(const LutColor& input) const noexcept {
  const double scale = unit();
  const auto place = [&](std::size_t channel, double value) {
    return placeOnAxis(axes[channel].position(value * scale, faceSize), faceSize);
  };
  const LutColor result = interpolatedColor(interpolation, cube->lattice().data(), strides, place(0, input.red),
                                            place(1, input.green), place(2, input.blue));
  const auto scaledBack = [scale](double value) { return std::isnan(value) ? 0 : value / scale; };
  return {scaledBack(result.red), scaledBack(result.green), scaledBack(result.blue)};
}

TableDefinition::TableDefinition(const OneDimensionConverter& converter, const LutDeclaredDomain& declaredDomain,
                                 const ImageLutOptions& options) {
  const auto rows = std::make_shared<const LutValueTriplets>(converter.orderedEntries());
  const bool usesDomain = options.domain == LutInputDomain::declared && declaredDomain.isDeclared;
  if (usesDomain) axes = declaredAxes(declaredDomain);
  if (dynamic_cast<const OneDimensionsUnsignedIntegerConverter*>(&converter) != nullptr) {
    integers = std::make_shared<const OneDimensionsUnsignedIntegerConverter>(rows);
  } else {
    floats =
        std::make_shared<const OneDimensionFloatingPointConverter>(rows, converter.lowValue(), converter.highValue());
    if (!usesDomain) axes = axesOfCodeValues(1);
  }
}

const OneDimensionConverter& TableDefinition::converter() const noexcept {
  return integers ? static_cast<const OneDimensionConverter&>(*integers) : *floats;
}

PixelCodes TableDefinition::codeValues(const PixelCodes& input, const ImageDepths& depths) const noexcept {
  constexpr std::array values{&LutColor::red, &LutColor::green, &LutColor::blue};
  constexpr std::array numbers{&LutValueTriplet::first, &LutValueTriplet::second, &LutValueTriplet::third};
  const auto rows = static_cast<std::int64_t>(converter().totalEntries());
  PixelCodes result{};
  for (std::size_t channel = 0; channel < 3; ++channel) {
    if (!axes) {
      const auto row = rescaledCodeValue(input[channel], depths.source, integers->lutBitDepth());
      const std::uint64_t last = integers->maxInputColor();
      const std::int64_t value =
          (integers->orderedEntries()[static_cast<std::size_t>(row && *row < last ? *row : last)].*numbers[channel])
              .integerValue();
      const auto scaled = rescaledCodeValue(static_cast<std::uint64_t>(value < 0 ? 0 : value),
                                            integers->valueBitDepth(), depths.destination);
      const std::uint64_t largest = largestCodeValue(depths.destination);
      result[channel] = static_cast<std::uint16_t>(scaled && *scaled < largest ? *scaled : largest);
      continue;
    }
    const double value =
        integers ? axisInput(input[channel], depths.source, integers->lutBitDepth())
                 : static_cast<double>(input[channel]) / static_cast<double>(largestCodeValue(depths.source));
    LutColor place;
    place.*values[channel] = (*axes)[channel].position(value, rows);
    const double found = converter().interpolated(place).*values[channel];
    result[channel] = integers ? limitedCodeValue(found, integers->valueBitDepth(), depths.destination)
                               : limitedCodeValue(found * static_cast<double>(largestCodeValue(depths.destination)), 0,
                                                  depths.destination);
  }
  return result;
}

LutColor TableDefinition::color(const LutColor& input) const noexcept {
  const auto rows = static_cast<std::int64_t>(converter().totalEntries());
  const double inputUnit = integers ? static_cast<double>(integers->maxInputColor()) : 1;
  const double resultUnit = integers ? largestOfDepth(integers->valueBitDepth()) : 1;
  const auto axesOfRows = axes.value_or(axesOfCodeValues(inputUnit));
  const LutColor found = converter().interpolated({axesOfRows[0].position(input.red * inputUnit, rows),
                                                   axesOfRows[1].position(input.green * inputUnit, rows),
                                                   axesOfRows[2].position(input.blue * inputUnit, rows)});
  return {found.red / resultUnit, found.green / resultUnit, found.blue / resultUnit};
}

}  // namespace meridian::inline v0_2::detail
