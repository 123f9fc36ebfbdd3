#include "meridian/python/conversions.h"

#include <cmath>
#include <limits>
#include <numeric>

namespace meridian::inline v0_2::python {
namespace {

/// Returns a module that is imported when it is needed for the first time.
py::object attributeOf(const char* module, const char* name) { return py::module_::import(module).attr(name); }

/// Returns the bytes of an object that os.fsencode made, or that was bytes already.
std::string bytesOf(py::handle bytes) {
  char* data = nullptr;
  Py_ssize_t size = 0;
  if (PyBytes_AsStringAndSize(bytes.ptr(), &data, &size) != 0) throw py::error_already_set();
  return {data, static_cast<std::size_t>(size)};
}

std::int64_t termOf(py::handle term) {
  const std::int64_t value = PyLong_AsLongLong(term.ptr());
  if (value == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
  return value;
}

/// Throws ValueError for a number without a ratio of 64 bits.
[[noreturn]] void failWithRatio(py::handle number) {
  throw py::value_error("expected a finite ratio of whole numbers of 64 bits, found " + shortRepr(number));
}

/// Returns the terms as a Fraction has them, so that what comes back is equal.
MediaRational ratioOfTerms(py::handle number, py::handle over, py::handle under) {
  try {
    const std::int64_t numerator = termOf(over);
    const std::int64_t denominator = termOf(under);
    const std::int64_t divisor = std::gcd(numerator, denominator);
    if (denominator > 0 && divisor > 0) return {numerator / divisor, denominator / divisor};
  } catch (py::error_already_set& error) {
    if (!error.matches(PyExc_OverflowError)) throw;
  }
  failWithRatio(number);
}

MediaRational ratioOfDouble(py::handle number, double value) {
  if (value == 0) return {0, 1};
  const auto ratio = MediaRational::fromRawValue(value);
  if (!ratio) failWithRatio(number);
  const std::int64_t divisor = std::gcd(ratio->numerator, ratio->denominator);
  return {ratio->numerator / divisor, ratio->denominator / divisor};
}

}  // namespace

py::str strOf(std::string_view text) {
  PyObject* const result = PyUnicode_DecodeFSDefaultAndSize(text.data(), static_cast<Py_ssize_t>(text.size()));
  if (result == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(result);
}

std::string bytesOfStr(py::handle text) {
  // ASCII is stored as it is; every encoding of a file system contains it.
  if (PyUnicode_IS_READY(text.ptr()) && PyUnicode_IS_ASCII(text.ptr())) {
    return {static_cast<const char*>(PyUnicode_DATA(text.ptr())),
            static_cast<std::size_t>(PyUnicode_GET_LENGTH(text.ptr()))};
  }
  const auto encoded = py::reinterpret_steal<py::object>(PyUnicode_EncodeFSDefault(text.ptr()));
  if (!encoded) throw py::error_already_set();
  return bytesOf(encoded);
}

std::optional<std::string> bytesOfPath(py::handle path) {
  if (PyUnicode_Check(path.ptr())) return bytesOfStr(path);
  if (PyBytes_Check(path.ptr())) return bytesOf(path);
  if (!py::hasattr(path, "__fspath__")) return std::nullopt;
  const auto plain = py::reinterpret_steal<py::object>(PyOS_FSPath(path.ptr()));
  if (!plain) throw py::error_already_set();
  return bytesOfPath(plain);
}

std::optional<std::vector<std::string>> bytesOfAll(py::handle iterable) {
  if (PyUnicode_Check(iterable.ptr()) || PyBytes_Check(iterable.ptr())) return std::nullopt;
  const auto iterator = py::reinterpret_steal<py::object>(PyObject_GetIter(iterable.ptr()));
  if (!iterator) {
    if (PyErr_ExceptionMatches(PyExc_TypeError) == 0) throw py::error_already_set();
    PyErr_Clear();
    return std::nullopt;
  }
  std::vector<std::string> values;
  while (const auto item = py::reinterpret_steal<py::object>(PyIter_Next(iterator.ptr()))) {
    auto bytes = bytesOfPath(item);
    if (!bytes) return std::nullopt;
    values.push_back(*std::move(bytes));
  }
  if (PyErr_Occurred() != nullptr) throw py::error_already_set();
  return values;
}

py::object typedTextOf(const TextType& type, std::string_view text) {
  const py::str plain = strOf(text);
  PyObject* const constant = PyDict_GetItemWithError(type.constants, plain.ptr());
  if (constant != nullptr) return py::reinterpret_borrow<py::object>(constant);
  if (PyErr_Occurred() != nullptr) throw py::error_already_set();
  return py::handle(type.type)(plain);
}

py::object fractionOf(std::int64_t numerator, std::int64_t denominator) {
  return attributeOf("fractions", "Fraction")(numerator, denominator);
}

std::optional<MediaRational> rationalOf(py::handle number) {
  if (PyBool_Check(number.ptr())) return std::nullopt;
  if (PyFloat_Check(number.ptr())) return ratioOfDouble(number, PyFloat_AS_DOUBLE(number.ptr()));
  if (PyLong_Check(number.ptr())) return ratioOfTerms(number, number, py::int_(1));
  if (py::hasattr(number, "numerator") && py::hasattr(number, "denominator")) {
    return ratioOfTerms(number, number.attr("numerator"), number.attr("denominator"));
  }
  if (py::isinstance(number, attributeOf("numbers", "Real"))) return ratioOfDouble(number, doubleOf(number).value());
  if (!py::hasattr(number, "as_integer_ratio")) return std::nullopt;
  try {
    const py::tuple terms = number.attr("as_integer_ratio")();
    return ratioOfTerms(number, terms[0], terms[1]);
  } catch (py::error_already_set& error) {
    // As Decimal says that it is infinite or NaN.
    if (!error.matches(PyExc_OverflowError) && !error.matches(PyExc_ValueError)) throw;
    failWithRatio(number);
  }
}

std::optional<double> doubleOf(py::handle number) {
  if (PyBool_Check(number.ptr()) || PyUnicode_Check(number.ptr())) return std::nullopt;
  const double value = PyFloat_AsDouble(number.ptr());
  if (value != -1 || PyErr_Occurred() == nullptr) return value;
  const bool isTooLarge = PyErr_ExceptionMatches(PyExc_OverflowError) != 0;
  if (!isTooLarge && PyErr_ExceptionMatches(PyExc_TypeError) == 0) throw py::error_already_set();
  PyErr_Clear();
  if (!isTooLarge) return std::nullopt;
  const bool isNegative = py::reinterpret_borrow<py::object>(number) < py::int_(0);
  return std::copysign(std::numeric_limits<double>::infinity(), isNegative ? -1 : 1);
}

py::dict dictOf(const TextDictionary& dictionary) {
  py::dict result;
  for (const auto& [key, value] : dictionary) result[strOf(key)] = strOf(value);
  return result;
}

py::dict copiedDict(const py::object& mapping) {
  auto copy = py::reinterpret_steal<py::dict>(PyDict_Copy(py::dict(mapping).ptr()));
  if (!copy) throw py::error_already_set();
  return copy;
}

std::optional<std::int64_t> integerOf(py::handle number) {
  if (PyBool_Check(number.ptr()) || PyIndex_Check(number.ptr()) == 0) return std::nullopt;
  const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(number.ptr()));
  if (!index) throw py::error_already_set();
  return termOf(index);
}

TextDictionary textDictionaryOf(const py::object& mapping) {
  TextDictionary dictionary;
  // A copy, since what is called for a value may change the mapping.
  for (const auto& [key, value] : copiedDict(mapping)) {
    if (!PyUnicode_Check(key.ptr())) failWithType("a flag", "str", key);
    auto bytes = bytesOfPath(value);
    if (!bytes) failWithType("a value", "str, bytes or os.PathLike", value);
    dictionary.set(bytesOfStr(key), *std::move(bytes));
  }
  return dictionary;
}

std::string shortRepr(py::handle object) {
  constexpr std::size_t mostShown = 60;
  try {
    // Cut by characters, since a part of one is not valid UTF-8.
    const py::str whole = py::repr(object);
    if (py::len(whole) <= mostShown) return whole;
    return std::string(py::str(whole[py::slice(0, mostShown, 1)])) + "...";
  } catch (py::error_already_set&) {
    // An int of thousands of digits has none.
    return Py_TYPE(object.ptr())->tp_name;
  }
}

void failWithType(std::string_view what, std::string_view expected, py::handle found) {
  std::string text(what);
  throw py::type_error(
      text.append(": expected ").append(expected).append(", found ").append(Py_TYPE(found.ptr())->tp_name));
}

}  // namespace meridian::inline v0_2::python
