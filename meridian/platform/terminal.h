// What the operating system knows of the standard streams.
#pragma once

#include "meridian/export.h"

namespace meridian {

/// Whether standard output is a terminal that shows colours: a terminal at all, and none that calls itself "dumb".
[[nodiscard]] MERIDIAN_API bool standardOutputShowsColour() noexcept;

/// Whether standard error is such a terminal too, on which a line can be written over.
[[nodiscard]] MERIDIAN_API bool standardErrorIsRewritable() noexcept;

}  // namespace meridian
