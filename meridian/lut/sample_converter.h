// Converters that lead code values of any bit depth through a look-up table.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "meridian/export.h"
#include "meridian/lut/lut_interpolator.h"
#include "meridian/lut/lut_values.h"

namespace meridian::inline v0_2 {

/// A pixel's code values.
struct RGBSample {
  std::uint64_t red = 0;
  std::uint64_t green = 0;
  std::uint64_t blue = 0;

  friend constexpr bool operator==(const RGBSample&, const RGBSample&) noexcept = default;
};

/// Leads the code values of a pixel to other ones.
class MERIDIAN_API RGBSampleConverter {
 public:
  RGBSampleConverter() = default;
  RGBSampleConverter(const RGBSampleConverter&) = delete;
  RGBSampleConverter& operator=(const RGBSampleConverter&) = delete;
  RGBSampleConverter(RGBSampleConverter&&) = delete;
  RGBSampleConverter& operator=(RGBSampleConverter&&) = delete;
  virtual ~RGBSampleConverter();

  /// The converted sample. Depths are in bits; without an output depth the result has the input's. A result that is no
  /// code value, being negative, not finite, or beyond 64 bits, stops the process: only a table with negative values
  /// or nothing but zeros gives one, or a depth that its code values cannot be brought to.
  [[nodiscard]] RGBSample convert(std::uint64_t red, std::uint64_t green, std::uint64_t blue,
                                  std::int64_t inputBitDepth,
                                  std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept;

  /// As `convert`, and absent where that would stop the process.
  [[nodiscard]] virtual std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept = 0;
};

/// A converter that belongs to a look-up table.
class MERIDIAN_API LutRGBSampleConverter : public RGBSampleConverter {
 public:
  [[nodiscard]] virtual LutDimensions dimensions() const noexcept = 0;

  /// The range of the table's values.
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

/// What both converters over cubes have in common. A cube that is null or has no points stops the process.
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

/// Converts through a cube of code values of a depth of its own: inputs are brought to that depth, looked up, truncated
/// toward zero, and brought from that depth to the output's. The depth is in bits; below 1, code values are taken as
/// they are.
class MERIDIAN_API Integer3DSampleConverter final : public ThreeDimensionalLutRGBSampleConverter {
 public:
  Integer3DSampleConverter(std::shared_ptr<const ThreeDimensionalLutCube> cube, std::int64_t bitDepth);

  /// The cube's own depth.
  [[nodiscard]] std::int64_t bitDepth() const noexcept { return bitDepth_; }

  [[nodiscard]] std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept override;

 private:
  std::int64_t bitDepth_;
};

/// Converts through a cube whose value 1 stands for the largest code value of every depth, 2^depth - 1. The results are
/// truncated toward zero. A depth below 1 or above 63 gives 0, 0, 0.
class MERIDIAN_API NormalizedFloatingPoint3DSampleConverter final : public ThreeDimensionalLutRGBSampleConverter {
 public:
  explicit NormalizedFloatingPoint3DSampleConverter(std::shared_ptr<const ThreeDimensionalLutCube> cube);

  [[nodiscard]] std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept override;
};

/// A converter over a one-dimensional table, which looks each channel up on its own: red among the rows' first numbers,
/// green among the second, blue among the third.
class MERIDIAN_API OneDimensionalLutInputConverter : public LutRGBSampleConverter {
 public:
  /// The table's rows.
  [[nodiscard]] virtual const LutValueTriplets& orderedEntries() const noexcept = 0;

  /// The depth of the code values that have a row each: the base-2 logarithm of the number of rows.
  [[nodiscard]] virtual std::int64_t lutBitDepth() const noexcept = 0;

  /// The number of rows, a power of two.
  [[nodiscard]] virtual std::uint64_t totalEntries() const noexcept = 0;

  /// The largest code value that has a row: `totalEntries` - 1.
  [[nodiscard]] virtual std::uint64_t maxInputColor() const noexcept = 0;

