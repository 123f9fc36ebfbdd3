/// \file
/// The makers of cameras and software that the suite knows. For example:
///
///     description(MediaCorporation::goPro)             // "GoPro"
///     isHardwareManufacturer(MediaCorporation::adobe)  // false
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "meridian/base/enumeration.h"
#include "meridian/media/media_names.h"

namespace meridian::inline v0_2 {

/// A maker. The raw value is the name of the case, the description is the maker's name.
enum class MediaCorporation : std::uint8_t {
  adobe,
  apple,
  arri,
  avid,
  blackmagic,
  canon,
  codex,
  convergentDesign,
  dji,
  goPro,
  insta360,
  jvc,
  nikon,
  panasonic,
  phantom,
  red,
  sony,
};

template <>
struct EnumerationTable<MediaCorporation> {
  static constexpr auto rows = std::to_array<EnumerationRow<MediaCorporation>>({
      {MediaCorporation::adobe, "adobe", SLVMediaCorporationAdobe},
      {MediaCorporation::apple, "apple", SLVMediaCorporationApple},
      {MediaCorporation::arri, "arri", SLVMediaCorporationArri},
      {MediaCorporation::avid, "avid", SLVMediaCorporationAvid},
      {MediaCorporation::blackmagic, "blackmagic", SLVMediaCorporationBlackMagic},
      {MediaCorporation::canon, "canon", SLVMediaCorporationCanon},
      {MediaCorporation::codex, "codex", SLVMediaCorporationCodex},
      {MediaCorporation::convergentDesign, "convergentDesign", SLVMediaCorporationConvergentDesign},
      {MediaCorporation::dji, "dji", SLVMediaCorporationDJI},
      {MediaCorporation::goPro, "goPro", SLVMediaCorporationGoPro},
      {MediaCorporation::insta360, "insta360", SLVMediaCorporationInsta360},
      {MediaCorporation::jvc, "jvc", SLVMediaCorporationJVC},
      {MediaCorporation::nikon, "nikon", SLVMediaCorporationNikon},
      {MediaCorporation::panasonic, "panasonic", SLVMediaCorporationPanasonic},
      {MediaCorporation::phantom, "phantom", SLVMediaCorporationPhantom},
      {MediaCorporation::red, "red", SLVMediaCorporationRED},
      {MediaCorporation::sony, "sony", SLVMediaCorporationSony},
  });
};

/// Lists the makers of hardware in declaration order. Insta360 is deliberately not among them.
inline constexpr auto cameraManufacturers = std::to_array<MediaCorporation>({
    MediaCorporation::arri,
    MediaCorporation::blackmagic,
    MediaCorporation::canon,
    MediaCorporation::codex,
    MediaCorporation::convergentDesign,
    MediaCorporation::dji,
    MediaCorporation::goPro,
    MediaCorporation::jvc,
    MediaCorporation::nikon,
    MediaCorporation::panasonic,
    MediaCorporation::phantom,
    MediaCorporation::red,
    MediaCorporation::sony,
});

/// Returns true if the maker is one of `cameraManufacturers`.
[[nodiscard]] constexpr bool isHardwareManufacturer(MediaCorporation corporation) noexcept {
  return std::ranges::find(cameraManufacturers, corporation) != cameraManufacturers.end();
}

}  // namespace meridian::inline v0_2
