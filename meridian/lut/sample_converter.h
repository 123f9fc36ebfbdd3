/// \file
/// Converters that apply a LUT to code values of any bit depth. For example, 10 bits in and 12 bits out:
///
///     const LutRGBSampleConverter& converter = file->inputConverter();
///     const RGBSample result = converter.convert(64, 512, 940, 10, 12);
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "meridian/export.h"
#include "meridian/lut/lut_interpolator.h"
#include "meridian/lut/lut_values.h"

namespace meridian::inline v0_2 {

/// The code values of a pixel.
struct RGBSample {
  std::uint64_t red = 0;
  std::uint64_t green = 0;
  std::uint64_t blue = 0;

  friend constexpr bool operator==(const RGBSample&, const RGBSample&) noexcept = default;
};

/// Converts the code values of a pixel.
class MERIDIAN_API RGBSampleConverter {
 public:
  RGBSampleConverter() = default;
  RGBSampleConverter(const RGBSampleConverter&) = delete;
  RGBSampleConverter& operator=(const RGBSampleConverter&) = delete;
  RGBSampleConverter(RGBSampleConverter&&) = delete;
  RGBSampleConverter& operator=(RGBSampleConverter&&) = delete;
  virtual ~RGBSampleConverter();

  /// Returns the converted sample. Depths are in bits; without an output depth the result has the input's. Terminates
  /// the process if there is no result, which happens for
  ///
  /// - a cube whose largest value is 0, such as one of zeros only: every sample, since inputs are divided by that
  /// value;
  /// - a LUT with negative values: samples whose result is negative, if only by a fraction, or for a 1D LUT of code
  ///   values whose row holds -1 or less;
  /// - a floating-point LUT of very large values: samples whose result times 2^depth - 1 is 2^64 or more;
  /// - an output depth of 64 bits or more with a LUT of code values: samples whose result does not fit in 64 bits at
  ///   that depth;
  /// - a cube of code values: samples beyond the input depth's largest code value that do not fit in 64 bits at the
  ///   cube's depth.
  ///
  /// `canConvertAll` (lut_description.h) answers for a whole file, `convertIfPossible` for a single sample.
  [[nodiscard]] RGBSample convert(std::uint64_t red, std::uint64_t green, std::uint64_t blue,
                                  std::int64_t inputBitDepth,
                                  std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept;

  /// Returns what `convert` returns, or nothing where that would terminate the process.
  [[nodiscard]] virtual std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept = 0;
};

/// A converter that belongs to a LUT.
class MERIDIAN_API LutRGBSampleConverter : public RGBSampleConverter {
 public:
  [[nodiscard]] virtual LutDimensions dimensions() const noexcept = 0;

  /// Returns the smallest and the largest value of the LUT.
  [[nodiscard]] virtual double lowValue() const noexcept = 0;
  [[nodiscard]] virtual double highValue() const noexcept = 0;
};

/// A converter with an interpolator over a cube.
class MERIDIAN_API ThreeDimensionalLutConverter {
 public:
  ThreeDimensionalLutConverter() = default;
  ThreeDimensionalLutConverter(const ThreeDimensionalLutConverter&) = delete;
  ThreeDimensionalLutConverter& operator=(const ThreeDimensionalLutConverter&) = delete;
  ThreeDimensionalLutConverter(ThreeDimensionalLutConverter&&) = delete;
  ThreeDimensionalLutConverter& operator=(ThreeDimensionalLutConverter&&) = delete;
  virtual ~ThreeDimensionalLutConverter();

  [[nodiscard]] virtual const TrilinearLutInterpolator& interpolator() const noexcept = 0;
};

/// The base of both converters over cubes. Terminates the process for a null cube or one without points.
class MERIDIAN_API ThreeDimensionalLutRGBSampleConverter : public LutRGBSampleConverter,
                                                           public ThreeDimensionalLutConverter {
 public:
  explicit ThreeDimensionalLutRGBSampleConverter(std::shared_ptr<const ThreeDimensionalLutCube> cube);

  [[nodiscard]] const TrilinearLutInterpolator& interpolator() const noexcept final { return interpolator_; }
  [[nodiscard]] LutDimensions dimensions() const noexcept final { return LutDimensions::cube; }
  [[nodiscard]] double lowValue() const noexcept final { return interpolator_.cube()->lowValue(); }
  [[nodiscard]] double highValue() const noexcept final { return interpolator_.cube()->highValue(); }

 private:
  TrilinearLutInterpolator interpolator_;
};

/// Applies a cube of code values, which has a depth of its own: inputs are converted to that depth and looked up, and
/// the results are truncated toward zero and converted to the output's depth. The depth is in bits; below 1, code
/// values stay as they are.
class MERIDIAN_API Integer3DSampleConverter final : public ThreeDimensionalLutRGBSampleConverter {
 public:
  Integer3DSampleConverter(std::shared_ptr<const ThreeDimensionalLutCube> cube, std::int64_t bitDepth);

  /// Returns the cube's own depth in bits.
  [[nodiscard]] std::int64_t bitDepth() const noexcept { return bitDepth_; }

  [[nodiscard]] std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept override;

