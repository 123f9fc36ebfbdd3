/// \file
/// Makes Python's enumerations and typed texts when the module is loaded, each from the library's own table or
/// declaration. For example:
///
///     addEnumeration<VideoCropAnchor>(module, "Which part of an image a crop keeps.");
///     // meridian.VideoCropAnchor.top_left.value == "tl"
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/error.h"
#include "meridian/python/conversions.h"

namespace meridian::inline v0_2::python {

namespace detail {

/// Returns the number of cases: those of the table, or values from 0 on for which the compiler has a name.
template <Enumeration E>
consteval std::size_t caseCount() {
  if constexpr (TabledEnumeration<E>) {
    return allCases<E>().size();
  } else {
    return []<std::size_t... place>(std::index_sequence<place...>) {
      return (std::size_t{!enumeratorName<static_cast<E>(place)>().empty()} + ...);
    }(std::make_index_sequence<16>());
  }
}

template <Enumeration E>
inline constexpr auto caseNames = []<std::size_t... place>(std::index_sequence<place...>) {
  return std::array{enumeratorName<static_cast<E>(place)>()...};
}(std::make_index_sequence<caseCount<E>()>());

/// Returns the row for `make_enumeration`.
template <Enumeration E>
py::tuple rowOf(E value) {
  const std::string member = snakeCase(caseNames<E>[static_cast<std::size_t>(value)]);
  if constexpr (ErrorCode<E>) {
    return py::make_tuple(member, rawValue(value), description(value), remedy(value));
  } else if constexpr (TabledEnumeration<E>) {
    return py::make_tuple(member, rawValue(value), description(value), py::none());
  } else {
    return py::make_tuple(member, member, member, py::none());
  }
}

}  // namespace detail

/// What an enumeration's class gets from its declaration: its docstring, and one property beside `description`.
template <Enumeration E>
struct EnumerationClass {
  inline static PyObject* module = nullptr;
  inline static const char* doc = nullptr;
  inline static void (*extend)(const py::object& type) = nullptr;
};

/// Makes the enumeration's class and its members.
template <Enumeration E>
void makeEnumeration() {
  const std::string name(typeName<E>());
  py::list rows;
  for (std::size_t place = 0; place < detail::caseCount<E>(); ++place) {
    rows.append(detail::rowOf(static_cast<E>(place)));
  }
  const auto made =
      py::module_::import("meridian._vocabulary").attr("make_enumeration")(name, EnumerationClass<E>::doc, rows);
  std::vector<py::object> members;
  for (const py::handle row : rows) members.push_back(made.attr(row[py::int_(0)]));
  if (EnumerationClass<E>::extend != nullptr) EnumerationClass<E>::extend(made);
  // Python code ran above, so another thread may have made the enumeration meanwhile. No Python code runs below.
  if (!PythonEnumeration<E>::members.empty()) return;
  std::vector<PyObject*> kept(members.size());
  std::ranges::transform(members, kept.begin(), [](py::object& member) { return member.release().ptr(); });
  PythonEnumeration<E>::members = std::move(kept);
  py::handle(EnumerationClass<E>::module).attr(name.c_str()) = made;
}

/// Adds an enumeration under its own name, to be made when it is asked for.
template <Enumeration E>
void addEnumeration(py::module_& module, const char* doc, void (*extend)(const py::object&) = nullptr) {
  EnumerationClass<E>::module = module.ptr();
  EnumerationClass<E>::doc = doc;
  EnumerationClass<E>::extend = extend;
  PythonEnumeration<E>::make = &makeEnumeration<E>;
  module.attr("_enumerations")[py::str(std::string(typeName<E>()))] =
      py::cpp_function([] { static_cast<void>(PythonEnumeration<E>::all()); });
}

/// Adds a type of typed texts under its own name, with the class method `all_cases` where it has cases.
template <TypedTextType T>
py::object addTypedText(py::module_& module, const char* doc) {
  const std::string name(typeName<T>());
  py::object made = py::module_::import("meridian._vocabulary").attr("make_typed_text")(name, doc);
  module.attr(name.c_str()) = made;
  textType<T> = {py::object(made).release().ptr(), py::dict().release().ptr()};
  return made;
}

/// Adds a constant: a value of its typed text, or a plain text or number.
template <typename Value>
void addConstant(py::module_& module, const char* name, const Value& value) {
  if constexpr (TypedTextType<Value>) {
    const TextType& type = textType<Value>;
    const py::str text = strOf(value.rawValue());
    const py::object constant = py::handle(type.type)(text);
    if (PyDict_SetItem(type.constants, text.ptr(), constant.ptr()) != 0) throw py::error_already_set();
    module.attr(name) = constant;
  } else {
    module.attr(name) = value;
  }
}

}  // namespace meridian::inline v0_2::python
