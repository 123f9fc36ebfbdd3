// Paths below a volume's folder, as the suite's job model stores it.
#pragma once

#include <string>
#include <string_view>

#include "meridian/fs/url_operations.h"
#include "meridian/presets/stored_preset.pb.h"

namespace meridian::inline v0_2 {

/// `subPath` and `subPathString` below the path of a stored folder.
[[nodiscard]] inline Url subPath(const Url& url, const stored::VolumeFolder& fromVolumeFolder, bool includingFileName) {
  return subPath(url, std::string_view(fromVolumeFolder.path()), includingFileName);
}
[[nodiscard]] inline std::string subPathString(const Url& url, const stored::VolumeFolder& fromVolumeFolder,
                                               bool includingFileName) {
  return subPathString(url, std::string_view(fromVolumeFolder.path()), includingFileName);
}

}  // namespace meridian::inline v0_2
