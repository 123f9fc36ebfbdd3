/// \file
/// Static objects that are never destroyed, so that destructors of other static objects may still use them:
///
///     static NoDestructor<Registry> registry(arguments);
///     registry->find(name);
#pragma once

#include <new>
#include <utility>

namespace meridian::inline v0_2 {

/// Holds an object in place and never calls its destructor. Made for function-local static variables.
template <typename Object>
class NoDestructor {
 public:
  template <typename... Arguments>
  explicit NoDestructor(Arguments&&... arguments) {
    ::new (static_cast<void*>(storage_)) Object(std::forward<Arguments>(arguments)...);
  }
  NoDestructor(const NoDestructor&) = delete;
  NoDestructor& operator=(const NoDestructor&) = delete;
  ~NoDestructor() = default;

  [[nodiscard]] Object& operator*() noexcept { return *std::launder(reinterpret_cast<Object*>(storage_)); }
  [[nodiscard]] const Object& operator*() const noexcept {
    return *std::launder(reinterpret_cast<const Object*>(storage_));
  }
  [[nodiscard]] Object* operator->() noexcept { return &**this; }
  [[nodiscard]] const Object* operator->() const noexcept { return &**this; }

 private:
  alignas(Object) unsigned char storage_[sizeof(Object)];  // NOLINT(modernize-avoid-c-arrays): raw storage
};

}  // namespace meridian::inline v0_2
