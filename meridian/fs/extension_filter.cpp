#include "meridian/fs/extension_filter.h"

#include "meridian/fs/name_rules.h"

namespace meridian::inline v0_2 {

bool ExtensionFilter::permitsExtension(std::string_view extension) const {
  const auto known = fileExtensionIgnoringCase(deletingPrefix(extension, "."));
  return known ? explicitPermittedExtensions.contains(*known) : evaluateUnrecognizedExtensions;
}

}  // namespace meridian::inline v0_2
