/// \file
/// Binds a structure of plain members as a Python class with read-only properties, and makes what every such class has
/// from the list of its members: ==, hash(), repr() that evaluates, and iteration where it is a value. For example:
///
///     Record<RgbColor>(module, "A colour.").field("red", &RgbColor::red, "From 0 to 255.").value<int, int, int>();
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "meridian/python/conversions.h"

namespace meridian::inline v0_2::python {

template <typename Value>
inline constexpr bool isOptional = false;
template <typename Value>
inline constexpr bool isOptional<std::optional<Value>> = true;

/// Returns a member as what pybind11 converts: texts may hold any bytes.
inline Text shown(std::string_view text) { return {std::string(text)}; }
inline Text shown(const std::string& text) { return {text}; }
inline std::vector<Text> shown(const std::vector<std::string>& texts) {
  std::vector<Text> result;
  for (const std::string& text : texts) result.push_back({text});
  return result;
}
template <typename Value>
  requires(!std::is_convertible_v<Value, std::string_view> && !isOptional<Value>)
Value shown(const Value& value) {
  return value;
}

template <typename Value>
auto shown(const std::optional<Value>& value) {
  using Shown = decltype(shown(*value));
  return value ? std::optional<Shown>(shown(*value)) : std::nullopt;
}

/// Returns how a value is pickled: as an attribute of its class, or the arguments of one that is a function.
template <typename Value>
Typed<"tuple[object, ...]"> pickled(const py::object& name, const py::tuple& arguments = py::tuple()) {
  const py::tuple attribute = py::make_tuple(py::type::of<Value>(), name);
  return {
      py::make_tuple(py::module_::import("meridian._vocabulary").attr("restore"), py::tuple(attribute + arguments))};
}

template <typename Type>
class Record {
 public:
  Record(py::handle scope, const char* name, const char* doc) : type_(scope, name, doc) {}

  template <typename Member>
  Record& field(const char* name, Member Type::* member, const char* doc) {
    return fact(name, [member](const Type& record) { return shown(record.*member); }, doc, /*isField=*/true);
  }

  /// Adds a property that is computed. With `isField` it counts as a member.
  template <typename Getter>
  Record& fact(const char* name, Getter&& getter, const char* doc, bool isField = false) {
    const std::string python = snakeCase(name);
    type_.def_property_readonly(python.c_str(), std::forward<Getter>(getter), doc);
    if (isField) fields_->push_back(python);
    return *this;
  }

  /// Makes it a value: with a constructor of all members, pickled by them, hashable, and iterated over.
  template <typename... Members, typename Factory, typename... Arguments>
  Record& value(Factory&& factory, const Arguments&... arguments) {
    type_.def(py::init(std::forward<Factory>(factory)), arguments...);
    type_.def("__reduce__", [fields = fields_](const py::object& self) {
      return Typed<"tuple[object, ...]">(py::make_tuple(py::type::of(self), membersOf(self, *fields)));
    });
    type_.def("__iter__", [fields = fields_](const py::object& self) {
      return Typed<"Iterator[Any]">(py::reinterpret_steal<py::object>(py::iter(membersOf(self, *fields)).release()));
    });
    return *this;
  }

  /// Adds what follows from the members.
  py::class_<Type>& done() {
    type_.def("__eq__", [fields = fields_](const py::object& self, const py::object& other) {
      if (!py::isinstance<Type>(other)) return py::reinterpret_borrow<py::object>(Py_NotImplemented);
      return py::object(py::bool_(membersOf(self, *fields).equal(membersOf(other, *fields))));
    });
    // It cannot be changed.
    type_.def("__copy__", [](const py::object& self) { return Typed<"Self">(self); });
    type_.def(
        "__deepcopy__", [](const py::object& self, const py::dict& /*memo*/) { return Typed<"Self">(self); },
        py::arg("memo"));
    type_.def("__hash__", [fields = fields_](const py::object& self) { return py::hash(membersOf(self, *fields)); });
    type_.def("__repr__", [fields = fields_](const py::object& self) {
      const py::object enumeration = py::module_::import("enum").attr("Enum");
      std::string text(py::str(py::type::of(self).attr("__qualname__")));
      const char* separator = "(";
      for (const std::string& name : *fields) {
        text.append(std::exchange(separator, ", ")).append(name).append("=");
        const py::object member = self.attr(name.c_str());
        text.append(py::isinstance(member, enumeration) ? py::str(member) : py::str(py::repr(member)));
      }
      return text + ")";
    });
    return type_;
  }

  [[nodiscard]] py::class_<Type>& type() { return type_; }

 private:
  static py::tuple membersOf(const py::object& self, const std::vector<std::string>& fields) {
    py::tuple members(fields.size());
    for (std::size_t place = 0; place < fields.size(); ++place) members[place] = self.attr(fields[place].c_str());
    return members;
  }

  py::class_<Type> type_;
  std::shared_ptr<std::vector<std::string>> fields_ = std::make_shared<std::vector<std::string>>();
};

}  // namespace meridian::inline v0_2::python
