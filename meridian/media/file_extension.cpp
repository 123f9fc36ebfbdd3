#include "meridian/media/file_extension.h"

#include "meridian/base/text.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {

std::optional<FileExtension> fileExtensionIgnoringCase(std::string_view text) {
  return fromRawValue<FileExtension>(caseFolded(text));
}

std::string path(FileExtension extension) {
  return extension == FileExtension::directory ? std::string() : "." + std::string(rawValue(extension));
}

std::string url(FileExtension extension, std::string_view base) { return std::string(base) + path(extension); }

bool FileExtensionSet::contains(std::string_view pathOrUrl) const {
  const auto extension = fileExtensionIgnoringCase(pathExtension(pathOfUrl(pathOrUrl)));
  return extension && contains(*extension);
}

bool FileExtensionSet::contains(const Url& url) const {
  const auto extension = fileExtensionIgnoringCase(url.pathExtension());
  return extension && contains(*extension);
}

}  // namespace meridian::inline v0_2
