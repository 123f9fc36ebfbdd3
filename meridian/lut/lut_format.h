/// \file
/// The published formats of LUT files. For example:
///
///     description(LutFormat::spi3d);  // "Imageworks 3D LUT (.spi3d)"
#pragma once

#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"

namespace meridian::inline v0_2 {

/// A published format of LUT files. `readPublishedLut` reads the first two and recognises the others.
enum class LutFormat : std::uint8_t {
  cube,
  threeDl,
  cinespace,
  spi1d,
  spi3d,
  spimtx,
  itx,
  houdini,
  discreet,
  pandora,
  nukeField,
  truelight,
  clf,
  ctf,
};

template <>
struct EnumerationTable<LutFormat> {
  static constexpr auto rows = std::to_array<EnumerationRow<LutFormat>>({
      {LutFormat::cube, "cube", "Cube LUT (.cube)"},
      {LutFormat::threeDl, "3dl", "Lustre or Flame 3D LUT (.3dl)"},
      {LutFormat::cinespace, "csp", "Cinespace LUT (.csp)"},
      {LutFormat::spi1d, "spi1d", "Imageworks 1D LUT (.spi1d)"},
      {LutFormat::spi3d, "spi3d", "Imageworks 3D LUT (.spi3d)"},
      {LutFormat::spimtx, "spimtx", "Imageworks matrix (.spimtx)"},
      {LutFormat::itx, "itx", "IRIDAS 3D LUT (.itx)"},
      {LutFormat::houdini, "houdini", "Houdini LUT (.lut)"},
      {LutFormat::discreet, "discreet", "Discreet 1D LUT (.lut)"},
      {LutFormat::pandora, "pandora", "Pandora 3D LUT (.m3d)"},
      {LutFormat::nukeField, "vf", "Nuke vector field (.vf)"},
      {LutFormat::truelight, "truelight", "Truelight cube (.cub)"},
      {LutFormat::clf, "clf", "Common LUT Format (.clf)"},
      {LutFormat::ctf, "ctf", "Color Transform Format (.ctf)"},
  });
};

}  // namespace meridian::inline v0_2
