#include "meridian/lut/image_definition.h"

#include <cmath>
#include <utility>

namespace meridian::inline v0_2::detail {
namespace {

constexpr std::array channelsOfColor{&LutColor::red, &LutColor::green, &LutColor::blue};
constexpr std::array numbersOfRow{&LutValueTriplet::first, &LutValueTriplet::second, &LutValueTriplet::third};

std::array<AxisRule, 3> declaredAxes(const LutDeclaredDomain& domain) noexcept {
  const auto axis = [](double low, double high) { return AxisRule{low, high, low, high - low}; };
  return {axis(domain.minimum.red, domain.maximum.red), axis(domain.minimum.green, domain.maximum.green),
          axis(domain.minimum.blue, domain.maximum.blue)};
}

/// Returns the axes of a LUT of code values up to `largest` whose file declares nothing.
std::array<AxisRule, 3> axesOfCodeValues(double largest) noexcept {
  const AxisRule axis{0, largest, 0, largest};
  return {axis, axis, axis};
}

/// Returns the largest code value of a depth as a number, for a depth of 64 bits as well; 1 for that of 0 bits, which a
/// cube has whose highest value is just below 2.
double largestOfDepth(std::int64_t depth) noexcept {
  if (depth == 0) return 1;
  const std::uint64_t largest = largestCodeValue(depth);
  return largest == 0 ? beyondUnsignedRange : static_cast<double>(largest);
}

/// Returns a code value at the depth of the LUT.
double codeValueAtDepth(std::uint16_t code, std::int64_t from, std::int64_t to) noexcept {
  const auto scaled = rescaledCodeValue(code, from, to);
  return scaled ? static_cast<double>(*scaled) : beyondUnsignedRange;
}

double fractionOfLargest(std::uint16_t code, std::int64_t depth) noexcept {
  return static_cast<double>(code) / static_cast<double>(largestCodeValue(depth));
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

double CubeDefinition::axisValue(std::uint16_t code, const ImageFormats& formats) const noexcept {
  if (formats.areRounded()) return normalizedCodeValue(code, formats.source) * unit();
  return integerDepth ? codeValueAtDepth(code, formats.source.bitDepth, *integerDepth)
                      : fractionOfLargest(code, formats.source.bitDepth);
}

ResultScale CubeDefinition::resultScale(const ImageFormats& formats) const noexcept {
  if (formats.areRounded()) return ResultScale::rounded(unit(), formats.destination);
  if (integerDepth) return {};
  return {.factor = static_cast<double>(largestCodeValue(formats.destination.bitDepth))};
}

PixelCodes CubeDefinition::codeValues(const PixelCodes& input, const ImageFormats& formats) const noexcept {
  std::array<AxisPosition, 3> places;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    places[channel] = placeOnAxis(axes[channel].position(axisValue(input[channel], formats), faceSize), faceSize);
  }
  const LutColor result =
      interpolatedColor(interpolation, cube->lattice().data(), strides, places[0], places[1], places[2]);
  const ResultScale scaled = resultScale(formats);
  const auto codeValue = [&](double value) {
    return limitedCodeValue(scaled(std::isnan(value) ? 0 : value), resultDepth(formats), formats.destination);
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

TableDefinition::TableDefinition(const OneDimensionConverter& converter, LutValueType valueType,
                                 const LutDeclaredDomain& declaredDomain, const ImageLutOptions& options) {
  const auto rows = std::make_shared<const LutValueTriplets>(converter.orderedEntries());
  const bool usesDomain = options.domain == LutInputDomain::declared && declaredDomain.isDeclared;
  if (usesDomain) axes_ = declaredAxes(declaredDomain);
  if (valueType == LutValueType::integer) {
    integers_ = std::make_shared<const OneDimensionsUnsignedIntegerConverter>(rows);
  } else {
    floats_ =
        std::make_shared<const OneDimensionFloatingPointConverter>(rows, converter.lowValue(), converter.highValue());
    if (!usesDomain) axes_ = axesOfCodeValues(1);
  }
}

const OneDimensionConverter& TableDefinition::converter() const noexcept {
  return integers_ ? static_cast<const OneDimensionConverter&>(*integers_) : *floats_;
}

/// Looks a code value up that has a row of its own, without interpolation.
std::uint16_t TableDefinition::storedCodeValue(std::uint16_t code, std::size_t channel,
                                               const ImageFormats& formats) const noexcept {
  const std::uint64_t last = integers_->maxInputColor();
  const auto row = rescaledCodeValue(code, formats.source.bitDepth, integers_->lutBitDepth());
  const LutValueTriplet numbers =
      integers_->orderedEntries()[static_cast<std::size_t>(std::min(row.value_or(last), last))];
  const std::int64_t value = std::max<std::int64_t>((numbers.*numbersOfRow[channel]).integerValue(), 0);
  const std::uint64_t largest = formats.destination.highest();
  const auto scaled =
      rescaledCodeValue(static_cast<std::uint64_t>(value), integers_->valueBitDepth(), formats.destination.bitDepth);
  return static_cast<std::uint16_t>(std::min(scaled.value_or(largest), largest));
}

PixelCodes TableDefinition::codeValues(const PixelCodes& input, const ImageFormats& formats) const noexcept {
  const int sourceDepth = formats.source.bitDepth;
  PixelCodes result{};
  if (formats.areRounded()) {
    const ResultScale scaled = ResultScale::rounded(1, formats.destination);
    const LutColor found =
        color({normalizedCodeValue(input[0], formats.source), normalizedCodeValue(input[1], formats.source),
               normalizedCodeValue(input[2], formats.source)});
    for (std::size_t channel = 0; channel < 3; ++channel) {
      result[channel] = limitedCodeValue(scaled(found.*channelsOfColor[channel]), 0, formats.destination);
    }
    return result;
  }
  for (std::size_t channel = 0; channel < 3; ++channel) {
    if (!axes_) {
      result[channel] = storedCodeValue(input[channel], channel, formats);
      continue;
    }
    const double value = integers_ ? codeValueAtDepth(input[channel], sourceDepth, integers_->lutBitDepth())
                                   : fractionOfLargest(input[channel], sourceDepth);
    LutColor place;
    place.*channelsOfColor[channel] =
        (*axes_)[channel].position(value, static_cast<std::int64_t>(converter().totalEntries()));
    const double found = converter().interpolated(place).*channelsOfColor[channel];
    result[channel] = integers_ ? limitedCodeValue(found, integers_->valueBitDepth(), formats.destination)
                                : limitedCodeValue(found * formats.destination.white(), 0, formats.destination);
  }
  return result;
}

LutColor TableDefinition::color(const LutColor& input) const noexcept {
  const auto rows = static_cast<std::int64_t>(converter().totalEntries());
  const double inputUnit = integers_ ? static_cast<double>(integers_->maxInputColor()) : 1;
  const double resultUnit = integers_ ? largestOfDepth(integers_->valueBitDepth()) : 1;
  const auto axesOfRows = axes_.value_or(axesOfCodeValues(inputUnit));
  const LutColor found = converter().interpolated({axesOfRows[0].position(input.red * inputUnit, rows),
                                                   axesOfRows[1].position(input.green * inputUnit, rows),
                                                   axesOfRows[2].position(input.blue * inputUnit, rows)});
  return {found.red / resultUnit, found.green / resultUnit, found.blue / resultUnit};
}

}  // namespace meridian::inline v0_2::detail
