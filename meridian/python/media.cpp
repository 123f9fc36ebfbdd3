#include <pybind11/operators.h>

#include "meridian/media/file_extension.h"
#include "meridian/media/frame_number.h"
#include "meridian/media/frame_rate.h"
#include "meridian/media/media_format_constants.h"
#include "meridian/media/rgb_color.h"
#include "meridian/media/size.h"
#include "meridian/media/timecode_components.h"
#include "meridian/media/video_dimension.h"
#include "meridian/python/errors.h"
#include "meridian/python/module.h"
#include "meridian/python/rate.h"
#include "meridian/python/record.h"
#include "meridian/python/vocabulary.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;

/// Returns the Python name of a case.
template <Enumeration E>
std::string caseName(E value) {
  return snakeCase(detail::caseNames<E>[static_cast<std::size_t>(value)]);
}

/// Adds the members of an enumeration with a payload as attributes of its class.
template <typename Value, typename Cases>
void addCases(py::class_<Value>& type, const Cases& cases) {
  for (const Value& each : cases) type.attr(caseName(each.kind()).c_str()) = py::cast(each);
}

/// Adds what a value has: ==, hash() by the library's hash, and the pickled form of a function and its argument.
template <typename Value, typename Reduce>
void addValueManners(py::class_<Value>& type, Reduce&& reduce) {
  type.def(py::self == py::self);
  type.def("__hash__", [](const Value& value) { return std::hash<Value>{}(value); });
  type.def("__reduce__", std::forward<Reduce>(reduce));
}

/// Returns a call as it is written.
std::string callText(std::string function, const py::tuple& arguments) {
  const char* separator = "(";
  for (const py::handle argument : arguments) {
    function.append(std::exchange(separator, ", ")).append(py::str(py::repr(argument)));
  }
  return function + ")";
}

void addVideoFrameRate(py::module_& module) {
  py::class_<VideoFrameRate> type(module, "VideoFrameRate",
                                  "A video frame rate: one of fourteen standard ones, which are attributes of the "
                                  "class, or any other as a ratio.\n\nTwo are equal if the cases are and, for custom "
                                  "rates, the ratios; so custom(25) does not equal pal25p.");
  type.def(py::init([](const Ratio& rate) { return matchingRate(rate.value); }), "rate"_a,
           "Makes the standard rate that frames per second match, else a custom one. Fraction(24000, 1001), 23.976 and "
           "Fraction(2997, 125) are all ntsc24p. An int, Fraction or Decimal is used exactly; a float is truncated to "
           "millionths unless it is whole. Raises ValueError for a number that is not finite or whose ratio leaves 64 "
           "bits.");
  type.def_static(
      "custom", [](const Ratio& rate) { return VideoFrameRate::custom(rate.value); }, "rate"_a,
      "Returns frames per second as a custom rate, unmatched.");
  addCases(type, standardVideoFrameRates);
  type.def_property_readonly("kind", &VideoFrameRate::kind, "The case.");
  type.def_property_readonly("raw_value", &VideoFrameRate::rawValue, "Frames per second.");
  type.def_property_readonly("formatted_string", &VideoFrameRate::formattedString,
                             "The rate with two decimals unless it is whole: \"29.97 FPS\".");
  type.def("__float__", [](const VideoFrameRate& rate) { return rate.rawValue().rawValue(); });
  type.def("__repr__", [](const VideoFrameRate& rate) {
    if (rate.kind() != VideoFrameRateKind::custom) return "VideoFrameRate." + caseName(rate.kind());
    return callText("VideoFrameRate.custom", py::make_tuple(rate.rawValue()));
  });
  addValueManners(type, [](const VideoFrameRate& rate) {
    if (rate.kind() != VideoFrameRateKind::custom) return pickled<VideoFrameRate>(py::str(caseName(rate.kind())));
    return pickled<VideoFrameRate>(py::str("custom"), py::make_tuple(rate.rawValue()));
  });
  module.def(
      "standard_video_frame_rates",
      [] { return std::vector<VideoFrameRate>(standardVideoFrameRates.begin(), standardVideoFrameRates.end()); },
      "Returns the fourteen standard rates in declaration order.");
  module.def("standard_rate_displayed_alike", &standardRateDisplayedAlike, "rate"_a,
             "Returns the first standard rate that is displayed like this custom rate but differs from it; None if "
             "there is none.");
  module.def(
      "describe_frame_rate", [](const Number& rate) { return describeFrameRate(rate.value); }, "frames_per_second"_a,
      "Describes frames per second with the exact standard rate that they match: \"23.976 fps = 24000/1001\".");
}

