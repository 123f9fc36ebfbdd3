// The hash behind tables whose keys come from outside.
#pragma once

#include <cstdint>
#include <string_view>

namespace meridian::inline v0_2 {

/// SipHash-1-3 (Aumasson and Bernstein, 2012) of the text under a key drawn once per process, so that nobody can
/// prepare keys that all fall into one bucket. Differs from run to run: nothing that a user sees may depend on it.
[[nodiscard]] std::uint64_t keyedHash(std::string_view text) noexcept;

}  // namespace meridian::inline v0_2
