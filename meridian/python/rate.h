/// \file
/// Frame rates as the functions about timecode accept them: as a value of the library or as a number.
///
///     module.def("frame_number", [](const TimecodeComponents& timecode, const Rate& rate) { ... });
#pragma once

#include "meridian/media/frame_number.h"
#include "meridian/media/video_frame_rate.h"
#include "meridian/python/conversions.h"
#include "meridian/python/errors.h"

namespace meridian::inline v0_2::python {

/// A frame rate, or frames per second as a number, which are matched with the standard rates. Raises TimecodeError for
/// a number that does not fit.
struct Rate {
  VideoFrameRate value;
};

/// Returns the rate that the ratio matches; throws pybind11's value_error if it is too large.
[[nodiscard]] inline VideoFrameRate matchingRate(const MediaRational& ratio) {
  const auto matched = VideoFrameRate::matching(ratio);
  if (!matched) throw py::value_error("expected a rate below 2^63 / 10000 frames per second");
  return *matched;
}

}  // namespace meridian::inline v0_2::python

namespace pybind11::detail {

template <>
class type_caster<meridian::python::Rate> {
 public:
  PYBIND11_TYPE_CASTER(meridian::python::Rate, const_name("VideoFrameRate | SupportsFloat"));
  bool load(handle source, bool /*convert*/) {
    if (isinstance<meridian::VideoFrameRate>(source)) {
      value.value = source.cast<meridian::VideoFrameRate>();
      return true;
    }
    try {
      const auto rational = meridian::python::rationalOf(source);
      if (!rational) return false;
      value.value = meridian::python::matchingRate(*rational);
      return true;
    } catch (const value_error&) {
      using meridian::TimecodeErrorCode::rateWithoutTimecode;
      meridian::python::raise(meridian::python::errorOf(
          meridian::TimecodeError{rateWithoutTimecode, "timecode", meridian::python::shortRepr(source)}));
    }
  }
};

}  // namespace pybind11::detail
