#include "meridian/engine/libav/orientation.h"

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <array>
#include <cmath>

namespace meridian::inline v0_2::libav {

std::optional<Orientation> orientationOf(std::span<const std::uint8_t> displayMatrix) {
  constexpr std::size_t count = 9;
  std::array<std::int32_t, count> matrix{};
  if (displayMatrix.size() < sizeof matrix) return std::nullopt;
  std::copy_n(displayMatrix.data(), sizeof matrix, reinterpret_cast<std::uint8_t*>(matrix.data()));
  Orientation orientation;
  const double determinant = static_cast<double>(matrix[0]) * matrix[4] - static_cast<double>(matrix[1]) * matrix[3];
  orientation.isMirrored = determinant < 0;
  if (orientation.isMirrored) av_display_matrix_flip(matrix.data(), 1, 0);
  const double counterclockwise = av_display_rotation_get(matrix.data());
  if (!std::isfinite(counterclockwise)) return std::nullopt;
  const auto clockwise = static_cast<int>(std::lround(-counterclockwise));
  orientation.rotation = (clockwise % 360 + 360) % 360;
  return orientation;
}

}  // namespace meridian::inline v0_2::libav
