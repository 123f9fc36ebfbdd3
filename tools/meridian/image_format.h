/// \file
/// The image formats that are read and written. For example:
///
///     imageFormatOfExtension("TIF")->name;              // TIFF
///     imageFormatOfContents("\x89PNG\r\n\x1a\n")->name;  // PNG
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "meridian/base/ascii.h"

namespace meridian::command {

/// A format, or several that one library reads and writes.
struct ImageFormat {
  /// What people call it.
  std::string_view name;
  /// What OpenImageIO calls its reader and writer.
  std::string_view library;
  /// In lower case.
  std::array<std::string_view, 3> extensions{};
  /// How its files begin; "_" is any byte. A format without any is recognised by its extension.
  std::array<std::string_view, 8> beginnings{};
  bool isWritten = true;
  /// True if a file holds exactly the samples written to it, unless its compression says otherwise.
  bool isLossless = true;
};

inline constexpr auto imageFormats = std::to_array<ImageFormat>({
    {"DPX", "dpx", {"dpx"}, {"SDPX", "XPDS"}},
    {"EXR", "openexr", {"exr"}, {"v/1\x01"}},
    {"TIFF", "tiff", {"tif", "tiff"}, {{{"II*\0", 4}, {"MM\0*", 4}, {"II+\0", 4}, {"MM\0+", 4}}}},
    {"PNG", "png", {"png"}, {"\x89PNG\r\n\x1a\n"}},
    {"JPEG", "jpeg", {"jpg", "jpeg"}, {"\xff\xd8\xff"}, true, false},
    {"WebP", "webp", {"webp"}, {"RIFF____WEBP"}, true, false},
    {"HDR", "hdr", {"hdr"}, {"#?RADIANCE", "#?RGBE"}, true, false},
    {"Cineon", "cineon", {"cin"}, {"\x80\x2a\x5f\xd7", "\xd7\x5f\x2a\x80"}, false},
    {"BMP", "bmp", {"bmp"}, {"BM"}},
    {"TGA", "targa", {"tga"}},
    {"PPM", "pnm", {"ppm", "pnm", "pfm"}, {"P1", "P2", "P3", "P4", "P5", "P6", "PF", "Pf"}},
});

/// The most bytes that a file's beginning is recognised by.
inline constexpr std::size_t imageBeginningBytes = 16;

/// Returns the format of an extension, of any case; null if there is none.
[[nodiscard]] constexpr const ImageFormat* imageFormatOfExtension(std::string_view extension) noexcept {
  const auto isExtension = [extension](std::string_view each) {
    return !each.empty() &&
           std::ranges::equal(each, extension, {}, {}, [](char c) { return detail::lowercasedAscii(c); });
  };
  const auto found = std::ranges::find_if(
      imageFormats, [&](const ImageFormat& format) { return std::ranges::any_of(format.extensions, isExtension); });
  return found == imageFormats.end() ? nullptr : &*found;
}

/// Returns the format of a file that begins with these bytes; null if no format begins like this.
[[nodiscard]] constexpr const ImageFormat* imageFormatOfContents(std::string_view bytes) noexcept {
  const auto isBeginning = [bytes](std::string_view each) {
    return !each.empty() && bytes.size() >= each.size() &&
           std::ranges::equal(each, bytes.substr(0, each.size()),
                              [](char wanted, char byte) { return wanted == '_' || wanted == byte; });
  };
  const auto found = std::ranges::find_if(
      imageFormats, [&](const ImageFormat& format) { return std::ranges::any_of(format.beginnings, isBeginning); });
  return found == imageFormats.end() ? nullptr : &*found;
}

/// Returns the names of the formats that are read, or of those that are also written: "DPX, EXR, TIFF".
[[nodiscard]] inline std::string imageFormatNames(bool written) {
  std::string names;
  for (const ImageFormat& format : imageFormats) {
    if (written && !format.isWritten) continue;
    names.append(names.empty() ? "" : ", ").append(format.name);
  }
  return names;
}

}  // namespace meridian::command
