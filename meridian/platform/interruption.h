// What is left to do when a process is interrupted.
#pragma once

#include <string>

#include "meridian/export.h"

namespace meridian {

/// Has the file at this path removed when the process ends early, by a signal of the user or the system, by an abort or
/// by an exit: the one named last; none after an empty path. The process then ends as it would have.
MERIDIAN_API void removeFileOnInterruption(const std::string& path);

}  // namespace meridian
