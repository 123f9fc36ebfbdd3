#include "meridian/lut/lut_stages.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>

#include "meridian/base/numbers.h"
#include "meridian/base/precondition.h"
#include "meridian/lut/bit_depth.h"
#include "meridian/lut/image_definition.h"
#include "meridian/lut/lut_interpolation.h"

namespace meridian::inline v0_2 {
namespace {

using detail::AxisPosition;

constexpr std::array channels{&LutColor::red, &LutColor::green, &LutColor::blue};

/// Returns the place of a channel's value on an axis of `points` points that covers the domain.
AxisPosition placeIn(const LutDeclaredDomain& domain, double LutColor::* channel, const LutColor& color,
                     std::int64_t points) noexcept {
  const double low = domain.minimum.*channel;
  const double high = domain.maximum.*channel;
  const detail::AxisRule axis{low, high, low, high - low};
  return detail::placeOnAxis(axis.position(color.*channel, points), points);
}

LutColor appliedTo(const LutColor& color, const LutMatrix& matrix, LutInterpolation /*interpolation*/) {
  LutColor result;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::array<double, 3>& row = matrix.rows[i];
    result.*channels[i] = row[0] * color.red + row[1] * color.green + row[2] * color.blue + matrix.offset[i];
  }
  return result;
}

LutColor appliedTo(const LutColor& color, const LutRange& range, LutInterpolation /*interpolation*/) {
  LutColor result;
  for (const auto channel : channels) {
    const double value = color.*channel * range.scale.*channel + range.offset.*channel;
    const double raised = value < range.lowest.*channel ? range.lowest.*channel : value;
    result.*channel = raised > range.highest.*channel ? range.highest.*channel : raised;
  }
  return result;
}

LutColor appliedTo(const LutColor& color, const LutCurve& curve, LutInterpolation /*interpolation*/) {
  if (curve.rows == nullptr || curve.rows->empty()) preconditionFailed("a LUT's curve needs rows");
  const std::vector<LutColor>& rows = *curve.rows;
  LutColor result;
  for (const auto channel : channels) {
    const AxisPosition place = placeIn(curve.domain, channel, color, static_cast<std::int64_t>(rows.size()));
    result.*channel = detail::blended(rows[place.lower].*channel, rows[place.upper].*channel, place.fraction);
  }
  return result;
}

LutColor appliedTo(const LutColor& color, const LutCubeStage& cube, LutInterpolation interpolation) {
  // Compared before the cube is computed, which could overflow.
  const auto face = static_cast<std::size_t>(cube.faceSize);
  if (cube.faceSize < 1 || cube.faceSize > 1 << 20 || cube.points == nullptr ||
      cube.points->size() != face * face * face) {
    preconditionFailed("a LUT's cube needs as many colours as it has points");
  }
  const auto place = [&](double LutColor::* channel) { return placeIn(cube.domain, channel, color, cube.faceSize); };
  return detail::interpolatedColor(cube.interpolation.value_or(interpolation), cube.points->data(),
                                   {face * face, face, 1}, place(&LutColor::red), place(&LutColor::green),
                                   place(&LutColor::blue));
}

LutColor appliedTo(const LutColor& color, const LutFunction& function, LutInterpolation /*interpolation*/) {
  if (!function.apply) preconditionFailed("a LUT's function is empty");
  auto red = static_cast<float>(color.red);
  auto green = static_cast<float>(color.green);
  auto blue = static_cast<float>(color.blue);
  function.apply({&red, 1}, {&green, 1}, {&blue, 1});
  return {red, green, blue};
}

/// The numbers that the results of a stage are between, for inputs from 0 to 1.
struct Bounds {
  std::array<double, 3> lowest{0, 0, 0};
  std::array<double, 3> highest{1, 1, 1};
};

Bounds boundsAfter(const LutMatrix& matrix, const Bounds& input) {
  Bounds result{matrix.offset, matrix.offset};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      const double factor = matrix.rows[row][column];
      const auto [least, most] = std::minmax({factor * input.lowest[column], factor * input.highest[column]});
      result.lowest[row] += least;
      result.highest[row] += most;
    }
  }
  return result;
}

