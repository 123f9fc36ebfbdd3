// The operating system's log.
#pragma once

#include <string_view>

namespace meridian::inline v0_2 {

/// Writes the message as an error to the system log, under the name and facility that the application gave with
/// `openlog`, else the program's name. Never fails.
void writeToSystemLog(std::string_view message) noexcept;

}  // namespace meridian::inline v0_2
