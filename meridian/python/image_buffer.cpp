#include "meridian/python/image_buffer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <string>
#include <utility>

namespace meridian::inline v0_2::python {
namespace {

/// Returns the type of samples in a buffer's format, without the sign for the byte order.
std::optional<SampleType> sampleOf(std::string_view format) {
  if (format == "B") return SampleType::uint8;
  if (format == "H") return SampleType::uint16;
  if (format == "f") return SampleType::float32;
  return std::nullopt;
}

bool isForeignOrder(char sign) {
  return sign == (std::endian::native == std::endian::little ? '>' : '<') ||
         (sign == '!' && std::endian::native == std::endian::little);
}

}  // namespace

ImageBuffer::ImageBuffer(py::handle object, Access access, std::string_view name) {
  if (PyObject_CheckBuffer(object.ptr()) == 0) {
    failWithType(name, "an array of uint8, uint16 or float32", object);
  }
  if (PyObject_GetBuffer(object.ptr(), &buffer_, PyBUF_FORMAT | PyBUF_STRIDES) != 0) throw py::error_already_set();
  try {
    check(name, access);
  } catch (...) {
    PyBuffer_Release(&buffer_);
    throw;
  }
}

void ImageBuffer::check(std::string_view name, Access access) {
  const std::string subject(name);
  std::string_view format = buffer_.format == nullptr ? "B" : buffer_.format;
  const bool isForeign = !format.empty() && isForeignOrder(format.front());
  if (!format.empty() && std::string_view("@=<>!").find(format.front()) != std::string_view::npos) {
    format.remove_prefix(1);
  }
  const auto sample = sampleOf(format);
  if (!sample) {
    throw py::type_error(subject + ": expected samples of uint8, uint16 or float32, found the format \"" +
                         (buffer_.format == nullptr ? "B" : buffer_.format) + "\"");
  }
  sample_ = *sample;
  if (isForeign && buffer_.itemsize > 1) {
    throw py::value_error(subject + ": its samples have the other byte order; convert them, with numpy by " + subject +
                          ".astype(" + subject + ".dtype.newbyteorder(\"=\"))");
  }
  if (buffer_.ndim != 3 || (buffer_.shape[2] != 3 && buffer_.shape[2] != 4)) {
    std::string shape;
    for (int axis = 0; axis < buffer_.ndim; ++axis) {
      shape.append(axis == 0 ? "" : ", ").append(std::to_string(buffer_.shape[axis]));
    }
    throw py::value_error(subject + ": expected the shape (height, width, 3 or 4), found (" + shape +
                          "); transpose planar images");
  }
  strides_ = {buffer_.shape[1] * buffer_.shape[2] * buffer_.itemsize, buffer_.shape[2] * buffer_.itemsize,
              buffer_.itemsize};
  if (buffer_.strides != nullptr) std::copy_n(buffer_.strides, strides_.size(), strides_.begin());
  if (access == Access::write && buffer_.readonly != 0) throw py::value_error(subject + ": is read-only");
  if (access == Access::write && overlapsItself()) throw py::value_error(subject + ": its samples overlap each other");
}

ImageBuffer::Extent ImageBuffer::extent(int firstAxis) const noexcept {
  Extent extent{static_cast<const char*>(buffer_.buf), static_cast<const char*>(buffer_.buf) + buffer_.itemsize};
  for (int axis = firstAxis; axis < buffer_.ndim; ++axis) {
    const std::ptrdiff_t offset = (buffer_.shape[axis] - 1) * strides_[static_cast<std::size_t>(axis)];
    (offset < 0 ? extent.begin : extent.end) += offset;
  }
  return extent;
}

bool ImageBuffer::overlapsItself() const noexcept {
  if (isEmpty()) return false;
  std::array<std::pair<std::ptrdiff_t, std::ptrdiff_t>, 3> axes;
  for (std::size_t axis = 0; axis < axes.size(); ++axis) {
    axes[axis] = {std::abs(strides_[axis]), buffer_.shape[axis]};
  }
  std::ranges::sort(axes);
  std::ptrdiff_t inner = buffer_.itemsize;
  for (const auto& [stride, count] : axes) {
    if (count > 1 && stride < inner) return true;
    inner += (count - 1) * stride;
  }
  return false;
}

bool ImageBuffer::isSameAs(const ImageBuffer& other) const noexcept {
  return buffer_.buf == other.buffer_.buf && sample_ == other.sample_ && strides_ == other.strides_ &&
         height() == other.height() && width() == other.width();
}

bool ImageBuffer::mayOverlap(const ImageBuffer& other) const noexcept {
  if (isEmpty() || other.isEmpty()) return false;
  const Extent mine = extent(0);
  const Extent others = other.extent(0);
  if (mine.end <= others.begin || others.end <= mine.begin) return false;
  // Parts of one image, such as its left and right half: where rows have the same distance, and each is shorter than
  // that, they share bytes only if they do so within that distance.
  const std::ptrdiff_t stride = std::abs(strides_[0]);
  if (stride == 0 || stride != std::abs(other.strides_[0])) return true;
  const Extent row = extent(1);
  const Extent otherRow = other.extent(1);
  if (row.end - row.begin > stride || otherRow.end - otherRow.begin > stride) return true;
  const std::ptrdiff_t offset = ((otherRow.begin - row.begin) % stride + stride) % stride;
  return offset < row.end - row.begin || stride - offset < otherRow.end - otherRow.begin;
}

}  // namespace meridian::inline v0_2::python
