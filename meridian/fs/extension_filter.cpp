#include "meridian/fs/extension_filter.h"

namespace meridian::inline v0_2 {

bool ExtensionFilter::permitsExtension(std::string_view extension) const {
  if (extension.starts_with('.')) extension.remove_prefix(1);
  const auto known = fileExtensionIgnoringCase(extension);
  return known ? explicitPermittedExtensions.contains(*known) : evaluateUnrecognizedExtensions;
}

}  // namespace meridian::inline v0_2