  /// The largest input on the table's own scale: `maxInputColor` for code values, 1 for floating point.
  [[nodiscard]] virtual double maxInputValue() const noexcept = 0;
};

/// What both kinds of one-dimensional tables have in common.
class MERIDIAN_API OneDimensionConverter : public OneDimensionalLutInputConverter {
 public:
  /// A number of rows that is no power of two stops the process.
  explicit OneDimensionConverter(std::shared_ptr<const LutValueTriplets> orderedEntries);

  [[nodiscard]] LutDimensions dimensions() const noexcept final { return LutDimensions::oneD; }
  [[nodiscard]] const LutValueTriplets& orderedEntries() const noexcept final { return *orderedEntries_; }
  [[nodiscard]] std::int64_t lutBitDepth() const noexcept final { return lutBitDepth_; }
  [[nodiscard]] std::uint64_t totalEntries() const noexcept final { return orderedEntries_->size(); }
  [[nodiscard]] std::uint64_t maxInputColor() const noexcept final { return totalEntries() - 1; }

  /// The colour at a place among the rows on each channel, from 0 to `maxInputColor`: between two rows it is linear. On
  /// the scale of the rows' values; a place outside counts as the nearer end, what is not a number as 0.
  [[nodiscard]] LutColor interpolated(const LutColor& place) const noexcept;

 private:
  std::shared_ptr<const LutValueTriplets> orderedEntries_;
  std::int64_t lutBitDepth_;
};

/// Converts through a table of code values: inputs are brought to the depth that has a row for each code value, limited
/// to the last row, looked up, and brought from the depth of the table's values to the output's.
class MERIDIAN_API OneDimensionsUnsignedIntegerConverter final : public OneDimensionConverter {
 public:
  explicit OneDimensionsUnsignedIntegerConverter(std::shared_ptr<const LutValueTriplets> orderedEntries);

  /// The depth of the table's values: that of its rows' number, or that of its largest value where it is larger. So a
  /// table of 1024 rows up to 4095 leads from 10 to 12 bits, and one of 1024 rows up to 512 darkens.
  [[nodiscard]] std::int64_t valueBitDepth() const noexcept { return valueBitDepth_; }

  [[nodiscard]] double maxInputValue() const noexcept override { return static_cast<double>(maxInputColor()); }
  [[nodiscard]] double lowValue() const noexcept override { return lowValue_; }
  [[nodiscard]] double highValue() const noexcept override { return highValue_; }

  /// A negative number in the row that is looked up is no code value; one with a fraction is truncated.
  [[nodiscard]] std::optional<RGBSample> convertIfPossible(
      std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::int64_t inputBitDepth,
      std::optional<std::int64_t> outputBitDepth = std::nullopt) const noexcept override;

 private:
  std::int64_t valueBitDepth_ = 0;
  double lowValue_ = 0;
  double highValue_ = 0;
};

/// Converts through a table of floating-point values, linear between its rows: the first row stands for an input of 0,
/// the last for one of 1, which is the largest code value of every depth, 2^depth - 1. The results are truncated
/// toward zero. A depth below 1 or above 63 gives 0, 0, 0.
class MERIDIAN_API OneDimensionFloatingPointConverter final : public OneDimensionConverter {
 public:
  OneDimensionFloatingPointConverter(std::shared_ptr<const LutValueTriplets> orderedEntries, double lowValue,
                                     double highValue);

  [[nodiscard]] static constexpr double minInputValue() noexcept { return 0; }
  [[nodiscard]] double maxInputValue() const noexcept override { return 1; }
  [[nodiscard]] double lowValue() const noexcept override { return lowValue_; }
  [[nodiscard]] double highValue() const noexcept override { return highValue_; }

  /// The input on the table's scale, each channel limited to `minInputValue` and `maxInputValue`. Of a depth without
  /// code values, 0.
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
