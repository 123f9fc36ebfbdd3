/// \file
/// The image formats that are read and written. For example:
///
///     imageFormatOfExtension("TIF")->name;              // TIFF
///     imageFormatOfSignature("\x89PNG\r\n\x1a\n")->name;  // PNG
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "meridian/base/ascii.h"

namespace meridian::command {

/// What the files of a format can hold.
struct ImageStorage {
  bool eightBits = false;
  bool sixteenBits = false;
  bool floating = false;
  /// With alpha as the fourth; 0 if there is no limit.
  int mostChannels = 0;
  /// True if the samples are read back as they were written, unless the file's compression says otherwise.
  bool isLossless = true;
};

/// A format, or several that one library reads and writes.
struct ImageFormat {
  /// What people call it.
  std::string_view name;
  /// What OpenImageIO calls its reader and writer.
  std::string_view formatName;
  /// File extensions, in lower case.
  std::array<std::string_view, 2> extensions{};
  /// The first bytes of its files; "_" is any byte. A format without any is recognised by its extension.
  std::array<std::string_view, 8> signatures{};
  /// Absent if it is only read.
  std::optional<ImageStorage> storage;
};

inline constexpr auto imageFormats = std::to_array<ImageFormat>({
    {"DPX", "dpx", {"dpx"}, {"SDPX", "XPDS"}, ImageStorage{true, true, true, 4}},
    {"EXR", "openexr", {"exr"}, {"v/1\x01"}, ImageStorage{false, false, true}},
    {"TIFF",
     "tiff",
     {"tif", "tiff"},
     {{{"II*\0", 4}, {"MM\0*", 4}, {"II+\0", 4}, {"MM\0+", 4}}},
     ImageStorage{true, true, true}},
    {"PNG", "png", {"png"}, {"\x89PNG\r\n\x1a\n"}, ImageStorage{true, true, false, 4}},
    {"JPEG", "jpeg", {"jpg", "jpeg"}, {"\xff\xd8\xff"}, ImageStorage{true, false, false, 3, false}},
    // Alpha could be written, but would be read multiplied into the colours.
    {"WebP", "webp", {"webp"}, {"RIFF____WEBP"}, ImageStorage{true, false, false, 3, false}},
    {"HDR", "hdr", {"hdr"}, {"#?RADIANCE", "#?RGBE"}, ImageStorage{false, false, true, 3, false}},
    {"Cineon", "cineon", {"cin"}, {"\x80\x2a\x5f\xd7", "\xd7\x5f\x2a\x80"}, std::nullopt},
    {"BMP", "bmp", {"bmp"}, {"BM"}, ImageStorage{true, false, false, 4}},
    {"TGA", "targa", {"tga"}, {}, ImageStorage{true, false, false, 4}},
    {"PPM",
     "pnm",
     {"ppm", "pnm"},
     {"P1", "P2", "P3", "P4", "P5", "P6", "PF", "Pf"},
     ImageStorage{true, false, false, 3}},
});

/// As many bytes as the longest signature needs.
inline constexpr std::size_t signatureBytes = 16;

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

/// Returns the format of a file that begins with these bytes; null if they are not the signature of one.
[[nodiscard]] constexpr const ImageFormat* imageFormatOfSignature(std::string_view bytes) noexcept {
  const auto isSignature = [bytes](std::string_view each) {
    return !each.empty() && bytes.size() >= each.size() &&
           std::ranges::equal(each, bytes.substr(0, each.size()),
                              [](char wanted, char byte) { return wanted == '_' || wanted == byte; });
  };
  const auto found = std::ranges::find_if(
      imageFormats, [&](const ImageFormat& format) { return std::ranges::any_of(format.signatures, isSignature); });
  return found == imageFormats.end() ? nullptr : &*found;
}

/// Returns the names of the formats that are read, or of those that are also written: "DPX, EXR, TIFF".
[[nodiscard]] inline std::string imageFormatNames(bool written) {
  std::string names;
  for (const ImageFormat& format : imageFormats) {
    if (written && !format.storage) continue;
    names.append(names.empty() ? "" : ", ").append(format.name);
  }
  return names;
}

}  // namespace meridian::command
