#include "meridian/python/errors.h"

#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_reading.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/fs/claimed_files.h"
#include "meridian/fs/tree_walk.h"
#include "meridian/lut/image_view.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/media/frame_number.h"
#include "meridian/python/module.h"
#include "meridian/serialization/coding_error.h"

namespace meridian::inline v0_2::python {
namespace {

/// The package's function that makes an error or warning. Kept.
PyObject* maker = nullptr;
/// The classes for errors of JSON, which have no code.
PyObject* decodingErrorClass = nullptr;
PyObject* encodingErrorClass = nullptr;

/// Adds a class from the package's errors.
PyObject* addClass(py::module_& module, const py::module_& errors, const char* name) {
  const py::object type = errors.attr(name);
  module.attr(name) = type;
  return py::object(type).release().ptr();
}

void translate(std::exception_ptr pointer) {
  const auto set = [](PyObject* type, const CodingError& error) {
    const py::object exception =
        errorObject(type, error.what(), py::none(), error.path(), error.message(), {}, std::error_code());
    PyErr_SetObject(type, exception.ptr());
  };
  try {
    if (pointer) std::rethrow_exception(std::move(pointer));
  } catch (const DecodingError& error) {
    set(decodingErrorClass, error);
  } catch (const EncodingError& error) {
    set(encodingErrorClass, error);
  } catch (const std::system_error& error) {
    const py::object exception = py::handle(PyExc_OSError)(error.code().value(), error.what());
    PyErr_SetObject(PyExc_OSError, exception.ptr());
  }
}

}  // namespace

py::object errorObject(PyObject* type, std::string_view message, const py::object& code, std::string_view place,
                       std::string_view detail, std::string_view remedy, const std::error_code& systemError) {
  const auto errorNumber = systemError ? py::object(py::int_(systemError.value())) : py::none();
  py::object error = py::handle(maker)(py::handle(type), errorNumber, strOf(message), code, strOf(place), strOf(detail),
                                       strOf(remedy));
  if (systemError) {
    error.attr("errno") = systemError.value();
    error.attr("strerror") = strOf(systemError.message());
    error.attr("filename") = strOf(place);
  }
  return error;
}

void raise(const py::object& exception) {
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.ptr())), exception.ptr());
  throw py::error_already_set();
}

void addErrors(py::module_& module) {
  const auto errors = py::module_::import("meridian._errors");
  for (const char* base : {"Error", "Warning"}) module.attr(base) = errors.attr(base);
  maker = py::object(errors.attr("make")).release().ptr();
  errorClass<PropertyErrorCode> = addClass(module, errors, "PropertyError");
  errorClass<TranscodeErrorCode> = addClass(module, errors, "TranscodeError");
  errorClass<TranscodeWarningCode> = addClass(module, errors, "TranscodeWarning");
  errorClass<TimecodeErrorCode> = addClass(module, errors, "TimecodeError");
  errorClass<LutErrorCode> = addClass(module, errors, "LutError");
  errorClass<LutWarningCode> = addClass(module, errors, "LutWarning");
  errorClass<ImageErrorCode> = addClass(module, errors, "ImageError");
  errorClass<TreeWalkErrorCode> = addClass(module, errors, "TreeWalkError");
  errorClass<ClaimErrorCode> = addClass(module, errors, "ClaimError");
  errorClass<MediaAnalysisCLIError> = addClass(module, errors, "MediaAnalysisBasicOptionsError");
  errorClass<MediaAnalysisCLIImageError> = addClass(module, errors, "MediaAnalysisImageOptionsError");
  errorClass<MediaAnalysisCLIWarningCode> = addClass(module, errors, "MediaAnalysisCLIWarning");
  errorClass<MediaAnalysisCLIWritingWarningCode> = addClass(module, errors, "MediaAnalysisCLIWritingWarning");
  decodingErrorClass = addClass(module, errors, "DecodingError");
  encodingErrorClass = addClass(module, errors, "EncodingError");
  py::register_exception_translator(&translate);
}

}  // namespace meridian::inline v0_2::python
