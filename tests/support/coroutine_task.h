/// \file
/// The smallest coroutine that a test can start and hold.
#pragma once

#include <coroutine>
#include <exception>
#include <utility>

namespace meridian::test {

/// Begins at once, on the caller's thread. Owns the coroutine's frame, finished or not.
class Task {
 public:
  struct promise_type {
    Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_always final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() { std::terminate(); }
  };

  Task(Task&& other) noexcept : coroutine_(std::exchange(other.coroutine_, nullptr)) {}
  Task& operator=(Task&& other) noexcept {
    std::swap(coroutine_, other.coroutine_);
    return *this;
  }
  ~Task() {
    if (coroutine_) coroutine_.destroy();
  }

  [[nodiscard]] bool isDone() const { return coroutine_.done(); }

 private:
  explicit Task(std::coroutine_handle<> coroutine) : coroutine_(coroutine) {}

  std::coroutine_handle<> coroutine_;
};

}  // namespace meridian::test