void addFrameRate(py::module_& module) {
  py::class_<FrameRate> type(module, "FrameRate",
                             "The frame-rate choice of conversion settings: the source's rate, half of it, one of "
                             "eight fixed rates, which are attributes of the class, or a custom one.");
  type.def_static(
      "custom", [](const Number& rate) { return FrameRate::custom(rate.value); }, "frames_per_second"_a,
      "Returns a custom rate in frames per second; 0 if none is entered yet.");
  type.def_static(
      "from_raw_value", [](const Number& value) { return FrameRate::fromRawValue(value.value); }, "raw_value"_a,
      "Returns the choice for a stored number; None for a negative number or NaN.");
  addCases(type, FrameRate::wellDefinedCases());
  type.def_property_readonly("kind", &FrameRate::kind, "The case.");
  type.def_property_readonly("raw_value", &FrameRate::rawValue,
                             "The stored number: frames per second, 0 for match, 0.5 for halfstep.");
  type.def_property_readonly("description", &FrameRate::description, "The display text: \"25 fps\".");
  type.def_property_readonly("picker_description", &FrameRate::pickerDescription, "The display text in a list.");
  type.def_property_readonly("tag", &FrameRate::tag, "The identifier in a list.");
  type.def_static(
      "all_cases", [] { return std::vector<FrameRate>(FrameRate::allCases().begin(), FrameRate::allCases().end()); },
      "Returns all choices to offer; the last is a custom rate that is not entered yet.");
  type.def("__repr__", [](const FrameRate& rate) {
    if (rate.kind() != FrameRateKind::custom) return "FrameRate." + caseName(rate.kind());
    return callText("FrameRate.custom", py::make_tuple(rate.rawValue()));
  });
  addValueManners(type, [](const FrameRate& rate) {
    if (rate.kind() != FrameRateKind::custom) return pickled<FrameRate>(py::str(caseName(rate.kind())));
    return pickled<FrameRate>(py::str("custom"), py::make_tuple(rate.rawValue()));
  });
}

void addVideoDimension(py::module_& module) {
  py::class_<VideoDimension> type(module, "VideoDimension",
                                  "The output-size choice of conversion settings: the source's size, a fixed or custom "
                                  "scale of it, one of seven standard sizes, or a custom one. The fixed ones are "
                                  "attributes of the class.");
  type.def_static("custom", &VideoDimension::custom, "width"_a, "height"_a,
                  "Returns a custom size in pixels; 0 if none is entered yet.");
  type.def_static("scaled", &VideoDimension::scaled, "factor"_a, "Returns a custom scale; 1 is the source's size.");
  addCases(type, VideoDimension::wellDefinedCases());
  type.def_property_readonly("kind", &VideoDimension::kind, "The case.");
  type.def_property_readonly("size", &VideoDimension::size, "The size in pixels; for a scale the factor, twice.");
  type.def_property_readonly("is_scale_option", &VideoDimension::isScaleOption,
                             "Whether the size is relative to the source's.");
  type.def_property_readonly("description", &VideoDimension::description, "The display text: \"HD (1280 x 720)\".");
  type.def_property_readonly("picker_description", &VideoDimension::pickerDescription, "The display text in a list.");
  type.def_property_readonly("tag", &VideoDimension::tag, "The identifier in a list.");
  type.def_static("all_allowed_options", &VideoDimension::allAllowedOptions, "codec"_a,
                  "Returns all choices for a codec, scaled ones first.");
  const auto callOf = [](const VideoDimension& dimension) {
    const bool isCustom = dimension.isCustom();
    return std::pair(isCustom ? "custom" : "scaled",
                     isCustom ? py::make_tuple(dimension.size().width, dimension.size().height)
                              : py::make_tuple(dimension.size().width));
  };
  const auto isFixed = [](const VideoDimension& dimension) {
    return !dimension.isCustom() && !dimension.isCustomScale();
  };
  type.def("__repr__", [=](const VideoDimension& dimension) {
    if (isFixed(dimension)) return "VideoDimension." + caseName(dimension.kind());
    const auto [function, arguments] = callOf(dimension);
    return callText(std::string("VideoDimension.") + function, arguments);
  });
  addValueManners(type, [=](const VideoDimension& dimension) {
    if (isFixed(dimension)) return pickled<VideoDimension>(py::str(caseName(dimension.kind())));
    const auto [function, arguments] = callOf(dimension);
    return pickled<VideoDimension>(py::str(function), arguments);
  });
}

