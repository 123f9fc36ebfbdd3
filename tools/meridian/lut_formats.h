/// \file
/// Reads the published LUT formats that the library recognises but leaves to others: the module that the command loads
/// for them. For example:
///
///     const auto lut = module.read("/looks/show.csp", LutFormat::cinespace);
///     if (!lut) throw CommandError(lut.error());
#pragma once

#include <string>

#include "meridian/base/expected.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_format.h"
#include "meridian/lut/lut_stages.h"

namespace meridian::command {

/// The function of the module of LUT formats. It is a module of its own because OpenColorIO brings five libraries,
/// which only some LUTs need.
struct LutFormatModule {
  /// Reads a regular file of the format, which `readPublishedLut` has to have left to others. Matrices, ranges, 1D LUTs
  /// and cubes become stages; other operations become functions that OpenColorIO computes, with a warning.
  /// Returns notReadByLibrary with OpenColorIO's reason. Throws nothing but std::bad_alloc.
  Expected<PublishedLut, LutError> (*read)(const std::string& path, LutFormat format);
};

/// The name of the function that returns the module's LutFormatModule.
inline constexpr const char* lutFormatModuleEntry = "meridianLutFormatModule";

}  // namespace meridian::command
