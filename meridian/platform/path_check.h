// Questions to the file system about a path, answered without changing anything.
#pragma once

#include <string>
#include <system_error>

namespace meridian {

/// Why nothing is found at the path, links followed; no error where something is.
[[nodiscard]] std::error_code faultOfItem(const std::string& path);

/// Why no folder is found at the path, links followed; no error where one is.
[[nodiscard]] std::error_code faultOfFolder(const std::string& path);

/// Why no new file can be made at the path; no error where one can. `file_exists` where something stands there already,
/// be it a link that leads nowhere. Permissions are asked for and no file is made, so that nobody who watches the
/// folder sees one come and go; what only making a file shows, such as a full volume, stays unseen.
[[nodiscard]] std::error_code faultOfNewFile(const std::string& path);

}  // namespace meridian
