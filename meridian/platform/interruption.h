// What is left to do when a process is interrupted.
#pragma once

#include <string>

#include "meridian/export.h"

namespace meridian {

/// Has the file at this path removed when the user or the system ends the process early (SIGINT, SIGTERM, SIGHUP): the
/// one named last; none after an empty path. The process then ends as it would have.
MERIDIAN_API void removeFileOnInterruption(const std::string& path);

}  // namespace meridian
