/// \file
/// The parts of the module, one function for each area, in the order in which they need each other. A part adds its
/// classes and functions to the module:
///
///     void addMedia(py::module_& module) { module.def("frame_number", ...); }
#pragma once

#include "meridian/python/conversions.h"

namespace meridian::inline v0_2::python {

void addEnumerations(py::module_& module);
void addConstants(py::module_& module);
void addErrors(py::module_& module);
void addMedia(py::module_& module);
void addArguments(py::module_& module);
void addExplanation(py::module_& module);
void addLut(py::module_& module);
void addFileSystem(py::module_& module);
void addFreeNames(py::module_& module);
void addAnalysis(py::module_& module);
void addLog(py::module_& module);
/// Makes one line of every error about arguments of the wrong types. Called last.
void shortenTypeErrors(const py::module_& module);

}  // namespace meridian::inline v0_2::python
