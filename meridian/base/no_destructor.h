/// \file
/// Static objects that are never destroyed, so that the destructors of other static objects may still use them. For
/// example:
///
///     static NoDestructor<Registry> registry(arguments);
///     registry->find(name);
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace meridian::inline v0_2 {

/// Holds an object in place and never calls its destructor. Made for function-local static variables.
template <typename Object>
class NoDestructor {
 public:
  template <typename... Arguments>
  explicit NoDestructor(Arguments&&... arguments) {
    ::new (storage_.data()) Object(std::forward<Arguments>(arguments)...);
  }
  NoDestructor(const NoDestructor&) = delete;
  NoDestructor& operator=(const NoDestructor&) = delete;
  ~NoDestructor() = default;

  [[nodiscard]] Object& operator*() noexcept { return *std::launder(reinterpret_cast<Object*>(storage_.data())); }
  [[nodiscard]] const Object& operator*() const noexcept {
    return *std::launder(reinterpret_cast<const Object*>(storage_.data()));
  }
  [[nodiscard]] Object* operator->() noexcept { return std::addressof(**this); }
  [[nodiscard]] const Object* operator->() const noexcept { return std::addressof(**this); }

 private:
  alignas(Object) std::array<std::byte, sizeof(Object)> storage_;
};

}  // namespace meridian::inline v0_2
