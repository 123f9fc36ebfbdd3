// Text from outside in a form that is safe to show on a terminal and in a log line.
#pragma once

#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// The text with every control character (C0, DEL, C1), every mark that reorders a line's direction or cannot be seen,
/// and every byte that is not valid UTF-8 written as "\x1b" or "\u{202e}", and "\n", "\r", "\t" for those three. A
/// backslash stays as it is: the result is for reading, not for reading back.
[[nodiscard]] MERIDIAN_API std::string printable(std::string_view text);

/// Returns the text in quotation marks, made printable: how every message quotes what a user wrote.
[[nodiscard]] MERIDIAN_API std::string inQuotes(std::string_view text);

}  // namespace meridian::inline v0_2
