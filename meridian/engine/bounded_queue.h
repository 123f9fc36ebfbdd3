/// \file
/// A queue between two threads that holds a bounded amount. For example:
///
///     BoundedQueue<Image> images(4);
///     while (auto image = decode()) if (!images.push(std::move(*image), 1)) break;  // one thread
///     images.close();
///     while (auto image = images.pop()) encode(*image);                             // another one
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace meridian::inline v0_2 {

/// Hands items from one thread to another in order.
template <typename Item>
class BoundedQueue {
 public:
  /// The weight at which the queue is full. It may be exceeded by one item.
  explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

  /// Adds an item; waits while the queue is full. Returns false, without the item, once the queue is cancelled.
  [[nodiscard]] bool push(Item item, std::size_t weight) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isCancelled_ || weight_ < capacity_; });
    if (isCancelled_) return false;
    weight_ += weight;
    items_.emplace_back(std::move(item), weight);
    changed_.notify_all();
    return true;
  }

  /// Waits until there is room for an item, so that one need not be made that would wait. Returns false once the queue
  /// is cancelled.
  [[nodiscard]] bool waitForRoom() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isCancelled_ || weight_ < capacity_; });
    return !isCancelled_;
  }

  /// Removes the first item; waits for one. Returns nothing once the queue is closed and empty, or cancelled.
  [[nodiscard]] std::optional<Item> pop() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isCancelled_ || isClosed_ || !items_.empty(); });
    if (isCancelled_ || items_.empty()) return std::nullopt;
    auto [item, weight] = std::move(items_.front());
    items_.pop_front();
    weight_ -= weight;
    changed_.notify_all();
    return std::move(item);
  }

  /// Says that no item follows.
  void close() {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    changed_.notify_all();
  }

  /// Drops what is in the queue and wakes both threads, which then stop.
  void cancel() {
    std::deque<std::pair<Item, std::size_t>> dropped;
    const std::lock_guard lock(mutex_);
    isCancelled_ = true;
    dropped.swap(items_);
    changed_.notify_all();
  }

 private:
  const std::size_t capacity_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::pair<Item, std::size_t>> items_;
  std::size_t weight_ = 0;
  bool isClosed_ = false;
  bool isCancelled_ = false;
};

}  // namespace meridian::inline v0_2
