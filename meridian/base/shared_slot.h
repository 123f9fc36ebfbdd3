/// \file
/// A shared object that any thread may replace while others use it. For example:
///
///     SharedSlot<Logger> slot(std::make_shared<StandardErrorLogger>());
///     slot.get()->log(level, message);
#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace meridian::inline v0_2 {

/// Holds one object. `get` returns shared ownership, so callers keep their object when it is replaced meanwhile.
template <typename Object>
class SharedSlot {
 public:
  explicit SharedSlot(std::shared_ptr<Object> object) noexcept : object_(std::move(object)) {}

  [[nodiscard]] std::shared_ptr<Object> get() {
    const std::lock_guard lock(mutex_);
    return object_;
  }

  void set(std::shared_ptr<Object> object) {
    // The parameter destroys the old object after the lock is released: its destructor may use this slot.
    const std::lock_guard lock(mutex_);
    object_.swap(object);
  }

 private:
  std::mutex mutex_;
  std::shared_ptr<Object> object_;
};

}  // namespace meridian::inline v0_2
