/// \file
/// Paths below a folder that the suite's job model stores. For example, with the folder "/vol":
///
///     subPathString(Url::fromFilePath("/vol/A/1.mov"), folder, /*includingFileName=*/true)  // "A"
#pragma once

#include <string>
#include <string_view>

#include "meridian/fs/url_operations.h"
#include "meridian/presets/stored_preset.pb.h"

namespace meridian::inline v0_2 {

/// Return what `subPath` and `subPathString` do for the path of the stored folder.
[[nodiscard]] inline Url subPath(const Url& url, const stored::VolumeFolder& fromVolumeFolder, bool includingFileName) {
  return subPath(url, std::string_view(fromVolumeFolder.path()), includingFileName);
}
[[nodiscard]] inline std::string subPathString(const Url& url, const stored::VolumeFolder& fromVolumeFolder,
                                               bool includingFileName) {
  return subPathString(url, std::string_view(fromVolumeFolder.path()), includingFileName);
}

}  // namespace meridian::inline v0_2
