// One line for arguments of the wrong types, with their types instead of their contents: pybind11 prints several lines
// and every argument in full, even a whole argument vector.
#include <algorithm>
#include <string>
#include <string_view>

#include "meridian/python/module.h"

namespace meridian::inline v0_2::python {
namespace {

using Call = PyObject* (*)(PyObject*, PyObject*, PyObject*);

PyCFunction asMethod(Call call) { return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(call)); }

/// What pybind11 calls every function of a module by.
Call dispatcher = nullptr;

/// Returns the arguments' types as a call is written: "(str, height=int)".
std::string typesOf(const py::tuple& positional, std::size_t first, const py::dict& keywords) {
  constexpr std::size_t mostShown = 16;
  std::string text;
  const auto add = [&text](std::string_view name, py::handle argument) {
    text.append(text.empty() ? "(" : ", ").append(name).append(Py_TYPE(argument.ptr())->tp_name);
  };
  for (std::size_t place = first; place < std::min(positional.size(), mostShown); ++place) add("", positional[place]);
  if (positional.size() > mostShown) text += ", ...";
  for (const auto& [name, argument] : keywords) add(std::string(py::str(name)) + "=", argument);
  return (text.empty() ? "(" : text) + ")";
}

/// Returns pybind11's message as one line; empty for any other message.
std::string shortened(const std::string& message, PyObject* arguments, PyObject* keywords) {
  constexpr std::string_view head = " arguments. The following argument types are supported:\n    1. ";
  const std::size_t begin = message.find(head);
  if (begin == std::string::npos) return {};
  std::string expected =
      message.substr(begin + head.size(), message.find('\n', begin + head.size()) - begin - head.size());
  const bool isConstructor = message.find("constructor" + std::string(head)) != std::string::npos;
  if (!isConstructor) expected.insert(0, message, 0, message.find("()"));
  expected.resize(std::min(expected.size(), expected.rfind(" -> ")));
  const auto positional = py::reinterpret_borrow<py::tuple>(arguments);
  const auto named = keywords == nullptr ? py::dict() : py::reinterpret_borrow<py::dict>(keywords);
  return "expected " + expected + ", found " + expected.substr(0, expected.find('(')) +
         typesOf(positional, isConstructor ? 1 : 0, named);
}

PyObject* callWithShortErrors(PyObject* self, PyObject* arguments, PyObject* keywords) {
  PyObject* const result = dispatcher(self, arguments, keywords);
  if (result != nullptr || PyErr_ExceptionMatches(PyExc_TypeError) == 0) return result;
  py::error_already_set error;
  try {
    const std::string message = shortened(py::str(error.value()), arguments, keywords);
    if (!message.empty()) {
      PyErr_SetString(PyExc_TypeError, message.c_str());
      return nullptr;
    }
  } catch (const std::exception&) {
    PyErr_Clear();  // The message as it is, then.
  }
  error.restore();
  return nullptr;
}

/// Wraps a function that pybind11 made, or those of a property or class.
void wrap(py::handle object) {
  if (PyInstanceMethod_Check(object.ptr())) {
    wrap(PyInstanceMethod_Function(object.ptr()));
  } else if (PyCFunction_Check(object.ptr())) {
    PyMethodDef* const method = reinterpret_cast<PyCFunctionObject*>(object.ptr())->m_ml;
    if (method->ml_meth == asMethod(dispatcher)) method->ml_meth = asMethod(&callWithShortErrors);
  } else if (py::isinstance(object, reinterpret_cast<PyObject*>(&PyProperty_Type))) {
    wrap(object.attr("fget"));
    wrap(object.attr("fset"));
  } else if (py::isinstance(object, reinterpret_cast<PyObject*>(&PyStaticMethod_Type))) {
    wrap(object.attr("__func__"));
  } else if (PyType_Check(object.ptr())) {
    for (const py::handle member : py::list(object.attr("__dict__").attr("values")())) wrap(member);
  }
}

}  // namespace

void shortenTypeErrors(const py::module_& module) {
  const py::cpp_function any([] {});
  const auto* const method = reinterpret_cast<PyCFunctionObject*>(any.ptr())->m_ml;
  if (method->ml_flags != (METH_VARARGS | METH_KEYWORDS)) return;
  dispatcher = reinterpret_cast<Call>(reinterpret_cast<void (*)()>(method->ml_meth));
  for (const py::handle member : py::list(module.attr("__dict__").attr("values")())) wrap(member);
}

}  // namespace meridian::inline v0_2::python
