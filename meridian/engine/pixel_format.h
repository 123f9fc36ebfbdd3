/// \file
/// The pixel formats of frames between decoder and encoder. For example:
///
///     tableRow(PixelFormat::yuv422p10).bitDepth         // 10
///     rawValue(PixelFormat::yuv422p10)                  // "yuv422p10le", FFmpeg's name
///     planarRgb(12, false)                              // PixelFormat::gbrp12
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/engine/media_description.h"

namespace meridian::inline v0_2 {

/// A pixel format that a plan converts to. The raw value is FFmpeg's name.
enum class PixelFormat : std::uint8_t {
  yuv420p,
  yuv420p10,
  yuv420p12,
  yuv422p,
  yuv422p10,
  yuv444p,
  yuv444p10,
  yuva444p10,
  /// Full range, as JPEG has it.
  yuvj420p,
  yuvj422p,
  gbrp10,
  gbrp12,
  gbrp16,
  gbrap10,
  gbrap12,
  gbrap16,
};

struct PixelFormatRow {
  PixelFormat value;
  std::string_view rawValue;
  ChromaSubsampling chroma;
  int bitDepth;
  bool hasAlpha = false;
  ColorRange range = ColorRange::limited;
  std::string_view description = {};
};

template <>
struct EnumerationTable<PixelFormat> {
  using enum PixelFormat;
  using enum ChromaSubsampling;
  static constexpr auto full = ColorRange::full;
  static constexpr auto rows = std::to_array<PixelFormatRow>({
      {yuv420p, "yuv420p", yuv420, 8},
      {yuv420p10, "yuv420p10le", yuv420, 10},
      {yuv420p12, "yuv420p12le", yuv420, 12},
      {yuv422p, "yuv422p", yuv422, 8},
      {yuv422p10, "yuv422p10le", yuv422, 10},
      {yuv444p, "yuv444p", yuv444, 8},
      {yuv444p10, "yuv444p10le", yuv444, 10},
      {yuva444p10, "yuva444p10le", yuv444, 10, true},
      {yuvj420p, "yuvj420p", yuv420, 8, false, full},
      {yuvj422p, "yuvj422p", yuv422, 8, false, full},
      {gbrp10, "gbrp10le", rgb, 10, false, full},
      {gbrp12, "gbrp12le", rgb, 12, false, full},
      {gbrp16, "gbrp16le", rgb, 16, false, full},
      {gbrap10, "gbrap10le", rgb, 10, true, full},
      {gbrap12, "gbrap12le", rgb, 12, true, full},
      {gbrap16, "gbrap16le", rgb, 16, true, full},
  });
};

/// Returns the planar RGB format in which a LUT is applied to images of this depth: 10 bits for fewer, since RGB of the
/// same depth as Y'CbCr loses code values; 16 bits for more than 12.
[[nodiscard]] constexpr PixelFormat planarRgb(int bitDepth, bool hasAlpha) noexcept {
  if (bitDepth <= 10) return hasAlpha ? PixelFormat::gbrap10 : PixelFormat::gbrp10;
  if (bitDepth <= 12) return hasAlpha ? PixelFormat::gbrap12 : PixelFormat::gbrp12;
  return hasAlpha ? PixelFormat::gbrap16 : PixelFormat::gbrp16;
}

}  // namespace meridian::inline v0_2
