#include "meridian/python/properties.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "meridian/cli/transcode_detail_values.h"
#include "meridian/cli/transcode_values.h"
#include "meridian/python/errors.h"
#include "meridian/python/record.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;

/// The conversion of a kind: specialised for each, with `annotation()`, `toPython(value)` and `fromPython(object)`, and
/// `accepted()` where more types are accepted than returned.
template <PropertyKind kind>
struct Conversion;

/// Values that pybind11 converts, of a type of its own.
template <typename Value>
struct PlainConversion {
  static py::object toPython(const PropertyValue& value) { return py::cast(std::get<Value>(value)); }
};

template <>
struct Conversion<PropertyKind::onOff> : PlainConversion<bool> {
  static std::string annotation() { return "bool"; }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    if (!PyBool_Check(object.ptr())) return std::nullopt;
    return object.ptr() == Py_True;
  }
};

template <>
struct Conversion<PropertyKind::integer> : PlainConversion<std::int64_t> {
  static std::string annotation() { return "int"; }
  static std::string accepted() { return "SupportsIndex"; }
  static std::optional<PropertyValue> fromPython(py::handle object) { return integerOf(object); }
};

template <>
struct Conversion<PropertyKind::number> {
  static std::string annotation() { return "float"; }
  static std::string accepted() { return "SupportsFloat"; }
  /// The float of 32 bits as the decimal number that it is written as, 23.976 and not 23.975999832153320.
  static py::object toPython(const PropertyValue& value) {
    const float number = std::get<float>(value);
    std::array<char, 32> text{};
    *std::to_chars(text.data(), text.data() + text.size() - 1, number).ptr = '\0';
    return py::float_(std::isfinite(number) ? PyOS_string_to_double(text.data(), nullptr, nullptr)
                                            : static_cast<double>(number));
  }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    const auto number = doubleOf(object);
    if (!number) return std::nullopt;
    return static_cast<float>(*number);
  }
};
template <>
struct Conversion<PropertyKind::frameRate> : Conversion<PropertyKind::number> {};

template <>
struct Conversion<PropertyKind::text> {
  static std::string annotation() { return "str"; }
  static py::object toPython(const PropertyValue& value) { return strOf(std::get<std::string>(value)); }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    if (!PyUnicode_Check(object.ptr())) return std::nullopt;
    return bytesOfStr(object);
  }
};
template <>
struct Conversion<PropertyKind::path> : Conversion<PropertyKind::text> {
  static std::string accepted() { return "StrOrBytesPath"; }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    auto path = bytesOfPath(object);
    return path ? std::optional<PropertyValue>(*std::move(path)) : std::nullopt;
  }
};
template <>
struct Conversion<PropertyKind::file> : Conversion<PropertyKind::path> {};

/// Small values, which a tuple of their members stands for too.
template <typename Value>
struct ValueConversion : PlainConversion<Value> {
  static std::string annotation() { return std::string(typeName<Value>()); }
  static std::string accepted() { return annotation() + " | tuple[Any, ...]"; }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    if (py::isinstance<Value>(object)) return object.cast<Value>();
    if (!PyTuple_Check(object.ptr())) return std::nullopt;
    return py::type::of<Value>()(*py::reinterpret_borrow<py::tuple>(object)).template cast<Value>();
  }
};
template <>
struct Conversion<PropertyKind::dimensions> : ValueConversion<Size> {};
template <>
struct Conversion<PropertyKind::color> : ValueConversion<RgbColor> {};
template <>
struct Conversion<PropertyKind::timecode> : ValueConversion<TimecodeComponents> {};

/// Typed texts. Any str is accepted, since any text is allowed; setPropertyValue checks it.
template <TypedTextType T>
struct TypedTextConversion {
  static std::string annotation() { return std::string(typeName<T>()); }
  static std::string accepted() { return "str"; }
  static py::object toPython(const PropertyValue& value) {
    return typedTextOf(textType<T>, std::get<std::string>(value));
  }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    return Conversion<PropertyKind::text>::fromPython(object);
  }
};
template <>
struct Conversion<PropertyKind::fileFormat> : TypedTextConversion<SAVTranscodeArgumentFileFormatValue> {};
template <>
struct Conversion<PropertyKind::videoCodec> : TypedTextConversion<SAVTranscodeArgumentVideoCodecValue> {};
template <>
struct Conversion<PropertyKind::aspectRatio> : TypedTextConversion<SAVTranscodeArgumentAspectRatioValue> {};
template <>
struct Conversion<PropertyKind::overlayAnchor> : TypedTextConversion<SAVTranscodeArgumentOverlayAnchorValue> {};
template <>
struct Conversion<PropertyKind::colorSpace> : TypedTextConversion<SAVTranscodeArgumentColorSpaceValue> {};
template <>
struct Conversion<PropertyKind::audioFormat> : TypedTextConversion<SAVTranscodeArgumentAudioFormatValue> {};
template <>
struct Conversion<PropertyKind::channelLayout> : TypedTextConversion<SAVTranscodeArgumentAudioChannelLayoutValue> {};

