#include "meridian/python/module.h"

#include "meridian/version.h"

// NOLINTNEXTLINE: the macro's own declarations
PYBIND11_MODULE(_meridian, module) {
  namespace python = meridian::python;
  // Classes, signatures and errors say where Python finds them.
  module.attr("__module__") = "meridian";
  python::addEnumerations(module);
  python::addConstants(module);
  python::addErrors(module);
  python::addMedia(module);
  python::addArguments(module);
  python::addExplanation(module);
  python::addLut(module);
  python::addFileSystem(module);
  python::addFreeNames(module);
  python::addAnalysis(module);
  python::addLog(module);
  python::shortenTypeErrors(module);
  module.attr("__version__") = python::strOf(meridian::versionText());
}
