/// \file
/// The operating system's log.
#pragma once

#include <string_view>

namespace meridian::inline v0_2 {

/// Writes the message to the system log as an error, under the name and facility that the application passed to
/// `openlog`, or else the program's name. Never fails. For example:
///
///     writeToSystemLog("Could not convert raw value to frame rate: 31");
void writeToSystemLog(std::string_view message) noexcept;

}  // namespace meridian::inline v0_2
