/// \file
/// A LUT of several stages, prepared for images: blocks of pixels pass through one stage after the other.
///
/// Code values begin with a lookup: the stages before the first that mixes channels are folded into one table with an
/// entry for each code value, computed in double precision. If no stage mixes channels, the table holds the resulting
/// code values, so images are exactly as the definition says. Code values are rounded to the nearest. Otherwise every
/// stage's result is rounded to single precision, and cubes are computed in it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "meridian/lut/cube_kernel.h"
#include "meridian/lut/image_definition.h"
#include "meridian/lut/image_view.h"
#include "meridian/lut/lut_stages.h"

namespace meridian::inline v0_2::detail {

/// Returns the definition of a stage that is a cube, with the interpolation that it declares or else the given one.
[[nodiscard]] CubeDefinition definitionOf(const LutCubeStage& stage, LutInterpolation interpolation);

class StagesKernel {
 public:
  /// For code values, with formats, or for floating point, without.
  StagesKernel(PublishedLut lut, const std::optional<ImageFormats>& formats, LutInterpolation interpolation);

  /// The plain definitions, in double precision.
  [[nodiscard]] PixelCodes codeValues(const PixelCodes& input) const;
  [[nodiscard]] LutColor color(const LutColor& input) const;

  /// Applies the stages to the rows. The images have to be usable.
  template <ImageSample Sample>
  void apply(const PixelRows<Sample>& rows) const;

 private:
  /// A stage as it is applied to single precision.
  using FloatStage = std::variant<LutMatrix, LutRange, LutCurve, CubeKernel, LutFunction>;
  struct Block;

  [[nodiscard]] LutColor folded(const LutColor& input) const;
  [[nodiscard]] LutColor normalized(const PixelCodes& input) const noexcept;
  [[nodiscard]] PixelCodes resultCodes(const LutColor& color) const noexcept;
  [[nodiscard]] std::array<float, 3> entryOf(std::uint16_t code) const;
  void prepareEntries();
  void applyStages(Block& block, std::size_t count) const;

  template <ImageSample Sample>
  void loadPixels(const ImageView<const Sample>& source, Block& block) const;
  template <ImageSample Sample>
  void storePixels(const Block& block, bool hasAlpha, const ImageView<Sample>& destination) const;

  PublishedLut lut_;
  std::optional<ImageFormats> formats_;
  LutInterpolation interpolation_;
  /// The stages that the table holds, and those after them.
  std::size_t foldedStages_ = 0;
  std::vector<FloatStage> stages_;
  /// What the folded stages make of each code value of the source, in each channel.
  std::array<std::vector<float>, 3> entries_;
};

extern template void StagesKernel::apply(const PixelRows<std::uint8_t>&) const;
extern template void StagesKernel::apply(const PixelRows<std::uint16_t>&) const;
extern template void StagesKernel::apply(const PixelRows<float>&) const;

}  // namespace meridian::inline v0_2::detail
