// What the operating system knows of the standard streams.
#pragma once

namespace meridian::command {

/// Whether standard output is a terminal that shows colours: a terminal at all, and none that calls itself "dumb".
[[nodiscard]] bool standardOutputShowsColour() noexcept;

/// Whether standard error is such a terminal too, on which a line can be written over.
[[nodiscard]] bool standardErrorIsRewritable() noexcept;

}  // namespace meridian::command
