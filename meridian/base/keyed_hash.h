/// \file
/// A hash for tables whose keys come from outside. For example:
///
///     const std::size_t bucket = keyedHash(flag) % buckets.size();
#pragma once

#include <cstdint>
#include <string_view>

namespace meridian::inline v0_2 {

/// Returns the SipHash-1-3 (Aumasson and Bernstein, 2012) of the text, under a random key for each process, so that
/// outside input cannot be prepared to collide. Differs from run to run: nothing that a user sees may depend on it.
[[nodiscard]] std::uint64_t keyedHash(std::string_view text) noexcept;

}  // namespace meridian::inline v0_2
