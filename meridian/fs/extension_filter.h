// The extension filter of copy presets.
#pragma once

#include <string_view>

#include "meridian/export.h"
#include "meridian/media/file_extension.h"

namespace meridian::inline v0_2 {

/// Which extensions are copied: those listed, and on demand those that the suite does not know.
struct ExtensionFilter {
  FileExtensionSet explicitPermittedExtensions;
  bool evaluateUnrecognizedExtensions = false;

  /// Whether files of the extension, with or without a dot before it, are copied. A known extension that is not listed
  /// is refused even where unknown ones are permitted, on purpose.
  [[nodiscard]] MERIDIAN_API bool permitsExtension(std::string_view extension) const;

  friend bool operator==(const ExtensionFilter&, const ExtensionFilter&) = default;
};

}  // namespace meridian::inline v0_2
