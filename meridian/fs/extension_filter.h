/// \file
/// The extension filter of copy presets. For example:
///
///     const ExtensionFilter filter{{FileExtension::mov}, true};
///     filter.permitsExtension(".MOV");  // true: it is listed
///     filter.permitsExtension("avi");   // false: the suite knows it, and it is not listed
///     filter.permitsExtension("foo");   // true: the suite does not know it
#pragma once

#include <string_view>

#include "meridian/export.h"
#include "meridian/media/file_extension.h"

namespace meridian::inline v0_2 {

/// Says which extensions are copied: the listed ones and, if asked for, those that the suite does not know.
struct ExtensionFilter {
  FileExtensionSet explicitPermittedExtensions;
  bool evaluateUnrecognizedExtensions = false;

  /// Returns true if files of the extension, in any case and with or without a leading dot, are copied. A known
  /// extension that is not listed is never copied, even if unknown ones are.
  [[nodiscard]] MERIDIAN_API bool permitsExtension(std::string_view extension) const;

  friend bool operator==(const ExtensionFilter&, const ExtensionFilter&) = default;
};

}  // namespace meridian::inline v0_2
