/// \file
/// Counts and compares the samples of planes. For example:
///
///     addToHistogram(lumaOf(frame), counts);
///     const double change = meanDifference(lumaOf(before), lumaOf(frame));   // of a sample
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "meridian/engine/libav/handles.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace meridian::inline v0_2::libav {

/// The samples of one plane, of 8 bits or of up to 16 bits in two bytes each.
struct PlaneView {
  const std::uint8_t* samples = nullptr;
  std::ptrdiff_t rowStride = 0;
  int width = 0;
  int height = 0;
  int bitDepth = 8;

  [[nodiscard]] std::uint64_t count() const noexcept {
    return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
  }
};

/// Returns true if each plane of the format has the samples of one component, in the machine's order of bytes, and the
/// first is luma.
[[nodiscard]] bool hasLumaPlanes(AVPixelFormat format) noexcept;

/// Returns a plane of an image in such a format; an empty one where it has none.
[[nodiscard]] PlaneView planeOf(const AVFrame& image, std::size_t plane) noexcept;

/// Adds the number of samples with each value to the counts, of which there is one for each value. Values beyond the
/// bit depth count as the greatest one.
void addToHistogram(const PlaneView& plane, std::span<std::uint64_t> counts);

/// Returns the sum of the absolute differences of the samples of two planes of the same size and depth.
[[nodiscard]] std::uint64_t sumOfDifferences(const PlaneView& left, const PlaneView& right) noexcept;

}  // namespace meridian::inline v0_2::libav
