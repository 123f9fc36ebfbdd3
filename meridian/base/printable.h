/// \file
/// Makes text from outside safe to show on a terminal and in a log line. For example:
///
///     inQuotes("clip\n\x1b[31m.mov");  // "\"clip\\n\\x1b[31m.mov\"", on one line and without a colour change
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Escapes every control character (C0, DEL, C1), every invisible character or mark that changes a line's direction,
/// and every byte that is not valid UTF-8, as "\x1b" or "\u{202e}"; newline, carriage return and tab as "\n", "\r",
/// "\t". A backslash is not escaped: the result is for people and cannot be parsed back.
[[nodiscard]] MERIDIAN_API std::string printable(std::string_view text);

/// Returns the printable text in quotation marks, the form in which every message quotes what a user wrote.
[[nodiscard]] MERIDIAN_API std::string inQuotes(std::string_view text);

/// Returns the texts in quotation marks with commas between them.
[[nodiscard]] MERIDIAN_API std::string inQuotes(std::span<const std::string> texts);

}  // namespace meridian::inline v0_2