/// Enumerations, whose members alone are accepted.
template <TabledEnumeration E>
struct EnumerationConversion {
  static std::string annotation() { return std::string(typeName<E>()); }
  static py::object toPython(const PropertyValue& value) {
    return memberOf(fromRawValue<E>(std::get<std::string>(value)).value());
  }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    const auto member = valueOfMember<E>(object);
    return member ? std::optional<PropertyValue>(std::string(rawValue(*member))) : std::nullopt;
  }
};
template <>
struct Conversion<PropertyKind::cropAnchor> : EnumerationConversion<VideoCropAnchor> {};
template <>
struct Conversion<PropertyKind::audioQuality> : EnumerationConversion<TranscodeAudioQuality> {};
template <>
struct Conversion<PropertyKind::timecodeSource> : EnumerationConversion<TimecodeSource> {};

template <>
struct Conversion<PropertyKind::files> {
  static std::string annotation() { return "list[str]"; }
  static std::string accepted() { return "Iterable[StrOrBytesPath]"; }
  static py::object toPython(const PropertyValue& value) {
    return py::cast(shown(std::get<std::vector<std::string>>(value)));
  }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    auto paths = bytesOfAll(object);
    return paths ? std::optional<PropertyValue>(*std::move(paths)) : std::nullopt;
  }
};

template <>
struct Conversion<PropertyKind::trackNumbers> : PlainConversion<std::vector<std::int64_t>> {
  static std::string annotation() { return "list[int]"; }
  static std::string accepted() { return "Iterable[SupportsIndex]"; }
  static std::optional<PropertyValue> fromPython(py::handle object) {
    if (PyUnicode_Check(object.ptr()) || PyBytes_Check(object.ptr()) || !py::hasattr(object, "__iter__")) {
      return std::nullopt;
    }
    std::vector<std::int64_t> tracks;
    for (const py::handle track : py::iter(object)) {
      const auto number = Conversion<PropertyKind::integer>::fromPython(track);
      if (!number) return std::nullopt;
      tracks.push_back(std::get<std::int64_t>(*number));
    }
    return tracks;
  }
};

template <typename Converting>
std::string acceptedBy() {
  if constexpr (requires { Converting::accepted(); }) {
    return Converting::accepted();
  } else {
    return Converting::annotation();
  }
}

const auto& conversions() {
  // Kept, since the module is never unloaded.
  static const auto& all = *new auto([]<std::size_t... place>(std::index_sequence<place...>) {
    constexpr auto kindAt = [](std::size_t index) { return allCases<PropertyKind>()[index]; };
    return std::array{PropertyConversion{Conversion<kindAt(place)>::annotation(),
                                         acceptedBy<Conversion<kindAt(place)>>(), &Conversion<kindAt(place)>::toPython,
                                         &Conversion<kindAt(place)>::fromPython}...};
  }(std::make_index_sequence<allCases<PropertyKind>().size()>()));
  return all;
}

/// Raises an error with Python's names instead of those of C++.
[[noreturn]] void raiseProperty(PropertyError error) {
  if (error.code != PropertyErrorCode::unknownProperty) error.place = snakeCase(error.place);
  error.advice = snakeCase(error.advice);
  raise(errorOf(error));
}

void setProperty(TranscodeCliArguments& arguments, const TranscodeProperty& property, const py::object& object) {
  if (object.is_none()) {
    removeProperty(arguments, property);
    return;
  }
  const PropertyConversion& conversion = conversionOf(property.kind);
  const auto value = conversion.fromPython(object);
  if (!value) failWithType(snakeCase(property.name), conversion.annotation + " or None", object);
  if (const auto set = setPropertyValue(arguments, property, *value); !set) raiseProperty(set.error());
}

/// Returns whether a property always has a value.
bool isSwitch(const TranscodeProperty& property) { return property.kind == PropertyKind::onOff; }

/// Returns a text of the list with the names of properties as Python has them.
std::string withPythonNames(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(" ,.;:"), text.size() - 1) + 1;
    const std::string_view word = text.substr(0, text.find_first_of(" ,.;:"));
    const bool isName =
        std::ranges::find(transcodeProperties, word, &TranscodeProperty::name) != transcodeProperties.end();
    result += isName ? snakeCase(word) : std::string(word);
    result.append(text.substr(word.size(), end - word.size()));
    text.remove_prefix(end);
  }
  return result;
}

std::string docOf(const TranscodeProperty& property) {
  std::string doc = withPythonNames(property.meaning);
  doc += ".";
  if (!property.unit.empty()) doc.append(" In ").append(property.unit).append(".");
  doc.append("\n\nIf absent: ").append(withPythonNames(property.whenAbsent));
  doc.append(". For example \"").append(property.example).append("\" as text.");
  doc += " Setting None removes it. Raises PropertyError for a value that no command line can carry, and TypeError.";
  return doc;
}

