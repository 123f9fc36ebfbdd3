#include "meridian/lut/sample_converter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <string>
#include <utility>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/precondition.h"
#include "meridian/lut/bit_depth.h"
#include "meridian/lut/lut_interpolation.h"

namespace meridian::inline v0_2 {
namespace {

std::optional<RGBSample> codeValues(const LutColor& color) noexcept {
  const auto red = truncatedUnsignedInteger(color.red);
  const auto green = truncatedUnsignedInteger(color.green);
  const auto blue = truncatedUnsignedInteger(color.blue);
  if (!red || !green || !blue) return std::nullopt;
  return RGBSample{*red, *green, *blue};
}

std::optional<RGBSample> rescaled(const RGBSample& sample, std::int64_t from, std::int64_t to) noexcept {
  const auto red = rescaledCodeValue(sample.red, from, to);
  const auto green = rescaledCodeValue(sample.green, from, to);
  const auto blue = rescaledCodeValue(sample.blue, from, to);
  if (!red || !green || !blue) return std::nullopt;
  return RGBSample{*red, *green, *blue};
}

LutColor asColor(const RGBSample& sample) noexcept {
  return {static_cast<double>(sample.red), static_cast<double>(sample.green), static_cast<double>(sample.blue)};
}

/// Returns the code values of a result on the scale from 0 to 1.
std::optional<RGBSample> scaledCodeValues(const LutColor& color, std::int64_t bitDepth) noexcept {
  const auto scale = static_cast<double>(largestCodeValue(bitDepth));
  if (scale <= 0) return RGBSample{};
  return codeValues({color.red * scale, color.green * scale, color.blue * scale});
}

}  // namespace

RGBSampleConverter::~RGBSampleConverter() = default;
ThreeDimensionalLutConverter::~ThreeDimensionalLutConverter() = default;

RGBSample RGBSampleConverter::convert(std::uint64_t red, std::uint64_t green, std::uint64_t blue,
                                      std::int64_t inputBitDepth,
                                      std::optional<std::int64_t> outputBitDepth) const noexcept {
  const auto result = convertIfPossible(red, green, blue, inputBitDepth, outputBitDepth);
  if (!result) {
    preconditionFailed("the LUT has no code value for " + std::to_string(red) + ", " + std::to_string(green) + ", " +
                       std::to_string(blue) + " of depth " + std::to_string(inputBitDepth) + " at depth " +
                       std::to_string(outputBitDepth.value_or(inputBitDepth)));
  }
  return *result;
}

ThreeDimensionalLutRGBSampleConverter::ThreeDimensionalLutRGBSampleConverter(
    std::shared_ptr<const ThreeDimensionalLutCube> cube)
    : interpolator_(std::move(cube)) {}

Integer3DSampleConverter::Integer3DSampleConverter(std::shared_ptr<const ThreeDimensionalLutCube> cube,
                                                   std::int64_t bitDepth)
    : ThreeDimensionalLutRGBSampleConverter(std::move(cube)), bitDepth_(bitDepth) {}

std::optional<RGBSample> Integer3DSampleConverter::convertIfPossible(
    std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
    std::optional<std::int64_t> outputBitDepth) const noexcept {
  const auto input = rescaled({red, green, blue}, inputBitDepth, bitDepth_);
  if (!input) return std::nullopt;
  const LutColor color = asColor(*input);
  const auto result = codeValues(interpolator().sample(color.red, color.green, color.blue));
  if (!result) return std::nullopt;
  return rescaled(*result, bitDepth_, outputBitDepth.value_or(inputBitDepth));
}

NormalizedFloatingPoint3DSampleConverter::NormalizedFloatingPoint3DSampleConverter(
    std::shared_ptr<const ThreeDimensionalLutCube> cube)
    : ThreeDimensionalLutRGBSampleConverter(std::move(cube)) {}

std::optional<RGBSample> NormalizedFloatingPoint3DSampleConverter::convertIfPossible(
    std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
    std::optional<std::int64_t> outputBitDepth) const noexcept {
  const auto scale = static_cast<double>(largestCodeValue(inputBitDepth));
  if (scale <= 0) return RGBSample{};
  const LutColor input = asColor({red, green, blue});
  return scaledCodeValues(interpolator().sample(input.red / scale, input.green / scale, input.blue / scale),
                          outputBitDepth.value_or(inputBitDepth));
}

OneDimensionConverter::OneDimensionConverter(std::shared_ptr<const LutValueTriplets> orderedEntries)
    : orderedEntries_(std::move(orderedEntries)) {
  if (orderedEntries_ == nullptr || !std::has_single_bit(orderedEntries_->size())) {
    preconditionFailed("the number of rows of a 1D LUT must be a power of two");
  }
  lutBitDepth_ = std::countr_zero(orderedEntries_->size());
}

LutColor OneDimensionConverter::interpolated(const LutColor& place) const noexcept {
  const std::span<const LutColor> rows = orderedEntries_->colors();
  const auto last = static_cast<double>(maxInputColor());
  const auto channel = [&](double LutColor::* value) {
    const double position = place.*value > 0 ? std::min(place.*value, last) : 0;
    const auto at = detail::placeOnAxis(position, static_cast<std::int64_t>(rows.size()));
    return detail::blended(rows[at.lower].*value, rows[at.upper].*value, at.fraction);
  };
  return {channel(&LutColor::red), channel(&LutColor::green), channel(&LutColor::blue)};
}

OneDimensionsUnsignedIntegerConverter::OneDimensionsUnsignedIntegerConverter(
    std::shared_ptr<const LutValueTriplets> orderedEntries)
    : OneDimensionConverter(std::move(orderedEntries)) {
  const auto lowest = [](const LutColor& color) { return std::min({color.red, color.green, color.blue}); };
  const auto highest = [](const LutColor& color) { return std::max({color.red, color.green, color.blue}); };
  const std::span<const LutColor> rows = this->orderedEntries().colors();
  lowValue_ = lowest(std::ranges::min(rows, {}, lowest));
  highValue_ = highest(std::ranges::max(rows, {}, highest));
  std::int64_t largest = 0;
  for (const LutValueTriplet& row : this->orderedEntries()) {
    largest = std::max({largest, row.first.integerValue(), row.second.integerValue(), row.third.integerValue()});
  }
  valueBitDepth_ = std::max(lutBitDepth(), bitDepthOfMaximum(largest));
}

std::optional<RGBSample> OneDimensionsUnsignedIntegerConverter::convertIfPossible(
    std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
    std::optional<std::int64_t> outputBitDepth) const noexcept {
  // A code value that exceeds 64 bits at the LUT's depth is beyond the last row like any other.
  const auto rowOf = [&](std::uint64_t value) {
    const auto place = rescaledCodeValue(value, inputBitDepth, lutBitDepth());
    return orderedEntries()[static_cast<std::size_t>(std::min(place.value_or(maxInputColor()), maxInputColor()))];
  };
  const std::array results{rowOf(red).first.integerValue(), rowOf(green).second.integerValue(),
                           rowOf(blue).third.integerValue()};
  if (std::ranges::min(results) < 0) return std::nullopt;
  return rescaled({static_cast<std::uint64_t>(results[0]), static_cast<std::uint64_t>(results[1]),
                   static_cast<std::uint64_t>(results[2])},
                  valueBitDepth_, outputBitDepth.value_or(inputBitDepth));
}

OneDimensionFloatingPointConverter::OneDimensionFloatingPointConverter(
    std::shared_ptr<const LutValueTriplets> orderedEntries, double lowValue, double highValue)
    : OneDimensionConverter(std::move(orderedEntries)), lowValue_(lowValue), highValue_(highValue) {}

LutColor OneDimensionFloatingPointConverter::boundedInput(std::uint64_t red, std::uint64_t green, std::uint64_t blue,
                                                          std::int64_t inputBitDepth) const noexcept {
  const auto scale = static_cast<double>(largestCodeValue(inputBitDepth));
  if (scale <= 0) return {};
  const auto bounded = [&](std::uint64_t value) {
    return std::clamp(static_cast<double>(value) / scale, minInputValue(), maxInputValue());
  };
  return {bounded(red), bounded(green), bounded(blue)};
}

std::optional<RGBSample> OneDimensionFloatingPointConverter::convertIfPossible(
    std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
    std::optional<std::int64_t> outputBitDepth) const noexcept {
  if (largestCodeValue(inputBitDepth) == 0) return RGBSample{};
  const LutColor input = boundedInput(red, green, blue, inputBitDepth);
  const auto last = static_cast<double>(maxInputColor());
  return scaledCodeValues(interpolated({input.red * last, input.green * last, input.blue * last}),
                          outputBitDepth.value_or(inputBitDepth));
}

}  // namespace meridian::inline v0_2
