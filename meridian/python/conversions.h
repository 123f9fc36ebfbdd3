/// \file
/// How values pass between Python and the library, each type once: included by every source of the module, so that
/// pybind11 knows the same conversions everywhere.
///
///     m.def("file_path_adjusted_for_collision", &filePathAdjustedForCollision);   // str in and out, any bytes
///
/// Texts and paths may hold any bytes. They pass as os.fsencode() and os.fsdecode() have them, so that bytes that are
/// not text in the file system's encoding become surrogates and come back unchanged.
#pragma once

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/text_dictionary.h"
#include "meridian/base/typed_text.h"
#include "meridian/media/rational.h"
#include "meridian/platform/item_kind.h"
#include "meridian/platform/url.h"
#include "meridian/python/names.h"

namespace meridian::inline v0_2::python {

namespace py = pybind11;

/// A text of the caller, which may hold any bytes. In Python a str.
struct Text {
  std::string value;
};

/// A path from Python: a str, bytes or os.PathLike. Paths to Python are texts, since pathlib would change some.
struct Path {
  std::string value;

  [[nodiscard]] Url url() const { return Url::fromFilePath(value); }
};

/// The words of an argument vector: any iterable of str, bytes and os.PathLike, but not one str.
struct Words {
  std::vector<std::string> values;
};

/// A ratio from Python: any real number. To Python a Fraction.
struct Ratio {
  MediaRational value;
};

/// A number from Python as a double: of any type that float() accepts, but not a text or a bool. One that is too large
/// is a ValueError.
struct Number {
  double value = 0;
};

/// A text as a template argument.
template <std::size_t size>
struct Annotation {
  // NOLINTNEXTLINE(google-explicit-constructor,modernize-avoid-c-arrays): written as the text that it is.
  consteval Annotation(const char (&written)[size]) { std::copy_n(written, size, text); }
  char text[size]{};  // NOLINT(modernize-avoid-c-arrays): as pybind11 has it
};

/// A Python object with the annotation that signatures show for it.
template <Annotation annotation>
struct Typed : py::object {
  using object::object;
  // NOLINTNEXTLINE(google-explicit-constructor): any object becomes one with an annotation.
  Typed(py::object given) : py::object(std::move(given)) {}
  static bool check_(py::handle handle) { return handle.ptr() != nullptr; }
};

[[nodiscard]] py::str strOf(std::string_view text);
/// Returns the bytes of a str; throws UnicodeEncodeError as a Python exception.
[[nodiscard]] std::string bytesOfStr(py::handle text);
/// Returns the bytes of a path; absent for another type.
[[nodiscard]] std::optional<std::string> bytesOfPath(py::handle path);
/// Returns the elements as bytes; absent for a str, for what is not iterable, and for elements of another type.
[[nodiscard]] std::optional<std::vector<std::string>> bytesOfAll(py::handle iterable);

/// Any enumeration: those with a table, and those that the compiler counts.
template <typename Type>
concept Enumeration = std::is_enum_v<Type> && (TabledEnumeration<Type> || std::is_same_v<Type, ItemKind>);

/// The Python side of an enumeration: its members by the numbers of the cases, and what makes them. It is made when it
/// is needed first, since all of them would take most of the time in which the module is loaded; and then kept.
template <Enumeration E>
struct PythonEnumeration {
  inline static std::vector<PyObject*> members;
  inline static void (*make)() = nullptr;

  [[nodiscard]] static const std::vector<PyObject*>& all() {
    if (members.empty()) make();
    return members;
  }
};

template <Enumeration E>
[[nodiscard]] py::object memberOf(E value) {
  return py::reinterpret_borrow<py::object>(PythonEnumeration<E>::all().at(static_cast<std::size_t>(value)));
}

/// Returns the case of a member; absent for any other object.
template <Enumeration E>
[[nodiscard]] std::optional<E> valueOfMember(py::handle member) {
  const std::vector<PyObject*>& members = PythonEnumeration<E>::members;
  for (std::size_t place = 0; place < members.size(); ++place) {
    if (members[place] == member.ptr()) return static_cast<E>(place);
  }
  return std::nullopt;
}

/// The Python type of a typed text, and the constants by their texts. Kept likewise.
struct TextType {
  PyObject* type = nullptr;
  PyObject* constants = nullptr;
};
template <TypedTextType T>
inline TextType textType;

/// Returns the constant with this text, or a new value of the type.
[[nodiscard]] py::object typedTextOf(const TextType& type, std::string_view text);

/// Returns fractions.Fraction of the terms; throws ZeroDivisionError as a Python exception.
[[nodiscard]] py::object fractionOf(std::int64_t numerator, std::int64_t denominator);
/// Returns the ratio of a number, reduced; absent for another type. An int, a Fraction, a Decimal and what is used as
/// one, such as an integer of numpy, have an exact ratio; a float and any other real number, such as a numpy.float32,
/// that of `MediaRational::fromRawValue`. Throws pybind11's value_error for a number that is not finite and for terms
/// beyond 64 bits.
[[nodiscard]] std::optional<MediaRational> rationalOf(py::handle number);

/// Returns the number as a double; absent for another type. Infinite if it is too large.
[[nodiscard]] std::optional<double> doubleOf(py::handle number);

/// Returns a dict in the dictionary's order.
[[nodiscard]] py::dict dictOf(const TextDictionary& dictionary);
/// Returns a new dict with a mapping's items; throws TypeError if it is not a mapping.
[[nodiscard]] py::dict copiedDict(const py::object& mapping);
/// Returns the number of an int or of what is used as one, but not of a bool; absent for another type. Throws
/// OverflowError for a number beyond 64 bits.
[[nodiscard]] std::optional<std::int64_t> integerOf(py::handle number);
/// Returns the dictionary of any mapping's items; throws TypeError.
[[nodiscard]] TextDictionary textDictionaryOf(const py::object& mapping);

/// Returns what the function does, while other threads of Python run. It touches no Python object.
template <typename Function>
auto withoutLock(Function&& function) {
  const py::gil_scoped_release release;
  return std::forward<Function>(function)();
}

/// Returns repr() of the object, cut to a few words.
[[nodiscard]] std::string shortRepr(py::handle object);

/// Throws TypeError: "video_frame_rate: expected float, found str".
[[noreturn]] void failWithType(std::string_view what, std::string_view expected, py::handle found);

/// Returns the name of a type for signatures.
template <typename Type>
[[nodiscard]] constexpr auto signatureName() {
  return []<std::size_t... place>(std::index_sequence<place...>) {
    return py::detail::descr<sizeof...(place)>(typeName<Type>()[place]...);
  }(std::make_index_sequence<typeName<Type>().size()>());
}

}  // namespace meridian::inline v0_2::python

