// The library's messages, passed to a function of Python.
#include "meridian/python/module.h"
#include "meridian/python/vocabulary.h"
#include "meridian/suite/logger.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;
using Function = Typed<"Callable[[LogLevel, str], object] | None">;

/// Calls a function with each message, from the thread that logs it. What the function raises is reported as Python
/// reports what a destructor raises.
class PythonLogger final : public Logger {
 public:
  explicit PythonLogger(const py::object& function)
      : function_(new py::object(function), [](const py::object* held) {
          const py::gil_scoped_acquire acquire;
          delete held;
        }) {}

  void log(LogLevel level, std::string_view message) override {
    const py::gil_scoped_acquire acquire;
    try {
      (*function_)(level, strOf(message));
    } catch (py::error_already_set& error) {
      error.discard_as_unraisable("meridian.set_logger");
    }
  }

 private:
  /// Given back while the interpreter's lock is held.
  std::shared_ptr<const py::object> function_;
};

}  // namespace

void addLog(py::module_& module) {
  addEnumeration<LogLevel>(module, "Whether a message reports an error or only informs.");
  module.def(
      "set_logger",
      [](const Function& function) {
        if (!function.is_none() && PyCallable_Check(function.ptr()) == 0) {
          failWithType("logger", "a function or None", function);
        }
        setLogger(function.is_none() ? nullptr : std::make_shared<PythonLogger>(function));
      },
      "logger"_a,
      "Passes each message of the library to a function of a LogLevel and a text, on whichever thread logs it; None "
      "restores the default, which writes to standard error. What an error says is logged as well.");
  // The library's own logger again, while there is an interpreter that the function can be given back to.
  module.def("_restore_logger", [] { setLogger(nullptr); });
  py::module_::import("atexit").attr("register")(module.attr("_restore_logger"));
}

}  // namespace meridian::inline v0_2::python