Bounds boundsAfter(const LutRange& range, const Bounds& input) {
  Bounds result;
  for (std::size_t i = 0; i < 3; ++i) {
    const auto limited = [&, channel = channels[i]](double value) {
      return std::min(std::max(value * range.scale.*channel + range.offset.*channel, range.lowest.*channel),
                      range.highest.*channel);
    };
    std::tie(result.lowest[i], result.highest[i]) = std::minmax({limited(input.lowest[i]), limited(input.highest[i])});
  }
  return result;
}

}  // namespace

LutColor applied(const LutStage& stage, const LutColor& color, LutInterpolation interpolation) {
  return std::visit([&](const auto& each) { return appliedTo(color, each, interpolation); }, stage);
}

LutColor applied(const PublishedLut& lut, const LutColor& color, LutInterpolation interpolation) {
  LutColor result = color;
  for (const LutStage& stage : lut.stages) result = applied(stage, result, interpolation);
  return result;
}

std::array<std::uint64_t, 3> appliedToCodeValues(const PublishedLut& lut, const std::array<std::uint64_t, 3>& codes,
                                                 std::int64_t inputBitDepth, std::int64_t outputBitDepth,
                                                 LutInterpolation interpolation) {
  const std::uint64_t lastInput = largestCodeValue(inputBitDepth);
  const std::uint64_t lastOutput = largestCodeValue(outputBitDepth);
  if (lastInput == 0 || lastOutput == 0) preconditionFailed("the bit depth of code values is not 1 to 63");
  LutColor color;
  for (std::size_t i = 0; i < 3; ++i) {
    color.*channels[i] = static_cast<double>(codes[i]) / static_cast<double>(lastInput);
  }
  color = applied(lut, color, interpolation);
  std::array<std::uint64_t, 3> results{};
  for (std::size_t i = 0; i < 3; ++i) {
    const double code = color.*channels[i] * static_cast<double>(lastOutput) + 0.5;
    if (!(code >= 1)) continue;  // NaN too
    results[i] = code < static_cast<double>(lastOutput) ? static_cast<std::uint64_t>(code) : lastOutput;
  }
  return results;
}

void warnOfResults(PublishedLut& lut) {
  std::optional<Bounds> bounds = Bounds{};
  std::size_t nanCount = 0;
  const auto ofTable = [&](const SharedLutColors& colors) {
    if (colors == nullptr) return;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Bounds found{{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};
    for (const LutColor& color : *colors) {
      for (std::size_t i = 0; i < 3; ++i) {
        const double value = color.*channels[i];
        if (std::isnan(value)) ++nanCount;
        found.lowest[i] = std::min(found.lowest[i], value);
        found.highest[i] = std::max(found.highest[i], value);
      }
    }
    bounds = found;
  };
  for (const LutStage& stage : lut.stages) {
    if (const auto* const curve = std::get_if<LutCurve>(&stage)) {
      ofTable(curve->rows);
    } else if (const auto* const cube = std::get_if<LutCubeStage>(&stage)) {
      ofTable(cube->points);
    } else if (const auto* const matrix = std::get_if<LutMatrix>(&stage)) {
      if (bounds) bounds = boundsAfter(*matrix, *bounds);
    } else if (const auto* const range = std::get_if<LutRange>(&stage)) {
      if (bounds) bounds = boundsAfter(*range, *bounds);
    } else {
      bounds.reset();  // a function, of which nothing is known
    }
  }
  if (nanCount > 0) {
    lut.warnings.push_back(
        {LutWarningCode::nanValues, lut.path, std::to_string(nanCount) + (nanCount == 1 ? " value" : " values")});
  }
  const double lowest = bounds ? std::ranges::min(bounds->lowest) : 0;
  constexpr double leastNoticed = 1e-6;  // code values of 16 bits are 1.5e-5 apart
  if (lowest < -leastNoticed) {
    lut.warnings.push_back({LutWarningCode::negativeResults, lut.path, "down to " + plainDecimalText(lowest)});
  }
}

}  // namespace meridian::inline v0_2
