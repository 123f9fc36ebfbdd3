/// \file
/// The matrices between Y'CbCr and R'G'B'. For example:
///
///     lumaWeights(1)->red;    // 0.2126, of BT.709
///     lumaWeights(8);         // absent: YCgCo has other equations
#pragma once

#include <algorithm>
#include <array>
#include <optional>

namespace meridian::inline v0_2::libav {

/// The weights of red and blue in luma; green has the rest.
struct LumaWeights {
  double red = 0;
  double blue = 0;
};

/// A row of ITU-T H.273, table 4.
struct MatrixRow {
  int code;
  LumaWeights weights;
};

/// Lists the matrices that swscale has too, by their code points. That of BT.2020 with constant luminance (10) is left
/// out: swscale takes it for the other one.
inline constexpr auto matrixRows = std::to_array<MatrixRow>({{1, {0.2126, 0.0722}},
                                                             {4, {0.30, 0.11}},
                                                             {5, {0.299, 0.114}},
                                                             {6, {0.299, 0.114}},
                                                             {7, {0.212, 0.087}},
                                                             {9, {0.2627, 0.0593}}});

/// Returns the weights of a matrix by its code point; absent if swscale does not have it.
[[nodiscard]] constexpr std::optional<LumaWeights> lumaWeights(int code) noexcept {
  for (const MatrixRow& row : matrixRows) {
    if (row.code == code) return row.weights;
  }
  return std::nullopt;
}

}  // namespace meridian::inline v0_2::libav