/// Returns the property of a name in Python or in C++; raises PropertyError with the nearest name.
const TranscodeProperty& propertyOfName(const Text& name) {
  for (const TranscodeProperty& property : transcodeProperties) {
    if (snakeCase(property.name) == name.value) return property;
  }
  const auto property = transcodePropertyNamed(name.value);
  if (!property) raiseProperty(property.error());
  return **property;
}

void addList(py::module_& module) {
  Record<TranscodeProperty>(module, "TranscodeProperty",
                            "A property of a transcode: where it is stored and what it means.")
      .fact(
          "name", [](const TranscodeProperty& property) { return snakeCase(property.name); },
          "The name of the attribute.", /*isField=*/true)
      .fact(
          "flags",
          [](const TranscodeProperty& property) {
            return shown(std::vector<std::string>(property.flags().begin(), property.flags().end()));
          },
          "The flag that stores the property, or the flags that make it up.", /*isField=*/true)
      .field("kind", &TranscodeProperty::kind, "How the value is written as text.")
      .field("unit", &TranscodeProperty::unit, "The unit of a number or size; empty if it has none.")
      .fact(
          "whenAbsent", [](const TranscodeProperty& property) { return withPythonNames(property.whenAbsent); },
          "What happens without the property.", /*isField=*/true)
      .field("example", &TranscodeProperty::example, "A valid value, as text.")
      .fact(
          "meaning", [](const TranscodeProperty& property) { return withPythonNames(property.meaning); },
          "What the property does, as an imperative line.", /*isField=*/true)
      .fact("isJoint", &TranscodeProperty::isJoint, "Whether several or numbered flags make it up.")
      .fact(
          "annotation",
          [](const TranscodeProperty& property) {
            return conversionOf(property.kind).annotation + (isSwitch(property) ? "" : " | None");
          },
          "The Python type of the attribute, as annotations write it.")
      .fact(
          "acceptedAnnotation",
          [](const TranscodeProperty& property) { return conversionOf(property.kind).accepted + " | None"; },
          "The Python types that the attribute can be set to.")
      .fact(
          "allowedTexts",
          [](const TranscodeProperty& property) {
            const auto texts = allowedTexts(property);
            return shown(std::vector<std::string>(texts.begin(), texts.end()));
          },
          "The texts of which the property accepts one; empty for another kind.")
      .fact("expectedForm", &expectedForm, "What the property accepts, for messages: \"a size, such as 1920x1080\".")
      .done()
      .def_static("_named", &propertyOfName)
      .def("__reduce__", [](const TranscodeProperty& property) {
        return pickled<TranscodeProperty>(py::str("_named"), py::make_tuple(snakeCase(property.name)));
      });
  module.def(
      "transcode_properties",
      [] { return std::vector<TranscodeProperty>(transcodeProperties.begin(), transcodeProperties.end()); },
      "Returns every property of a transcode, in the order of the groups of flags.");
}

}  // namespace

const PropertyConversion& conversionOf(PropertyKind kind) { return conversions().at(static_cast<std::size_t>(kind)); }

py::object propertyObject(const TranscodeCliArguments& arguments, const TranscodeProperty& property) {
  const auto value = propertyValue(arguments, property);
  return value ? conversionOf(property.kind).toPython(*value) : py::none();
}

void addProperties(py::module_& module, py::class_<TranscodeCliArguments>& type) {
  for (const TranscodeProperty& property : transcodeProperties) {
    const std::string doc = docOf(property);
    type.def_property(
        snakeCase(property.name).c_str(),
        [&property](const TranscodeCliArguments& arguments) { return propertyObject(arguments, property); },
        [&property](TranscodeCliArguments& arguments, const py::object& value) {
          setProperty(arguments, property, value);
        },
        doc.c_str());
  }
  type.def(
      "property_value",
      [](const TranscodeCliArguments& arguments, const Text& name) {
        return propertyObject(arguments, propertyOfName(name));
      },
      "name"_a, "Returns the value of the property of this name, as its attribute does. Raises PropertyError.");
  type.def(
      "property_text",
      [](const TranscodeCliArguments& arguments, const Text& name) {
        return shown(propertyText(arguments, propertyOfName(name)));
      },
      "name"_a, "Returns the property as text; None if it is not set or not valid. Raises PropertyError.");
  type.def(
      "set_property_text",
      [](TranscodeCliArguments& arguments, const Text& name, const Text& text) {
        if (const auto set = setPropertyText(arguments, propertyOfName(name), text.value); !set) {
          raiseProperty(set.error());
        }
      },
      "name"_a, "text"_a,
      "Sets the property to a person's input: blanks around it and letter case are ignored, and the empty text removes "
      "it. Raises PropertyError, and changes nothing, for input that is not valid.");
  type.def(
      "remove_property",
      [](TranscodeCliArguments& arguments, const Text& name) { removeProperty(arguments, propertyOfName(name)); },
      "name"_a, "Removes the property, so that its default applies. Raises PropertyError.");
  addList(module);
}

}  // namespace meridian::inline v0_2::python
