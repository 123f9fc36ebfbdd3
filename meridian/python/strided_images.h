/// \file
/// Applies a LUT to images with any strides, for which ImageLut::apply knows those of memory as images usually are in
/// it. The two images are turned and mirrored together until both fit; where no way of doing so fits both, they are
/// taken apart into rows, columns or pixels.
///
///     applyStrided(lut, source, destination, threads);  // as lut.apply, and also upside down, transposed or mirrored
#pragma once

#include <cstddef>
#include <utility>

#include "meridian/base/expected.h"
#include "meridian/lut/image_lut.h"

namespace meridian::inline v0_2::python {

/// Returns the view with its columns from right to left.
template <ImageSample Sample>
[[nodiscard]] ImageView<Sample> mirrored(ImageView<Sample> view) noexcept {
  for (ImagePlane<Sample>& plane : view.planes) {
    if (plane.samples == nullptr) continue;
    plane.samples = plane.at(0, view.width - 1);
    plane.pixelStride = -plane.pixelStride;
  }
  return view;
}

/// Returns the view with its columns as rows.
template <ImageSample Sample>
[[nodiscard]] ImageView<Sample> transposed(ImageView<Sample> view) noexcept {
  std::swap(view.width, view.height);
  for (ImagePlane<Sample>& plane : view.planes) std::swap(plane.rowStride, plane.pixelStride);
  return view;
}

/// Returns a part of the view: one row, or one pixel.
template <ImageSample Sample>
[[nodiscard]] ImageView<Sample> part(ImageView<Sample> view, std::size_t row, std::size_t column,
                                     std::size_t width) noexcept {
  for (ImagePlane<Sample>& plane : view.planes) {
    if (plane.samples != nullptr) plane.samples = plane.at(row, column);
    if (width == 1) plane.pixelStride = sizeof(Sample);
  }
  view.height = 1;
  view.width = width;
  return view;
}

template <ImageSample Sample>
Expected<void, ImageErrorCode> applyStrided(const ImageLut& lut, ImageView<const Sample> source,
                                            ImageView<Sample> destination, unsigned threads) {
  const auto fit = [&] { return source.check().has_value() && destination.check().has_value(); };
  const auto transpose = [&] {
    source = transposed(source);
    destination = transposed(destination);
  };
  const auto mirror = [&] {
    if (source.planes[0].pixelStride >= 0 || destination.planes[0].pixelStride >= 0) return;
    source = mirrored(source);
    destination = mirrored(destination);
  };
  if (source.width != destination.width || source.height != destination.height || source.width == 0 ||
      source.height == 0) {
    return lut.apply(source, destination, threads);
  }
  for (int turn = 0; turn < 2; ++turn) {
    mirror();
    if (fit()) return lut.apply(source, destination, threads);
    transpose();
  }
  // Rows of one image, or else columns, which are rows once more.
  const auto rowsFit = [&] {
    return part<const Sample>(source, 0, 0, source.width).check() &&
           part<Sample>(destination, 0, 0, destination.width).check();
  };
  if (!rowsFit()) {
    transpose();
    mirror();
  }
  const std::size_t width = rowsFit() ? source.width : 1;
  for (std::size_t row = 0; row < source.height; ++row) {
    for (std::size_t column = 0; column < source.width; column += width) {
      const auto applied =
          lut.apply(part<const Sample>(source, row, column, width), part<Sample>(destination, row, column, width));
      if (!applied) return applied;
    }
  }
  return {};
}

}  // namespace meridian::inline v0_2::python
