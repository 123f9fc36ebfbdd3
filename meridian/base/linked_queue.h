// First in, first out over nodes that carry their own links: nothing is allocated, and any node can leave at once.
#pragma once

namespace meridian::inline v0_2 {

/// Nodes in the order in which they were appended. `Node` has two members `Node* previous` and `Node* next`, which
/// belong to the one queue that it stands in. The nodes are the caller's and stay at their address meanwhile.
template <typename Node>
class LinkedQueue {
 public:
  [[nodiscard]] constexpr bool isEmpty() const noexcept { return first_ == nullptr; }

  /// Null in an empty queue.
  [[nodiscard]] constexpr Node* first() const noexcept { return first_; }

  constexpr void append(Node& node) noexcept {
    node.previous = last_;
    node.next = nullptr;
    (last_ == nullptr ? first_ : last_->next) = &node;
    last_ = &node;
  }

  /// Takes a node out, wherever in this queue it stands.
  constexpr void remove(Node& node) noexcept {
    (node.previous == nullptr ? first_ : node.previous->next) = node.next;
    (node.next == nullptr ? last_ : node.next->previous) = node.previous;
  }

  /// Takes the first node out of a queue that is not empty.
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
