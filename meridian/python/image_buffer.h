/// \file
/// Images in the memory of any Python object that has a buffer, such as a numpy array of shape (height, width, 3 or 4):
/// samples of uint8, uint16 or float32, with any strides, never copied. For example:
///
///     const ImageBuffer image(object, ImageBuffer::Access::read, "image");
///     visitSamples(image.sample(), [&]<typename Sample>(std::type_identity<Sample>) { image.view<const
///     Sample>(format); });
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "meridian/lut/image_view.h"
#include "meridian/python/conversions.h"

namespace meridian::inline v0_2::python {

/// What the samples of an image are.
enum class SampleType { uint8, uint16, float32 };

/// Calls the function with a type_identity of the sample's type.
template <typename Function>
decltype(auto) visitSamples(SampleType type, Function&& function) {
  if (type == SampleType::uint8) return function(std::type_identity<std::uint8_t>{});
  if (type == SampleType::uint16) return function(std::type_identity<std::uint16_t>{});
  return function(std::type_identity<float>{});
}

/// Holds the buffer of an object while it lives, so that the object's memory stays where it is.
class ImageBuffer {
 public:
  enum class Access { read, write };

  /// Throws TypeError for an object without a buffer or with other samples, and ValueError for another shape, another
  /// byte order, a buffer that may not be written to, and one to write to whose samples overlap. `name` is that of the
  /// function's argument.
  ImageBuffer(py::handle object, Access access, std::string_view name);
  ImageBuffer(const ImageBuffer&) = delete;
  ImageBuffer& operator=(const ImageBuffer&) = delete;
  ~ImageBuffer() { PyBuffer_Release(&buffer_); }

  [[nodiscard]] SampleType sample() const noexcept { return sample_; }
  [[nodiscard]] std::size_t height() const noexcept { return static_cast<std::size_t>(buffer_.shape[0]); }
  [[nodiscard]] std::size_t width() const noexcept { return static_cast<std::size_t>(buffer_.shape[1]); }
  [[nodiscard]] std::size_t channels() const noexcept { return static_cast<std::size_t>(buffer_.shape[2]); }
  [[nodiscard]] bool isEmpty() const noexcept { return height() == 0 || width() == 0; }

  /// Returns a view whose strides may be any, also such as ImageView::check does not accept.
  template <ImageSample Sample>
  [[nodiscard]] ImageView<Sample> view(const CodeValueFormat& format) const noexcept {
    ImageView<Sample> view{.width = width(), .height = height(), .format = format};
    for (std::size_t channel = 0; channel < channels(); ++channel) {
      auto* const first = static_cast<char*>(buffer_.buf) + static_cast<std::ptrdiff_t>(channel) * strides_[2];
      view.planes[channel] = {reinterpret_cast<Sample*>(first), strides_[0], strides_[1]};
    }
    return view;
  }

  /// Returns whether both are the same samples with the same strides.
  [[nodiscard]] bool isSameAs(const ImageBuffer& other) const noexcept;
  /// Returns false if no byte is in both. Exact for parts of one array, whose planes have equal strides apart from the
  /// sign; else true wherever two planes begin before each other's end.
  [[nodiscard]] bool mayOverlap(const ImageBuffer& other) const noexcept;

 private:
  /// Where the samples of one channel are, with strides of 0 and more: lines of samples, whose order does not matter.
  struct Plane {
    /// The samples along one axis, and the distance between them in bytes: the largest number if there is only one.
    struct Axis {
      std::ptrdiff_t stride;
      std::ptrdiff_t count;
      friend auto operator<=>(const Axis&, const Axis&) = default;
    };

    const char* begin;
    Axis outer;
    Axis inner;

    /// The bytes from the first of a line to after its last.
    [[nodiscard]] std::ptrdiff_t lineSize(std::ptrdiff_t sampleSize) const noexcept;
    [[nodiscard]] const char* end(std::ptrdiff_t sampleSize) const noexcept;
  };
  [[nodiscard]] Plane plane(std::size_t channel) const noexcept;
  [[nodiscard]] static bool mayOverlap(const Plane& left, const Plane& right, std::ptrdiff_t sampleSize) noexcept;
  [[nodiscard]] bool overlapsItself() const noexcept;
  void check(std::string_view name, Access access);

  Py_buffer buffer_{};
  /// Those of the buffer, or what follows from its shape where it has none, as arrays of ctypes do.
  std::array<std::ptrdiff_t, 3> strides_{};
  SampleType sample_ = SampleType::uint8;
};

}  // namespace meridian::inline v0_2::python