void addTimecode(py::module_& module) {
  using Timecode = TimecodeComponents;
  Record<Timecode> record(module, "TimecodeComponents",
                          "A timecode: the label of a frame. The components may be any whole numbers of 64 bits; only "
                          "reading a text checks them.");
  record.field("hours", &Timecode::hours, "Hours.")
      .field("minutes", &Timecode::minutes, "Minutes.")
      .field("seconds", &Timecode::seconds, "Seconds.")
      .field("frames", &Timecode::frames, "The number of the frame within its second.")
      .field("isDropFrame", &Timecode::isDropFrame, "Whether it is drop frame, with a \";\" before the frames.")
      .fact("timecodeString", &Timecode::timecodeString, "The text: \"01:02:03;04\".")
      .value(
          [](std::int64_t hours, std::int64_t minutes, std::int64_t seconds, std::int64_t frames, bool isDropFrame) {
            return Timecode{hours, minutes, seconds, frames, isDropFrame};
          },
          "hours"_a = 0, "minutes"_a = 0, "seconds"_a = 0, "frames"_a = 0, "is_drop_frame"_a = false,
          "Makes a timecode. hours, minutes, seconds and frames, which count from 0 within a second, are whole numbers "
          "of "
          "64 bits; is_drop_frame is True for drop-frame timecode, which 29.97 and 59.94 frames per second have. The "
          "components are not checked: frame_number() raises TimecodeError for a timecode that labels no frame. "
          "Raises TypeError for anything else.");
  py::class_<Timecode>& type = record.done();
  type.def("__str__", &Timecode::timecodeString);
  type.def_static(
      "from_timecode", [](const Text& text) { return Timecode::fromTimecode(text.value); }, "timecode"_a,
      "Returns the components of a text of proper form; None for any other text.");
  type.def_static(
      "sanitized_timecode", [](const Text& text) { return Timecode::sanitizedTimecode(text.value); }, "text"_a,
      "Returns the components of any text, with 0 for those that it does not have.");

  const auto rateDoc =
      "rate is in frames per second, as a VideoFrameRate, Fraction, Decimal, int or float; TimecodeError is also "
      "raised "
      "for a number that is not finite or whose ratio leaves 64 bits.";
  module.def(
      "frame_number",
      [](const Timecode& timecode, const Rate& rate) {
        const auto number = frameNumber(timecode, rate.value);
        if (!number) raise(errorOf(TimecodeError{number.error(), timecode.timecodeString()}));
        return *number;
      },
      "timecode"_a, "rate"_a,
      (std::string("Returns the number of the frame that the timecode labels, from 0. Raises TimecodeError for a label "
                   "that does not exist at the rate. ") +
       rateDoc)
          .c_str());
  module.def(
      "timecode_of_frame",
      [](std::int64_t number, const Rate& rate, bool isDropFrame) {
        const auto timecode = timecodeOfFrame(number, rate.value, isDropFrame);
        if (!timecode) raise(errorOf(TimecodeError{timecode.error(), std::to_string(number)}));
        return *timecode;
      },
      "frame_number"_a, "rate"_a, "is_drop_frame"_a = false,
      (std::string("Returns the timecode of the frame with this number; the inverse of frame_number(). Raises "
                   "TimecodeError. ") +
       rateDoc)
          .c_str());
  module.def(
      "timecode_frames_per_second", [](const Rate& rate) { return timecodeFramesPerSecond(rate.value); }, "rate"_a,
      "Returns how many frames timecode counts in a second; None for a rate that has no timecode. Raises TimecodeError "
      "for a number that does not fit, as frame_number() does.");
  module.def(
      "dropped_labels_per_minute", [](const Rate& rate) { return droppedLabelsPerMinute(rate.value); }, "rate"_a,
      "Returns how many labels drop-frame timecode skips in a minute: 2 at 29.97, 4 at 59.94, else None. Raises "
      "TimecodeError for a number that does not fit, as frame_number() does.");
}

