/// \file
/// A dictionary from text to text that keeps its entries in the order in which their keys were first stored. For
/// example:
///
///     TextDictionary dictionary{{"-out", "/a.mov"}, {"-vr", "25"}};
///     dictionary.set("-out", "/b.mov");                               // keeps its place
///     for (const auto& [key, value] : dictionary) print(key, value);  // -out /b.mov, -vr 25
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// A dictionary from text to text. Iterating visits the entries in the order in which their keys were first stored; a
/// key that is stored again keeps its place. Keys are compared byte for byte. Looking up, storing and removing are O(1)
/// on average, even if the keys were chosen to collide. Holds up to 2^32 - 2 entries; one more throws
/// std::length_error. An operation that throws leaves the dictionary unchanged.
///
/// Views of keys and values, and iterators, are valid until the dictionary is changed.
class TextDictionary {
 public:
  struct Entry {
    std::string key;
    std::string value;
  };
  class Iterator;
  using value_type = Entry;
  using const_iterator = Iterator;

  TextDictionary() noexcept = default;
  /// Stores the pairs in order; of pairs with the same key, the last value wins.
  MERIDIAN_API TextDictionary(std::initializer_list<std::pair<std::string_view, std::string_view>> pairs);
  /// Stores the pairs of any range of pairs of texts, such as a std::map, in the range's order.
  template <std::ranges::input_range Pairs>
  [[nodiscard]] static TextDictionary fromPairs(const Pairs& pairs) {
    TextDictionary dictionary;
    for (const auto& [key, value] : pairs) dictionary.set(std::string_view(key), std::string_view(value));
    return dictionary;
  }

  TextDictionary(const TextDictionary&) = default;
  TextDictionary& operator=(const TextDictionary&) = default;
  TextDictionary(TextDictionary&& other) noexcept { swap(other); }
  TextDictionary& operator=(TextDictionary&& other) noexcept {
    TextDictionary taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~TextDictionary() = default;
  MERIDIAN_API void swap(TextDictionary& other) noexcept;

  /// Returns the number of entries.
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }

  /// Returns the value stored under the key; null if the key is not stored.
  [[nodiscard]] MERIDIAN_API const std::string* find(std::string_view key) const noexcept;
  [[nodiscard]] bool contains(std::string_view key) const noexcept { return find(key) != nullptr; }

  /// Stores the value under the key, replacing an earlier value.
  MERIDIAN_API void set(std::string_view key, std::string_view value);
  /// Moves the value in.
  template <std::same_as<std::string> Text>
  void set(std::string_view key, Text&& value) {
    setTaken(key, std::forward<Text>(value));
  }
  /// Moves the key and the value in.
  template <std::same_as<std::string> Text>
  void set(Text&& key, Text&& value) {
    setMoved(std::forward<Text>(key), std::forward<Text>(value));
  }
  /// Stores the value if the key is not stored yet. Returns true if it did.
  MERIDIAN_API bool setIfAbsent(std::string key, std::string value);
  /// Removes the entry. Returns true if there was one.
  MERIDIAN_API bool erase(std::string_view key) noexcept;
  /// Removes every entry for which the predicate returns true. Calls it once for each entry, in order; it must not
  /// throw.
  MERIDIAN_API void eraseIf(FunctionRef<bool(const Entry&)> predicate);
  /// Removes all entries and frees the memory.
  void clear() noexcept { TextDictionary().swap(*this); }
  /// Allocates memory for this many entries.
  MERIDIAN_API void reserve(std::size_t count);

  /// Iterate over the entries in order.
  [[nodiscard]] Iterator begin() const noexcept;
  [[nodiscard]] Iterator end() const noexcept;
  /// Returns a number below `slotCount()` that identifies the key's entry until the dictionary is changed, so that a
  /// caller can mark entries in a vector; absent if the key is not stored.
  [[nodiscard]] MERIDIAN_API std::optional<std::size_t> slotOf(std::string_view key) const noexcept;
  /// Returns the number of slots, at least `size()`: removing an entry leaves its slot free until it is used again.
  [[nodiscard]] std::size_t slotCount() const noexcept { return slots_.size(); }
  /// Returns the entry in a slot that `slotOf` or an iterator returned; undefined for any other slot.
  [[nodiscard]] const Entry& entryAt(std::size_t slot) const noexcept { return slots_[slot].entry; }

  /// Returns true if both have the same keys with the same values, in any order.
  MERIDIAN_API friend bool operator==(const TextDictionary& left, const TextDictionary& right) noexcept;

 private:
  using Place = std::uint32_t;
  static constexpr Place none = UINT32_MAX;

  // The slots form a linked list in the order of the entries, so that removing one moves no other. A free slot is not
  // in that list; its `next` is the next free slot.
  struct Slot {
    Slot(std::string&& key, std::string&& value) noexcept : entry{std::move(key), std::move(value)} {}

    Entry entry;
    std::uint64_t hash = 0;  // of the key; only set while there are buckets
    Place previous = none;
    Place next = none;
  };

  // A small dictionary has no buckets: comparing every key is faster than hashing one.
  static constexpr std::size_t mostWithoutBuckets = 16;
  [[nodiscard]] bool hasBuckets() const noexcept { return !buckets_.empty(); }
  MERIDIAN_API void setMoved(std::string&& key, std::string&& value);
  MERIDIAN_API void setTaken(std::string_view key, std::string&& value);
  template <typename Key, typename Value>
  void store(Key&& key, Value&& value);
  [[nodiscard]] std::uint64_t hashOf(std::string_view key) const noexcept;
  [[nodiscard]] Place placeOf(std::string_view key, std::uint64_t hash) const noexcept;
  void insert(std::string&& key, std::string&& value, std::uint64_t hash);
  void rebuildBuckets(std::size_t bucketCount);
  void enterBucket(Place place) noexcept;
  void leaveBucket(Place place) noexcept;

  std::vector<Slot> slots_;
  std::vector<Place> buckets_;  // open addressing with linear probing; empty, or a power of two, at most half full
  Place first_ = none;
  Place last_ = none;
  Place free_ = none;
  std::size_t size_ = 0;
};

/// A forward iterator over a dictionary's entries, in their order.
class TextDictionary::Iterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = Entry;
  using difference_type = std::ptrdiff_t;
  using pointer = const Entry*;
  using reference = const Entry&;

  Iterator() noexcept = default;
  reference operator*() const noexcept { return dictionary_->slots_[place_].entry; }
  pointer operator->() const noexcept { return &**this; }
  Iterator& operator++() noexcept {
    place_ = dictionary_->slots_[place_].next;
    return *this;
  }
  Iterator operator++(int) noexcept {
    Iterator before = *this;
    ++*this;
    return before;
  }
  /// Returns the entry's slot, as `slotOf` does for its key.
  [[nodiscard]] std::size_t slot() const noexcept { return place_; }
  friend bool operator==(const Iterator& left, const Iterator& right) noexcept { return left.place_ == right.place_; }

 private:
  friend class TextDictionary;
  Iterator(const TextDictionary& dictionary, Place place) noexcept : dictionary_(&dictionary), place_(place) {}

  const TextDictionary* dictionary_ = nullptr;
  Place place_ = none;
};

inline TextDictionary::Iterator TextDictionary::begin() const noexcept { return {*this, first_}; }
inline TextDictionary::Iterator TextDictionary::end() const noexcept { return {*this, none}; }

}  // namespace meridian::inline v0_2
