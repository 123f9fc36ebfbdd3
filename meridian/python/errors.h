/// \file
/// How the library's errors and warnings become Python's: one class for each vocabulary of codes, made once, with the
/// members code, place, detail and remedy. For example:
///
///     return valueOrRaise(ParsedLutFactory::parsing(url));   // the LUT, or meridian.LutError
#pragma once

#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "meridian/base/error.h"
#include "meridian/base/expected.h"
#include "meridian/python/conversions.h"

namespace meridian::inline v0_2::python {

/// The Python class for the errors or warnings with these codes. Set when the module is loaded, and kept.
template <ErrorCode Code>
inline PyObject* errorClass = nullptr;

/// Makes an error or warning of the class.
[[nodiscard]] py::object errorObject(PyObject* type, std::string_view message, const py::object& code,
                                     std::string_view place, std::string_view detail, std::string_view remedy,
                                     const std::error_code& systemError);

template <typename LibraryError>
  requires requires { typename LibraryError::CodeType; }
[[nodiscard]] py::object errorOf(const LibraryError& error) {
  const std::error_code systemError = [&] {
    if constexpr (requires { error.systemError; }) return error.systemError;
    return std::error_code();
  }();
  return errorObject(errorClass<typename LibraryError::CodeType>, error.message(), memberOf(error.code), error.place,
                     error.detail, error.remedy(), systemError);
}
template <ErrorCode Code>
[[nodiscard]] py::object errorOf(Code code) {
  return errorOf(Error<Code>{code});
}

/// Raises an exception object.
[[noreturn]] void raise(const py::object& exception);

/// Returns the value, or raises the error.
template <typename Value, typename E>
Value valueOrRaise(Expected<Value, E>&& result) {
  if (!result) raise(errorOf(result.error()));
  if constexpr (!std::is_void_v<Value>) return std::move(result).value();
}

}  // namespace meridian::inline v0_2::python
