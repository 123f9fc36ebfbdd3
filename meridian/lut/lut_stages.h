/// \file
/// A LUT as the stages that its file's format publishes, applied one after the other. For example, a 1D LUT of three
/// rows, which lifts the middle, on inputs from 0 to 1:
///
///     const LutCurve curve{std::make_shared<const std::vector<LutColor>>({{0, 0, 0}, {0.6, 0.6, 0.6}, {1, 1, 1}})};
///     const PublishedLut lut{.stages = {curve}};
///     applied(lut, {0.25, 0.5, 1});  // 0.3, 0.6, 1
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "meridian/export.h"
#include "meridian/lut/image_lut_options.h"
#include "meridian/lut/lut_format.h"
#include "meridian/lut/lut_values.h"
#include "meridian/lut/lut_warning.h"

namespace meridian::inline v0_2 {

/// The colours of a stage, shared by its copies. Stages with a null pointer or no colours terminate the process when
/// they are applied.
using SharedLutColors = std::shared_ptr<const std::vector<LutColor>>;

/// A matrix and offsets: result[i] = rows[i][0] * red + rows[i][1] * green + rows[i][2] * blue + offset[i].
struct LutMatrix {
  std::array<std::array<double, 3>, 3> rows{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  std::array<double, 3> offset{};
};

/// A scale, an offset and limits for each channel: min(max(input * scale + offset, lowest), highest). NaN stays NaN.
struct LutRange {
  static constexpr double unlimited = std::numeric_limits<double>::infinity();

  LutColor scale{1, 1, 1};
  LutColor offset{};
  LutColor lowest{-unlimited, -unlimited, -unlimited};
  LutColor highest{unlimited, unlimited, unlimited};
};

/// A 1D LUT: each channel's inputs from `domain.minimum` to `domain.maximum` run from the first row to the last, linear
/// between rows. Inputs outside are clamped; NaN counts as the minimum. Each minimum has to be below its maximum;
/// results have no meaning otherwise.
struct LutCurve {
  SharedLutColors rows;
  LutDeclaredDomain domain{};
};

/// A cube of `faceSize`³ colours, blue running fastest whatever the order in the file. Inputs from `domain.minimum` to
/// `domain.maximum` run from the first to the last point of each axis. Inputs outside are clamped; NaN counts as the
/// minimum; each minimum has to be below its maximum, and results have no meaning otherwise. `faceSize` is 1 to 2^20;
/// another one, or another number of colours, terminates the process when the stage is applied. Colours between the
/// points are found by `interpolation`, or as the caller says if the file does not declare one.
struct LutCubeStage {
  std::int64_t faceSize = 0;
  SharedLutColors points;
  LutDeclaredDomain domain{};
  std::optional<LutInterpolation> interpolation{};
};

/// A stage that another library computes, in single precision. `apply` changes the colours in place; the three spans
/// have one length. It is called from several threads at once and must not throw. An empty function terminates the
/// process when it is applied.
struct LutFunction {
  std::function<void(std::span<float> red, std::span<float> green, std::span<float> blue)> apply;
};

using LutStage = std::variant<LutMatrix, LutRange, LutCurve, LutCubeStage, LutFunction>;

/// A LUT on the scale from 0 to 1 for inputs and results, neither of which is limited to it. Callers may add stages of
/// their own, for example for formats that `readPublishedLut` leaves to another reader.
struct PublishedLut {
  LutFormat format = LutFormat::cube;
  /// The path of the file.
  std::string path{};
  /// Applied from the first to the last; none leave colours unchanged.
  std::vector<LutStage> stages{};
  /// What may surprise about the file.
  std::vector<LutWarning> warnings{};
};

/// Returns what a stage or a LUT makes of a colour, in double precision except for functions: the definition that
/// images agree with. The interpolation is that of cubes that declare none.
[[nodiscard]] MERIDIAN_API LutColor applied(const LutStage& stage, const LutColor& color,
                                            LutInterpolation interpolation = LutInterpolation::trilinear);
[[nodiscard]] MERIDIAN_API LutColor applied(const PublishedLut& lut, const LutColor& color,
                                            LutInterpolation interpolation = LutInterpolation::trilinear);

/// Returns what a LUT makes of a pixel of code values, from one depth to another, rounded to the nearest code value, or
/// the nearest of the depth if the result is beyond it; 0 for NaN. Depths are 1 to 63 bits and terminate the process
/// otherwise. As `ImageLut`, and exact below 53 bits.
[[nodiscard]] MERIDIAN_API std::array<std::uint64_t, 3> appliedToCodeValues(
    const PublishedLut& lut, const std::array<std::uint64_t, 3>& codes, std::int64_t inputBitDepth,
    std::int64_t outputBitDepth, LutInterpolation interpolation = LutInterpolation::trilinear);

/// Adds the warning nanValues if a curve or cube has NaN, and negativeResults if inputs from 0 to 1 may have results
/// below -1e-6; with a matrix after a curve or cube, or two matrices, the lowest is a lower bound. Functions after the
/// last curve or cube are not examined. Readers of formats call it when the stages are there.
MERIDIAN_API void warnOfResults(PublishedLut& lut);

}  // namespace meridian::inline v0_2
