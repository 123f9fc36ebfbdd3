/// \file
/// The colour spaces of "-c_space" as code points of ITU-T H.273 (ISO/IEC 23091-2). For example:
///
///     colorSpaceCodes(SAVRec2020ColorSpace)  // {9, 14, 9}
///     colorSpaceOf({1, 6, 1})                // SAVRec709ColorSpace: transfer 6 is the same function as 1
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>

#include "meridian/cli/transcode_values.h"

namespace meridian::inline v0_2 {

/// Code points of colour primaries, transfer characteristics and matrix coefficients.
struct ColorSpaceCodes {
  static constexpr int unspecified = 2;
  static constexpr int linearTransfer = 8;
  /// The matrix of R'G'B', which has none.
  static constexpr int rgbMatrix = 0;

  int primaries = unspecified;
  int transfer = unspecified;
  int matrix = unspecified;

  /// Returns true if all three are stated.
  [[nodiscard]] constexpr bool areStated() const noexcept {
    return primaries != unspecified && transfer != unspecified && matrix != unspecified;
  }

  friend constexpr bool operator==(const ColorSpaceCodes&, const ColorSpaceCodes&) = default;
};

/// Returns whether zscale converts from these codes, all of which are stated.
[[nodiscard]] constexpr bool isConvertible(const ColorSpaceCodes& codes) noexcept {
  const auto [primaries, transfer, matrix] = codes;
  const bool hasPrimaries = primaries == 1 || (primaries >= 4 && primaries <= 12) || primaries == 22;
  const bool hasTransfer =
      transfer == 1 || (transfer >= 4 && transfer <= 11) || (transfer >= 13 && transfer <= 16) || transfer == 18;
  if (!hasPrimaries || !hasTransfer) return false;
  const bool isHdr = transfer == 16 || transfer == 18;
  // BT.2020 with constant luminance is not defined for PQ and HLG, and ICtCp for these alone.
  if (matrix == 10) return !isHdr;
  if (matrix == 14) return isHdr;
  return matrix == ColorSpaceCodes::rgbMatrix || matrix == 1 || (matrix >= 4 && matrix <= 9) || matrix == 12 ||
         matrix == 13;
}

/// A row of the table of colour spaces.
struct ColorSpaceRow {
  SAVTranscodeArgumentColorSpaceValue value;
  ColorSpaceCodes codes;
};

/// Lists the values of "-c_space" with the code points that a file gets.
inline constexpr auto colorSpaceRows = std::to_array<ColorSpaceRow>({
    {SAVRec2020ColorSpace, {9, 14, 9}},
    {SAVRec709ColorSpace, {1, 1, 1}},
    {SAVSrgbColorSpace, {1, 13, 1}},
    {SAVSmptecColorSpace, {6, 1, 6}},
    {SAVEbu3213ColorSpace, {5, 1, 6}},
});

/// Returns the code points that a file of this colour space gets; absent for a text that is not a colour space.
[[nodiscard]] constexpr std::optional<ColorSpaceCodes> colorSpaceCodes(
    const SAVTranscodeArgumentColorSpaceValue& value) noexcept {
  for (const ColorSpaceRow& row : colorSpaceRows) {
    if (row.value == value) return row.codes;
  }
  return std::nullopt;
}

/// Returns the same colour space with the code points that ProRes has (SMPTE RDD 36, 6.1.1), where several are for the
/// same thing: transfers 1, 6, 14 and 15, matrices 5 and 6, primaries 6 and 7.
[[nodiscard]] constexpr ColorSpaceCodes withProResCodes(ColorSpaceCodes codes) noexcept {
  if (codes.primaries == 7) codes.primaries = 6;
  if (codes.transfer == 6 || codes.transfer == 14 || codes.transfer == 15) codes.transfer = 1;
  if (codes.matrix == 5) codes.matrix = 6;
  return codes;
}

/// Returns whether ProRes has these code points.
[[nodiscard]] constexpr bool isProResColor(const ColorSpaceCodes& codes) noexcept {
  const auto isOf = [](int code, std::initializer_list<int> known) {
    return std::ranges::find(known, code) != known.end();
  };
  return isOf(codes.primaries, {1, 2, 5, 6, 9, 11, 12}) && isOf(codes.transfer, {1, 2, 16, 18}) &&
         isOf(codes.matrix, {1, 2, 6, 9});
}

/// Returns the colour space with these code points; absent if there is none. Code points for the same thing count as
/// equal, and so does the matrix 0 of RGB with sRGB's.
[[nodiscard]] constexpr std::optional<SAVTranscodeArgumentColorSpaceValue> colorSpaceOf(
    const ColorSpaceCodes& codes) noexcept {
  const auto normalized = [](ColorSpaceCodes each) {
    each = withProResCodes(each);
    if (each.matrix == 0 && each.transfer == 13) each.matrix = 1;
    return each;
  };
  for (const ColorSpaceRow& row : colorSpaceRows) {
    if (normalized(row.codes) == normalized(codes)) return row.value;
  }
  return std::nullopt;
}

}  // namespace meridian::inline v0_2
