/// \file
/// Where the samples of an image are in memory and what they mean. For example, the rows of an interleaved RGBA buffer,
/// and three planes as a video decoder returns them, each with a stride of its own:
///
///     auto rgba = ImageView<std::uint16_t>::packed(ImageLayout::rgba, buffer.data(), 3840, 2160, 10);
///
///     ImageView<std::uint16_t> frame{.width = 3840, .height = 2160, .format = {10, CodeValueRange::limited}};
///     frame.red() = {.samples = redSamples, .rowStride = redBytesPerRow};  // green(), blue() and alpha() alike
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/expected.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/lut/code_value_format.h"

namespace meridian::inline v0_2 {

/// How the samples of a packed image follow each other: pixel by pixel, or plane by plane.
enum class ImageLayout : std::uint8_t { rgb, rgba, planarRgb, planarRgba };

/// What images are made of: code values in 8 or 16 bits, or floating point on the scale from 0 to 1.
template <typename Type>
concept ImageSample =
    std::same_as<std::remove_const_t<Type>, std::uint8_t> || std::same_as<std::remove_const_t<Type>, std::uint16_t> ||
    std::same_as<std::remove_const_t<Type>, float>;

/// Why a LUT cannot be applied to an image.
enum class ImageErrorCode : std::uint8_t {
  noSamples,
  unusableStride,
  misalignedSamples,
  unequalSizes,
  unusableBitDepth,
  unusableRange,
  otherFormat,
};

template <>
struct EnumerationTable<ImageErrorCode> {
  static constexpr auto rows = std::to_array<ErrorRow<ImageErrorCode>>({
      {ImageErrorCode::noSamples, "noSamples", "red, green or blue has no samples", "set all three planes"},
      {ImageErrorCode::unusableStride, "unusableStride",
       "a stride is not a whole number of samples, rows or pixels overlap, or offsets overflow",
       "give strides in bytes: multiples of a sample's size, for rows at least a row"},
      {ImageErrorCode::misalignedSamples, "misalignedSamples",
       "the samples do not begin at a multiple of their size in memory", "copy them into memory of their own type"},
      {ImageErrorCode::unequalSizes, "unequalSizes", "source and destination differ in width or height",
       "use images of one size"},
      {ImageErrorCode::unusableBitDepth, "unusableBitDepth",
       "the bit depth is below 1 or above the bits that a sample has", "use a depth that fits the samples"},
      {ImageErrorCode::unusableRange, "unusableRange",
       "limited range is defined for code values of 8 bits and more, not for fewer bits or floating point",
       "use full range"},
      {ImageErrorCode::otherFormat, "otherFormat",
       "the LUT was prepared for another bit depth, range or kind of sample", "prepare the LUT for these images"},
  });
};

/// The samples of one channel.
template <ImageSample Sample>
struct ImagePlane {
  /// The sample of the upper left pixel; null if the image does not have the channel.
  Sample* samples = nullptr;
  /// From a sample to the one below it, in bytes: a multiple of the sample's size, at least a row long; negative for
  /// rows stored bottom up.
  std::ptrdiff_t rowStride = 0;
  /// From a sample to its right neighbour, in bytes: a positive multiple of the sample's size, larger than the size
  /// where channels are interleaved.
  std::ptrdiff_t pixelStride = sizeof(Sample);

  /// Returns the address of a sample. The row and the column are not checked.
  [[nodiscard]] constexpr Sample* at(std::size_t row, std::size_t column) const noexcept {
    constexpr auto size = static_cast<std::ptrdiff_t>(sizeof(Sample));
    return samples + rowStride / size * static_cast<std::ptrdiff_t>(row) +
           pixelStride / size * static_cast<std::ptrdiff_t>(column);
  }

  friend constexpr bool operator==(const ImagePlane&, const ImagePlane&) noexcept = default;
};

/// A view of an image, or of some of its rows. It owns nothing. Interleaved samples are planes whose first samples are
/// neighbours and whose pixel stride is that of a whole pixel.
template <ImageSample Sample>
struct ImageView {
  static constexpr bool hasCodeValues = !std::same_as<std::remove_const_t<Sample>, float>;
  static constexpr int sampleBits = static_cast<int>(sizeof(Sample)) * 8;

  /// Red, green, blue and alpha. Alpha may be absent, which means opaque.
  std::array<ImagePlane<Sample>, 4> planes{};
  /// In pixels.
  std::size_t width = 0;
  std::size_t height = 0;
  /// What the code values mean; samples above 2^bitDepth - 1 are read as they are. Alpha has the same bit depth and is
  /// always full range. Unused for floating point, whose range has to be full.
  CodeValueFormat format{sampleBits};

