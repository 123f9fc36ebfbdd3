/// \file
/// Hashes of small value types. For example:
///
///     std::size_t operator()(const Size& size) const { return combinedHash(size.width, size.height); }
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace meridian::inline v0_2 {

namespace detail {

/// Returns the bits of a member. Equal members have equal bits: 0.0 and -0.0 have the same.
template <typename Member>
constexpr std::uint64_t hashedBits(Member member) noexcept {
  if constexpr (std::floating_point<Member>) {
    return member == 0 ? 0 : std::bit_cast<std::uint64_t>(static_cast<double>(member));
  } else {
    return static_cast<std::uint64_t>(member);
  }
}

/// Mixes the bits by the finalizer of SplitMix64 (Steele, Lea and Flood, "Fast splittable pseudorandom number
/// generators", 2014).
constexpr std::uint64_t mixed(std::uint64_t bits) noexcept {
  bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9U;
  bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebU;
  return bits ^ (bits >> 31);
}

}  // namespace detail

/// Returns a hash of numbers and enumeration values in this order, for std::hash. Not for keys that an attacker
/// chooses.
template <typename... Members>
  requires((std::is_arithmetic_v<Members> || std::is_enum_v<Members>) && ...)
[[nodiscard]] constexpr std::size_t combinedHash(Members... members) noexcept {
  std::uint64_t hash = 0;
  ((hash = detail::mixed(hash + 0x9e3779b97f4a7c15U + detail::hashedBits(members))), ...);
  return static_cast<std::size_t>(hash);
}

}  // namespace meridian::inline v0_2
