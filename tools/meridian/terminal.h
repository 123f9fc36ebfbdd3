/// \file
/// What the standard streams support. For example:
///
///     const Palette palette = standardOutputShowsColour() ? colours : plain;
#pragma once

#include <cstddef>
#include <optional>

namespace meridian::command {

/// Returns true if standard output is a terminal that shows colours, which is any but a "dumb" one.
[[nodiscard]] bool standardOutputShowsColour() noexcept;

/// Returns how many columns standard output shows; absent if it is not a terminal, or one that does not say.
[[nodiscard]] std::optional<std::size_t> standardOutputWidth() noexcept;

/// Returns the same of standard error.
[[nodiscard]] std::optional<std::size_t> standardErrorWidth() noexcept;

/// Returns true if standard error is such a terminal, on which a line can be overwritten.
[[nodiscard]] bool standardErrorIsRewritable() noexcept;

}  // namespace meridian::command
