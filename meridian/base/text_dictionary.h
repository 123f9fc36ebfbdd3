// A dictionary from text to text that keeps its entries in the order in which their keys came in.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <ranges>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// A dictionary from text to text. Iterating visits the entries in the order in which their keys were first stored;
/// storing under a key that is present keeps its place. Looking up, storing and removing take constant time on average,
/// whoever chose the keys. Keys are compared byte for byte. Holds up to 2^32 - 2 entries.
///
/// Views of keys and values, and iterators, stay valid until the dictionary is changed.
class MERIDIAN_API TextDictionary {
 public:
  struct Entry {
    std::string key;
    std::string value;
  };
  class Iterator;
  using value_type = Entry;
  using const_iterator = Iterator;

  TextDictionary() noexcept = default;
  /// Stores the pairs in order; of pairs with one key the last one's value stays.
  TextDictionary(std::initializer_list<std::pair<std::string_view, std::string_view>> pairs);
  /// Stores the pairs of any range of two texts, such as a std::map, in the range's order.
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
  void swap(TextDictionary& other) noexcept;

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }

  /// The value under the key; null when the key is not stored.
  [[nodiscard]] const std::string* find(std::string_view key) const noexcept;
  [[nodiscard]] bool contains(std::string_view key) const noexcept { return find(key) != nullptr; }

  /// Stores the value under the key, replacing an earlier value.
  void set(std::string_view key, std::string_view value);
  /// The same with a value that is taken over.
  template <std::same_as<std::string> Text>
  void set(std::string_view key, Text&& value) {
    setTaken(key, std::forward<Text>(value));
  }
  /// The same for two temporary strings, which are taken over.
  template <std::same_as<std::string> Text>
  void set(Text&& key, Text&& value) {
    setMoved(std::forward<Text>(key), std::forward<Text>(value));
  }
  /// Stores the value unless the key is present; says whether it did.
  bool setIfAbsent(std::string key, std::string value);
  /// Removes the entry; says whether there was one.
  bool erase(std::string_view key) noexcept;
  /// Removes every entry for which the predicate holds. The predicate is asked once an entry, in order, and must not
  /// throw.
  void eraseIf(FunctionRef<bool(const Entry&)> predicate);
  void clear() noexcept { TextDictionary().swap(*this); }
  /// Makes room for this many entries.
  void reserve(std::size_t count);

  /// Entries in order.
  [[nodiscard]] Iterator begin() const noexcept;
  [[nodiscard]] Iterator end() const noexcept;
  /// The place of an entry's key among `slotCount()` numbers, as long as the dictionary is not changed; the number
  /// `slotCount()` itself when the key is not stored. For callers that tick entries off.
  [[nodiscard]] std::size_t slotOf(std::string_view key) const noexcept;
  [[nodiscard]] std::size_t slotCount() const noexcept { return slots_.size(); }
  [[nodiscard]] const Entry& entryAt(std::size_t slot) const noexcept { return slots_[slot].entry; }

  /// Whether both hold the same values under the same keys, in whatever order.
  MERIDIAN_API friend bool operator==(const TextDictionary& left, const TextDictionary& right) noexcept;

 private:
  using Place = std::uint32_t;
  static constexpr Place none = UINT32_MAX;

  // The slots form a linked list in the entries' order, so that removing one moves nothing. A free slot is out of the
  // list and its `next` leads to the next free one.
  struct Slot {
    Slot(std::string&& key, std::string&& value) noexcept : entry{std::move(key), std::move(value)} {}

    Entry entry;
    std::uint64_t hash = 0;  // only while there are buckets
    Place previous = none;
    Place next = none;
  };

  // A dictionary of few entries has no buckets: looking at each key costs less than hashing one.
  static constexpr std::size_t mostWithoutBuckets = 16;
  [[nodiscard]] bool hasBuckets() const noexcept { return !buckets_.empty(); }
  void setMoved(std::string&& key, std::string&& value);
  void setTaken(std::string_view key, std::string&& value);
  template <typename Key, typename Value>
  void store(Key&& key, Value&& value);
  [[nodiscard]] std::uint64_t hashOf(std::string_view key) const noexcept;
  [[nodiscard]] Place placeOf(std::string_view key, std::uint64_t hash) const noexcept;
  void insert(std::string&& key, std::string&& value, std::uint64_t hash);
  void rebuildBuckets(std::size_t bucketCount);
  void enterBucket(Place place) noexcept;
  void leaveBucket(Place place) noexcept;

  std::vector<Slot> slots_;
  std::vector<Place> buckets_;  // open addressing; none, or a power of two, at most half full
  Place first_ = none;
  Place last_ = none;
  Place free_ = none;
  std::size_t size_ = 0;
};

/// A forward iterator over a dictionary's entries.
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
  /// The entry's number as `slotOf` gives it.
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
