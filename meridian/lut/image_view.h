// Where the samples of an image lie.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// How the samples of a pixel lie: beside each other, or each channel in a plane of its own.
enum class ImageLayout : std::uint8_t { rgb, rgba, planar };

/// What images are made of: code values in 8 or 16 bits, or floating point on the scale from 0 to 1.
template <typename Type>
concept ImageSample =
    std::same_as<std::remove_const_t<Type>, std::uint8_t> || std::same_as<std::remove_const_t<Type>, std::uint16_t> ||
    std::same_as<std::remove_const_t<Type>, float>;

/// Why an image cannot be worked on.
enum class ImageErrorCode : std::uint8_t { noSamples, unusableStride, unequalSizes, unusableBitDepth, otherBitDepth };

template <>
struct EnumerationTable<ImageErrorCode> {
  static constexpr auto rows = std::to_array<EnumerationRow<ImageErrorCode>>({
      {ImageErrorCode::noSamples, "noSamples", "a plane of the image has no address"},
      {ImageErrorCode::unusableStride, "unusableStride",
       "the rows lie closer together than they are long, or not on whole samples"},
      {ImageErrorCode::unequalSizes, "unequalSizes", "source and destination differ in width or height"},
      {ImageErrorCode::unusableBitDepth, "unusableBitDepth",
       "the bit depth is below 1 or above the bits that a sample has"},
      {ImageErrorCode::otherBitDepth, "otherBitDepth",
       "the table was prepared for another bit depth or kind of sample"},
  });
};

/// A view of an image, or of some of its rows. It owns nothing. The samples of a row follow each other without gaps;
/// the rows may lie anywhere.
template <ImageSample Sample>
struct ImageView {
  static constexpr bool hasCodeValues = !std::same_as<std::remove_const_t<Sample>, float>;
  static constexpr int sampleBits = static_cast<int>(sizeof(Sample)) * 8;

  ImageLayout layout = ImageLayout::rgb;
  /// The first samples of red, green and blue; of an image that is not planar, the first sample of all alone.
  std::array<Sample*, 3> planes{};
  /// In pixels.
  std::size_t width = 0;
  std::size_t height = 0;
  /// From one row to the next, in bytes, on every plane alike: a multiple of the sample's size. Below 0 for rows that
  /// run upwards.
  std::ptrdiff_t rowStride = 0;
  /// The bits of a code value, from 1 to all that a sample has; samples above 2^bitDepth - 1 are read as they stand. Of
  /// no meaning for floating point.
  int bitDepth = sampleBits;

  [[nodiscard]] static constexpr std::size_t samplesPerPixel(ImageLayout layout) noexcept {
    if (layout == ImageLayout::planar) return 1;
    return layout == ImageLayout::rgba ? 4 : 3;
  }

  /// An image whose rows follow each other without gaps.
  [[nodiscard]] static constexpr ImageView packed(ImageLayout layout, Sample* first, std::size_t width,
                                                  std::size_t height, int bitDepth = sampleBits) noexcept {
    const std::size_t rowSamples = width * samplesPerPixel(layout);
    ImageView view{layout, {first, nullptr, nullptr}, width, height, 0, bitDepth};
    view.rowStride = static_cast<std::ptrdiff_t>(rowSamples * sizeof(Sample));
    if (layout == ImageLayout::planar && first != nullptr) {
      view.planes = {first, first + rowSamples * height, first + 2 * rowSamples * height};
    }
    return view;
  }

  /// Rows of the image: those from `first` on, as many as `count` and as there are.
  [[nodiscard]] constexpr ImageView rows(std::size_t first, std::size_t count) const noexcept {
    ImageView part = *this;
    const std::size_t begin = first < height ? first : height;
    part.height = count < height - begin ? count : height - begin;
    for (Sample*& plane : part.planes) {
      if (plane != nullptr) plane += rowDistance() * static_cast<std::ptrdiff_t>(begin);
    }
    return part;
  }

  /// From one row to the next, in samples.
  [[nodiscard]] constexpr std::ptrdiff_t rowDistance() const noexcept {
    return rowStride / static_cast<std::ptrdiff_t>(sizeof(Sample));
  }

  /// What is wrong with the view on its own; absent when it can be worked on. An empty image always can.
  [[nodiscard]] constexpr std::optional<ImageErrorCode> fault() const noexcept {
    if (hasCodeValues && (bitDepth < 1 || bitDepth > sampleBits)) return ImageErrorCode::unusableBitDepth;
    if (width == 0 || height == 0) return std::nullopt;
    const std::size_t planeCount = layout == ImageLayout::planar ? 3 : 1;
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
      if (planes[plane] == nullptr) return ImageErrorCode::noSamples;
    }
    if (rowStride % static_cast<std::ptrdiff_t>(sizeof(Sample)) != 0) return ImageErrorCode::unusableStride;
    const std::ptrdiff_t distance = rowDistance() < 0 ? -rowDistance() : rowDistance();
    const bool overlaps = height > 1 && static_cast<std::size_t>(distance) < width * samplesPerPixel(layout);
    return overlaps ? std::optional(ImageErrorCode::unusableStride) : std::nullopt;
  }

  // NOLINTNEXTLINE(google-explicit-constructor): an image that may be written to can be read too.
  constexpr operator ImageView<const Sample>() const noexcept
    requires(!std::is_const_v<Sample>)
  {
    return {layout, {planes[0], planes[1], planes[2]}, width, height, rowStride, bitDepth};
  }
};

}  // namespace meridian::inline v0_2
