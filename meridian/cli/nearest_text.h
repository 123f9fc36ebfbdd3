/// \file
/// Finds the name that was probably meant by a mistyped one, for every "did you mean" of the library and the command.
///
///     nearestText("-vcoedc", {{"-vcodec", "-acodec"}});  // "-vcodec"
///     nearestText("expl", {{"parse", "explain"}});         // "explain"
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Returns the nearest candidate, the first of several. The distance is the number of bytes inserted, left out,
/// replaced or swapped with their neighbour; the case of ASCII letters does not count. If the nearest is further away
/// than a third of the text's length, returns the only candidate that begins with the text, if the text has at least
/// three bytes. Absent otherwise.
[[nodiscard]] MERIDIAN_API std::optional<std::string_view> nearestText(std::string_view text,
                                                                       std::span<const std::string_view> candidates);

}  // namespace meridian::inline v0_2
