/// \file
/// The values of a transcode's properties in Python, each kind once. A kind without a conversion here does not compile.
///
///     const PropertyConversion& conversion = conversionOf(PropertyKind::frameRate);
///     conversion.annotation;       // "float"
///     conversion.toPython(value);  // 23.976
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "meridian/cli/transcode_properties.h"
#include "meridian/python/conversions.h"

namespace meridian::inline v0_2::python {

/// How a kind's values pass.
struct PropertyConversion {
  /// The Python type, as annotations and errors write it.
  std::string annotation;
  /// The types that are accepted.
  std::string accepted;
  py::object (*toPython)(const PropertyValue& value);
  /// Returns nothing for an object of another type.
  std::optional<PropertyValue> (*fromPython)(py::handle object);
};

[[nodiscard]] const PropertyConversion& conversionOf(PropertyKind kind);

/// Returns the property's value; None if it is absent.
[[nodiscard]] py::object propertyObject(const TranscodeCliArguments& arguments, const TranscodeProperty& property);

/// Adds the typed properties to the class of the argument store, and the list of the properties to the module.
void addProperties(py::module_& module, py::class_<TranscodeCliArguments>& type);

}  // namespace meridian::inline v0_2::python