void addContainers(py::module_& module) {
  using Constants = MediaFormatConstants;
  const auto collected = [](auto&& enumerate) {
    std::vector<Text> texts;
    enumerate([&](std::string_view text, bool& /*stop*/) { texts.push_back(shown(text)); });
    return texts;
  };
  py::class_<Constants, std::unique_ptr<Constants, py::nodelete>> type(
      module, "MediaFormatConstants", "Lookups in the table of media containers, and the list of makers to show.");
  type.def_static(
      "enumerate_valid_file_extensions_for_media_container",
      [=](const Text& container) {
        return collected([&](const auto& block) {
          Constants::enumerateValidFileExtensionsForMediaContainer(container.value, block);
        });
      },
      "container"_a, "Returns the extensions of the container; empty for one without an entry.");
  type.def_static(
      "enumerate_containers_for_file_extension",
      [=](const Text& extension) {
        return collected(
            [&](const auto& block) { Constants::enumerateContainersForFileExtension(extension.value, block); });
      },
      "file_extension"_a, "Returns the containers that have the extension. Ignores case, but not a leading dot.");
  type.def_static(
      "alphabetical_enumeration_of_corporations",
      [=] { return collected([](const auto& block) { Constants::alphabeticalEnumerationOfCorporations(block); }); },
      "Returns the names of fifteen makers, in the order to show.");

  module.def(
      "file_extension_ignoring_case", [](const Text& text) { return fileExtensionIgnoringCase(text.value); }, "text"_a,
      "Returns the extension that equals the text without regard to case; None if there is none. No leading dot.");
  const auto groups = [] {
    py::dict result;
    for (const FileExtensionGroup& group : fileExtensionGroups) {
      py::set extensions;
      for (const FileExtension extension : group.members()) extensions.add(memberOf(extension));
      result[py::str(snakeCase(group.name))] = py::frozenset(extensions);
    }
    return Typed<"dict[str, frozenset[FileExtension]]">(std::move(result));
  };
  module.def("file_extension_groups", groups,
             "Returns the groups of file extensions by name: \"video_file_extensions\".");
}

}  // namespace

void addMedia(py::module_& module) {
  Record<Size>(module, "Size", "A width and a height, in pixels unless a function says otherwise.")
      .field("width", &Size::width, "The width.")
      .field("height", &Size::height, "The height.")
      .value([](double width, double height) { return Size{width, height}; }, "width"_a, "height"_a,
             "Makes a size. width and height are numbers, in pixels unless a function says otherwise, and kept as "
             "given, even "
             "negative or infinite. Raises TypeError for a value that is not a number.")
      .done();
  Record<RgbColor> color(module, "RgbColor", "A colour as three code values, 0 to 255.");
  color.field("red", &RgbColor::red, "From 0 to 255.")
      .field("green", &RgbColor::green, "From 0 to 255.")
      .field("blue", &RgbColor::blue, "From 0 to 255.")
      .fact("text", &RgbColor::text, "The form in which colours are stored: \"255,128,0\".")
      .value([](std::uint8_t red, std::uint8_t green, std::uint8_t blue) { return RgbColor{red, green, blue}; },
             "red"_a, "green"_a, "blue"_a,
             "Makes a colour. red, green and blue are code values, whole numbers from 0 to 255. Raises TypeError for "
             "anything else.");
  color.done().def_static(
      "from_text", [](const Text& text) { return RgbColor::fromText(text.value); }, "text"_a,
      "Returns the colour of \"255,128,0\", \"#ff8000\" or \"#f80\"; None for any other text.");
  addVideoFrameRate(module);
  addFrameRate(module);
  addVideoDimension(module);
  addTimecode(module);
  addContainers(module);
}

}  // namespace meridian::inline v0_2::python
