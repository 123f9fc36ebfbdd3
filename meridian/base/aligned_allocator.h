/// \file
/// An allocator for vectors whose elements begin at the boundaries of vector registers and cache lines.
#pragma once

#include <cstddef>
#include <limits>
#include <new>

namespace meridian::inline v0_2 {

/// Allocates memory that begins at a multiple of `alignment` bytes, a power of two.
template <typename Type, std::size_t alignment>
class AlignedAllocator {
 public:
  using value_type = Type;

  template <typename Other>
  struct rebind {
    using other = AlignedAllocator<Other, alignment>;
  };

  AlignedAllocator() noexcept = default;
  template <typename Other>
  // NOLINTNEXTLINE(google-explicit-constructor): containers convert their allocators to those of their nodes.
  AlignedAllocator(const AlignedAllocator<Other, alignment>& /*other*/) noexcept {}

  [[nodiscard]] Type* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(Type)) throw std::bad_array_new_length();
    return static_cast<Type*>(::operator new(count * sizeof(Type), std::align_val_t{alignment}));
  }
  void deallocate(Type* memory, std::size_t /*count*/) noexcept {
    ::operator delete(memory, std::align_val_t{alignment});
  }

  friend bool operator==(const AlignedAllocator&, const AlignedAllocator&) noexcept { return true; }
};

}  // namespace meridian::inline v0_2
