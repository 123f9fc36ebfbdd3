/// \file
/// What a LUT file holds, as a plain value. For example, for a cube of 33 points per axis with values from 0 to 1:
///
///     const LutDescription look = describe(*file);
///     look.dimensions;  // LutDimensions::cube
///     look.valueType;   // LutValueType::floatingPoint
///     look.size;        // 33
///     if (!canConvertAll(look, 10)) return report("the LUT has values that are not code values");
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"
#include "meridian/lut/lut_file.h"
#include "meridian/lut/lut_stages.h"

namespace meridian::inline v0_2 {

/// What the numbers of a LUT are: code values of some bit depth, or floating point on the scale from 0 to 1.
enum class LutValueType : std::uint8_t { integer, floatingPoint };

template <>
struct EnumerationTable<LutValueType> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutValueType>>({
      {LutValueType::integer, "integer", "code values"},
      {LutValueType::floatingPoint, "floatingPoint", "floating point"},
  });
};

/// The kind, size and range of a LUT file.
struct LutDescription {
  LutDimensions dimensions = LutDimensions::oneD;
  LutValueType valueType = LutValueType::floatingPoint;
  /// The points per axis of a cube, or the rows of a 1D LUT.
  std::int64_t size = 0;
  /// The rows of the file; a cube may have more or fewer than it has points.
  std::size_t rows = 0;
  /// The depth in bits of the code values that are looked up, and of those that the LUT returns. Equal for a cube;
  /// absent for floating point.
  std::optional<std::int64_t> inputBitDepth{};
  std::optional<std::int64_t> valueBitDepth{};
  /// The smallest and the largest of the LUT's values.
  double lowValue = 0;
  double highValue = 0;
  /// The range of input values that the file declares for each channel; 0 to 1 where it declares none.
  LutDeclaredDomain declaredDomain{};

  friend bool operator==(const LutDescription&, const LutDescription&) noexcept = default;
};

/// Describes a LUT file. For a class of converter that this library does not know, only `rows`, the range of the values
/// and the domain are set.
[[nodiscard]] MERIDIAN_API LutDescription describe(const ParsedLutFile& file);

/// Describes a LUT that was read as its format publishes it: the size and values of its last 1D LUT or cube, a cube if
/// any is, and the domain of its first. It has floating-point values and no rows, since stages are not rows of a file.
[[nodiscard]] MERIDIAN_API LutDescription describe(const PublishedLut& lut);

/// Returns whether the LUT's converter has a result for every sample, so that `convert` does not terminate the process.
/// Samples are code values of an input depth from 1 to 63 bits; `outputBitDepth` is in bits, at least 1. Only the range
/// of the LUT's values is examined: true is certain, false means that some samples may have no result.
[[nodiscard]] MERIDIAN_API bool canConvertAll(const LutDescription& lut, std::int64_t outputBitDepth) noexcept;

}  // namespace meridian::inline v0_2