namespace pybind11::detail {

template <>
class type_caster<meridian::python::Text> {
 public:
  PYBIND11_TYPE_CASTER(meridian::python::Text, const_name("str"));
  bool load(handle source, bool /*convert*/) {
    if (!PyUnicode_Check(source.ptr())) return false;
    value.value = meridian::python::bytesOfStr(source);
    return true;
  }
  static handle cast(const meridian::python::Text& text, return_value_policy /*policy*/, handle /*parent*/) {
    return meridian::python::strOf(text.value).release();
  }
};

template <>
class type_caster<meridian::python::Path> {
 public:
  PYBIND11_TYPE_CASTER(meridian::python::Path, const_name("StrOrBytesPath"));
  bool load(handle source, bool /*convert*/) {
    auto bytes = meridian::python::bytesOfPath(source);
    if (!bytes) return false;
    value.value = *std::move(bytes);
    return true;
  }
};

template <>
class type_caster<meridian::python::Words> {
 public:
  PYBIND11_TYPE_CASTER(meridian::python::Words, const_name("Iterable[StrOrBytesPath]"));
  bool load(handle source, bool /*convert*/) {
    auto words = meridian::python::bytesOfAll(source);
    if (!words) return false;
    value.values = *std::move(words);
    return true;
  }
};

template <meridian::python::Enumeration E>
class type_caster<E> {
 public:
  PYBIND11_TYPE_CASTER(E, meridian::python::signatureName<E>());
  bool load(handle source, bool /*convert*/) {
    const auto found = meridian::python::valueOfMember<E>(source);
    if (!found) return false;
    value = *found;
    return true;
  }
  static handle cast(E member, return_value_policy /*policy*/, handle /*parent*/) {
    return meridian::python::memberOf(member).release();
  }
};

/// To Python alone: a typed text is a view, which a str of Python would not outlive.
template <meridian::TypedTextType T>
struct type_caster<T> {
  static constexpr auto name = meridian::python::signatureName<T>();
  static handle cast(const T& text, return_value_policy /*policy*/, handle /*parent*/) {
    return meridian::python::typedTextOf(meridian::python::textType<T>, text.rawValue()).release();
  }
  template <typename>
  using cast_op_type = const T&;
};

template <>
class type_caster<meridian::python::Ratio> {
 public:
  PYBIND11_TYPE_CASTER(meridian::python::Ratio, const_name("SupportsFloat"));
  bool load(handle source, bool /*convert*/) {
    const auto rational = meridian::python::rationalOf(source);
    if (rational) value.value = *rational;
    return rational.has_value();
  }
};

template <>
class type_caster<meridian::python::Number> {
 public:
  PYBIND11_TYPE_CASTER(meridian::python::Number, const_name("SupportsFloat"));
  bool load(handle source, bool /*convert*/) {
    const auto number = meridian::python::doubleOf(source);
    if (number) value.value = *number;
    if (std::isinf(value.value) && !PyFloat_Check(source.ptr())) {
      throw value_error("expected a number in the range of float, found " + meridian::python::shortRepr(source));
    }
    return number.has_value();
  }
};

template <>
struct type_caster<meridian::MediaRational> {
  static constexpr auto name = const_name("Fraction");
  static handle cast(const meridian::MediaRational& ratio, return_value_policy /*policy*/, handle /*parent*/) {
    return meridian::python::fractionOf(ratio.numerator, ratio.denominator).release();
  }
  template <typename>
  using cast_op_type = const meridian::MediaRational&;
};

template <meridian::python::Annotation annotation>
struct handle_type_name<meridian::python::Typed<annotation>> {
  static constexpr auto name = descr<sizeof(annotation.text) - 1>(annotation.text);
};

}  // namespace pybind11::detail