 private:
  std::int64_t bitDepth_;
};

/// Applies a cube whose value 1 means the largest code value of every depth, 2^depth - 1. The results are truncated
/// toward zero. Returns 0, 0, 0 for a depth below 1 or above 63.
class MERIDIAN_API NormalizedFloatingPoint3DSampleConverter final : public ThreeDimensionalLutRGBSampleConverter {
 public:
  explicit NormalizedFloatingPoint3DSampleConverter(std::shared_ptr<const ThreeDimensionalLutCube> cube);

  [[nodiscard]] std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept override;
};

/// A converter over a 1D LUT, which looks up each channel on its own: red among the rows' first numbers, green among
/// the second, blue among the third.
class MERIDIAN_API OneDimensionalLutInputConverter : public LutRGBSampleConverter {
 public:
  /// Returns the rows of the LUT.
  [[nodiscard]] virtual const LutValueTriplets& orderedEntries() const noexcept = 0;

  /// Returns the depth at which each code value has one row: the base-2 logarithm of the number of rows.
  [[nodiscard]] virtual std::int64_t lutBitDepth() const noexcept = 0;

  /// Returns the number of rows, a power of two.
  [[nodiscard]] virtual std::uint64_t totalEntries() const noexcept = 0;

  /// Returns the largest code value that has a row: `totalEntries` - 1.
  [[nodiscard]] virtual std::uint64_t maxInputColor() const noexcept = 0;

  /// Returns the largest input on the LUT's own scale: `maxInputColor` for code values, 1 for floating point.
  [[nodiscard]] virtual double maxInputValue() const noexcept = 0;
};

/// The base of the converters over both kinds of 1D LUT.
class MERIDIAN_API OneDimensionConverter : public OneDimensionalLutInputConverter {
 public:
  /// Terminates the process if the number of rows is not a power of two.
  explicit OneDimensionConverter(std::shared_ptr<const LutValueTriplets> orderedEntries);

  [[nodiscard]] LutDimensions dimensions() const noexcept final { return LutDimensions::oneD; }
  [[nodiscard]] const LutValueTriplets& orderedEntries() const noexcept final { return *orderedEntries_; }
  [[nodiscard]] std::int64_t lutBitDepth() const noexcept final { return lutBitDepth_; }
  [[nodiscard]] std::uint64_t totalEntries() const noexcept final { return orderedEntries_->size(); }
  [[nodiscard]] std::uint64_t maxInputColor() const noexcept final { return totalEntries() - 1; }

  /// Returns the colour at a place among the rows, from 0 to `maxInputColor` for each channel, interpolated linearly
  /// between two rows and on the scale of the rows' values. A place outside is clamped; NaN counts as 0.
  [[nodiscard]] LutColor interpolated(const LutColor& place) const noexcept;

 private:
  std::shared_ptr<const LutValueTriplets> orderedEntries_;
  std::int64_t lutBitDepth_;
};

/// Applies a 1D LUT of code values: inputs are converted to `lutBitDepth`, clamped to the last row and looked up, and
/// the results are converted from `valueBitDepth` to the output's depth.
class MERIDIAN_API OneDimensionsUnsignedIntegerConverter final : public OneDimensionConverter {
 public:
  explicit OneDimensionsUnsignedIntegerConverter(std::shared_ptr<const LutValueTriplets> orderedEntries);

  /// Returns the depth of the LUT's values: `lutBitDepth`, or the depth of its largest value if that is larger. So a
  /// LUT of 1024 rows up to 4095 converts from 10 to 12 bits, and one of 1024 rows up to 512 darkens.
  [[nodiscard]] std::int64_t valueBitDepth() const noexcept { return valueBitDepth_; }

  [[nodiscard]] double maxInputValue() const noexcept override { return static_cast<double>(maxInputColor()); }
  [[nodiscard]] double lowValue() const noexcept override { return lowValue_; }
  [[nodiscard]] double highValue() const noexcept override { return highValue_; }

  /// Returns nothing for a row with a negative number. Fractions are truncated.
  [[nodiscard]] std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept override;

 private:
  std::int64_t valueBitDepth_ = 0;
  double lowValue_ = 0;
  double highValue_ = 0;
};

/// Applies a 1D LUT of floating-point values, interpolated linearly between its rows: the first row is the result for
/// input 0, the last for input 1. Input 1 is the largest code value of every depth, 2^depth - 1. The results are
/// truncated toward zero. Returns 0, 0, 0 for a depth below 1 or above 63.
class MERIDIAN_API OneDimensionFloatingPointConverter final : public OneDimensionConverter {
 public:
  OneDimensionFloatingPointConverter(std::shared_ptr<const LutValueTriplets> orderedEntries, double lowValue,
                                     double highValue);

  [[nodiscard]] static constexpr double minInputValue() noexcept { return 0; }
  [[nodiscard]] double maxInputValue() const noexcept override { return 1; }
  [[nodiscard]] double lowValue() const noexcept override { return lowValue_; }
  [[nodiscard]] double highValue() const noexcept override { return highValue_; }

  /// Returns the input on the LUT's scale, each channel clamped to `minInputValue` and `maxInputValue`; 0 for a depth
  /// below 1 or above 63.
  [[nodiscard]] LutColor boundedInput(std::uint64_t red, std::uint64_t green, std::uint64_t blue,
                                      std::int64_t inputBitDepth) const noexcept;

  [[nodiscard]] std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept override;

 private:
  double lowValue_;
  double highValue_;
};

}  // namespace meridian::inline v0_2