  /// Returns a view of samples that follow each other without gaps, from `first` on; without samples, so that `check`
  /// fails, if so many do not fit into memory.
  [[nodiscard]] static constexpr ImageView packed(ImageLayout layout, Sample* first, std::size_t width,
                                                  std::size_t height, CodeValueFormat format = sampleBits) noexcept {
    const bool isPlanar = layout == ImageLayout::planarRgb || layout == ImageLayout::planarRgba;
    const std::size_t channels = layout == ImageLayout::rgb || layout == ImageLayout::planarRgb ? 3 : 4;
    const std::size_t pixelSamples = isPlanar ? 1 : channels;
    ImageView view{.width = width, .height = height, .format = format};
    const auto pixels = checkedProduct<std::size_t>(width, height);
    const auto bytes = pixels ? checkedProduct<std::size_t>(*pixels, channels * sizeof(Sample)) : std::nullopt;
    if (first == nullptr || !bytes || *bytes > largestOffset) return view;
    for (std::size_t channel = 0; channel < channels; ++channel) {
      view.planes[channel] = {.samples = first + (isPlanar ? channel * width * height : channel),
                              .rowStride = static_cast<std::ptrdiff_t>(width * pixelSamples * sizeof(Sample)),
                              .pixelStride = static_cast<std::ptrdiff_t>(pixelSamples * sizeof(Sample))};
    }
    return view;
  }

  /// Return the plane of a channel.
  [[nodiscard]] constexpr ImagePlane<Sample>& red() noexcept { return planes[0]; }
  [[nodiscard]] constexpr ImagePlane<Sample>& green() noexcept { return planes[1]; }
  [[nodiscard]] constexpr ImagePlane<Sample>& blue() noexcept { return planes[2]; }
  [[nodiscard]] constexpr ImagePlane<Sample>& alpha() noexcept { return planes[3]; }
  [[nodiscard]] constexpr const ImagePlane<Sample>& red() const noexcept { return planes[0]; }
  [[nodiscard]] constexpr const ImagePlane<Sample>& green() const noexcept { return planes[1]; }
  [[nodiscard]] constexpr const ImagePlane<Sample>& blue() const noexcept { return planes[2]; }
  [[nodiscard]] constexpr const ImagePlane<Sample>& alpha() const noexcept { return planes[3]; }

  /// Returns true if the image has an alpha plane.
  [[nodiscard]] constexpr bool hasAlpha() const noexcept { return alpha().samples != nullptr; }

  /// Returns a view of the rows from `first` on: `count`, or fewer where the image ends.
  [[nodiscard]] constexpr ImageView rows(std::size_t first, std::size_t count) const noexcept {
    ImageView part = *this;
    const std::size_t begin = first < height ? first : height;
    part.height = count < height - begin ? count : height - begin;
    for (ImagePlane<Sample>& plane : part.planes) {
      if (plane.samples != nullptr) plane.samples = plane.at(begin, 0);
    }
    return part;
  }

  /// Returns success if the view is usable on its own. An empty image needs neither samples nor strides. Whether planes
  /// overlap each other is not checked.
  [[nodiscard]] constexpr Expected<void, ImageErrorCode> check() const noexcept {
    if (hasCodeValues && (format.bitDepth < 1 || format.bitDepth > sampleBits)) {
      return Unexpected(ImageErrorCode::unusableBitDepth);
    }
    if (!format.hasRange() || (!hasCodeValues && format.isLimited())) return Unexpected(ImageErrorCode::unusableRange);
    if (width == 0 || height == 0) return {};
    for (std::size_t channel = 0; channel < planes.size(); ++channel) {
      const ImagePlane<Sample>& plane = planes[channel];
      if (plane.samples == nullptr && channel == 3) continue;
      if (plane.samples == nullptr) return Unexpected(ImageErrorCode::noSamples);
      if (!isAligned(plane)) return Unexpected(ImageErrorCode::misalignedSamples);
      if (!hasUsableStrides(plane)) return Unexpected(ImageErrorCode::unusableStride);
    }
    return {};
  }

  // NOLINTNEXTLINE(google-explicit-constructor): an image that may be written to can be read too.
  constexpr operator ImageView<const Sample>() const noexcept
    requires(!std::is_const_v<Sample>)
  {
    ImageView<const Sample> view{.width = width, .height = height, .format = format};
    for (std::size_t channel = 0; channel < planes.size(); ++channel) {
      view.planes[channel] = {planes[channel].samples, planes[channel].rowStride, planes[channel].pixelStride};
    }
    return view;
  }

 private:
  [[nodiscard]] static constexpr bool isAligned(const ImagePlane<Sample>& plane) noexcept {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): only the address counts.
    return std::is_constant_evaluated() || reinterpret_cast<std::uintptr_t>(plane.samples) % alignof(Sample) == 0;
  }

  [[nodiscard]] constexpr bool hasUsableStrides(const ImagePlane<Sample>& plane) const noexcept {
    constexpr auto size = static_cast<std::ptrdiff_t>(sizeof(Sample));
    if (plane.rowStride % size != 0 || plane.pixelStride % size != 0 || plane.pixelStride < size) return false;
    // By division, and without a sign, since hostile sizes and strides would overflow.
    if (width > largestOffset / static_cast<std::size_t>(plane.pixelStride)) return false;
    if (height <= 1) return true;
    const auto stride = static_cast<std::size_t>(plane.rowStride);
    const std::size_t rowBytes = plane.rowStride < 0 ? std::size_t{0} - stride : stride;
    return rowBytes / static_cast<std::size_t>(plane.pixelStride) >= width && height - 1 <= largestOffset / rowBytes;
  }

  static constexpr auto largestOffset = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
};

}  // namespace meridian::inline v0_2
