// A place for one shared object that any thread may replace while others use it.
#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace meridian::inline v0_2 {

/// Holds one object. `get` gives a share of it, so that a user keeps the object that it got, whatever is set meanwhile.
template <typename Object>
class SharedSlot {
 public:
  explicit SharedSlot(std::shared_ptr<Object> object) noexcept : object_(std::move(object)) {}

  [[nodiscard]] std::shared_ptr<Object> get() {
    const std::lock_guard lock(mutex_);
    return object_;
  }

  void set(std::shared_ptr<Object> object) {
    // The old object goes with the parameter, after the lock: its destructor may use this place.
    const std::lock_guard lock(mutex_);
    object_.swap(object);
  }

 private:
  std::mutex mutex_;
  std::shared_ptr<Object> object_;
};

}  // namespace meridian::inline v0_2
