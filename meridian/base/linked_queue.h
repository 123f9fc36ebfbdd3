/// \file
/// Intrusive FIFO queue. For example:
///
///     struct Waiter { Waiter* previous = nullptr; Waiter* next = nullptr; };
///     LinkedQueue<Waiter> queue;
///     queue.append(waiter);
///     Waiter& first = queue.takeFirst();
#pragma once

namespace meridian::inline v0_2 {

/// Keeps nodes in the order in which they were appended, and never allocates. `Node` has two members `Node* previous`
/// and `Node* next`, so it can be in one queue at a time. The caller owns the nodes and must not move them meanwhile.
template <typename Node>
class LinkedQueue {
 public:
  [[nodiscard]] constexpr bool isEmpty() const noexcept { return first_ == nullptr; }

  /// Returns the first node; null if the queue is empty.
  [[nodiscard]] constexpr Node* first() const noexcept { return first_; }

  /// Appends a node that is in no queue, in O(1). Undefined for any other node.
  constexpr void append(Node& node) noexcept {
    node.previous = last_;
    node.next = nullptr;
    (last_ == nullptr ? first_ : last_->next) = &node;
    last_ = &node;
  }

  /// Removes a node of this queue, in O(1). Undefined for a node that is not in it.
  constexpr void remove(Node& node) noexcept {
    (node.previous == nullptr ? first_ : node.previous->next) = node.next;
    (node.next == nullptr ? last_ : node.next->previous) = node.previous;
  }

  /// Removes and returns the first node, in O(1). Undefined for an empty queue.
  [[nodiscard]] constexpr Node& takeFirst() noexcept {
    Node& node = *first_;
    remove(node);
    return node;
  }

 private:
  Node* first_ = nullptr;
  Node* last_ = nullptr;
};

}  // namespace meridian::inline v0_2
