/// \file
/// Reads the file extensions that an option lists. For example:
///
///     readExtensionList(arguments, "ext");  // --ext .mov,xml --ext bin: "mov", "xml", "bin"
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/meridian/command.h"

namespace meridian::command {

/// Returns the distinct extensions in their order, without a leading dot and in the case in which they are written;
/// empty if the option was not given. Each value is one extension or several with commas between them; the empty value
/// is the empty extension. Throws CommandError for an empty text beside a comma, and for an extension with a separator.
[[nodiscard]] std::vector<std::string> readExtensionList(const Arguments& arguments, std::string_view option);

}  // namespace meridian::command
