#include "meridian/python/image_buffer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <limits>
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

std::ptrdiff_t ImageBuffer::Plane::lineSize(std::ptrdiff_t sampleSize) const noexcept {
  return (inner.count - 1) * inner.stride + sampleSize;
}

const char* ImageBuffer::Plane::end(std::ptrdiff_t sampleSize) const noexcept {
  return begin + (outer.count - 1) * outer.stride + lineSize(sampleSize);
}

ImageBuffer::Plane ImageBuffer::plane(std::size_t channel) const noexcept {
  const char* begin = static_cast<const char*>(buffer_.buf) + static_cast<std::ptrdiff_t>(channel) * strides_[2];
  std::array<Plane::Axis, 2> axes{};
  for (std::size_t axis = 0; axis < axes.size(); ++axis) {
    const std::ptrdiff_t count = buffer_.shape[axis];
    begin += std::min<std::ptrdiff_t>(strides_[axis], 0) * (count - 1);
    axes[axis] = {count > 1 ? std::abs(strides_[axis]) : std::numeric_limits<std::ptrdiff_t>::max(), count};
  }
  std::ranges::sort(axes);
  return {begin, axes[1], axes[0]};
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
  for (std::size_t mine = 0; mine < channels(); ++mine) {
    for (std::size_t others = 0; others < other.channels(); ++others) {
      if (mayOverlap(plane(mine), other.plane(others), buffer_.itemsize)) return true;
    }
  }
  return false;
}

bool ImageBuffer::mayOverlap(const Plane& left, const Plane& right, std::ptrdiff_t sampleSize) noexcept {
  if (left.end(sampleSize) <= right.begin || right.end(sampleSize) <= left.begin) return false;
  // A single line fits lines of any distance, and a single sample samples of any.
  const std::ptrdiff_t outer = std::min(left.outer.stride, right.outer.stride);
  const std::ptrdiff_t inner = std::min(left.inner.stride, right.inner.stride);
  const auto fits = [&](const Plane& plane) {
    return (plane.outer.count == 1 || plane.outer.stride == outer) &&
           (plane.inner.count == 1 || plane.inner.stride == inner) && plane.lineSize(sampleSize) <= outer;
  };
  if (!fits(left) || !fits(right) || (inner != 0 && inner < sampleSize)) return true;
  // Whether some number of lines and samples leads from a sample of one plane to one of the other. A line is shorter
  // than the distance of lines, so only the nearest numbers can.
  const std::ptrdiff_t distance = right.begin - left.begin;
  for (std::ptrdiff_t lines = distance / outer - 1; lines <= distance / outer + 1; ++lines) {
    if (lines >= left.outer.count || -lines >= right.outer.count) continue;
    const std::ptrdiff_t rest = distance - lines * outer;
    const std::ptrdiff_t nearest = inner == 0 ? 0 : rest / inner;
    for (std::ptrdiff_t samples = nearest - 1; samples <= nearest + 1; ++samples) {
      if (samples >= left.inner.count || -samples >= right.inner.count) continue;
      if (std::abs(rest - samples * inner) < sampleSize) return true;
    }
  }
  return false;
}

}  // namespace meridian::inline v0_2::python
