/// \file
/// Frame rates as functions accept them: as a value of the library or as a number.
///
///     module.def("frame_number", [](const TimecodeComponents& timecode, const Rate& rate) { ... });
#pragma once

#include "meridian/media/video_frame_rate.h"
#include "meridian/python/conversions.h"

namespace meridian::inline v0_2::python {

/// A frame rate, or frames per second as a number, which are matched with the standard rates.
struct Rate {
  VideoFrameRate value;
};

}  // namespace meridian::inline v0_2::python

namespace pybind11::detail {

template <>
class type_caster<meridian::python::Rate> {
 public:
  PYBIND11_TYPE_CASTER(meridian::python::Rate, const_name("VideoFrameRate | Fraction | float"));
  bool load(handle source, bool /*convert*/) {
    if (isinstance<meridian::VideoFrameRate>(source)) {
      value.value = source.cast<meridian::VideoFrameRate>();
      return true;
    }
    const auto rational = meridian::python::rationalOf(source);
    const auto matched = rational ? meridian::VideoFrameRate::matching(*rational) : std::nullopt;
    if (matched) value.value = *matched;
    return matched.has_value();
  }
};

}  // namespace pybind11::detail
