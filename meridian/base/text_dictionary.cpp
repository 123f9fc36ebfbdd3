#include "meridian/base/text_dictionary.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

#include "meridian/base/keyed_hash.h"

namespace meridian::inline v0_2 {

TextDictionary::TextDictionary(std::initializer_list<std::pair<std::string_view, std::string_view>> pairs) {
  reserve(pairs.size());
  for (const auto& [key, value] : pairs) set(key, value);
}

void TextDictionary::swap(TextDictionary& other) noexcept {
  slots_.swap(other.slots_);
  buckets_.swap(other.buckets_);
  std::swap(first_, other.first_);
  std::swap(last_, other.last_);
  std::swap(free_, other.free_);
  std::swap(size_, other.size_);
}

std::uint64_t TextDictionary::hashOf(std::string_view key) const noexcept { return hasBuckets() ? keyedHash(key) : 0; }

const std::string* TextDictionary::find(std::string_view key) const noexcept {
  const Place place = placeOf(key, hashOf(key));
  return place == none ? nullptr : &slots_[place].entry.value;
}

std::optional<std::size_t> TextDictionary::slotOf(std::string_view key) const noexcept {
  const Place place = placeOf(key, hashOf(key));
  return place == none ? std::nullopt : std::optional<std::size_t>(place);
}

// Replaces the value, or inserts the entry. Moves from temporary strings.
template <typename Key, typename Value>
void TextDictionary::store(Key&& key, Value&& value) {
  const std::uint64_t hash = hashOf(key);
  if (const Place place = placeOf(key, hash); place != none) {
    slots_[place].entry.value = std::forward<Value>(value);
  } else {
    insert(std::string(std::forward<Key>(key)), std::string(std::forward<Value>(value)), hash);
  }
}

void TextDictionary::set(std::string_view key, std::string_view value) { store(key, value); }

void TextDictionary::setTaken(std::string_view key, std::string&& value) { store(key, std::move(value)); }

void TextDictionary::setMoved(std::string&& key, std::string&& value) { store(std::move(key), std::move(value)); }

bool TextDictionary::setIfAbsent(std::string key, std::string value) {
  const std::uint64_t hash = hashOf(key);
  if (placeOf(key, hash) != none) return false;
  insert(std::move(key), std::move(value), hash);
  return true;
}

bool TextDictionary::erase(std::string_view key) noexcept {
  const Place place = placeOf(key, hashOf(key));
  if (place == none) return false;

  if (hasBuckets()) leaveBucket(place);
  Slot& slot = slots_[place];
  (slot.previous == none ? first_ : slots_[slot.previous].next) = slot.next;
  (slot.next == none ? last_ : slots_[slot.next].previous) = slot.previous;
  slot.entry = {};
  slot.next = free_;
  free_ = place;
  --size_;
  return true;
}

void TextDictionary::eraseIf(FunctionRef<bool(const Entry&)> predicate) {
  // Moving what is kept is faster than many removals, and leaves no free slots.
  TextDictionary kept;
  kept.reserve(size_);  // allocates before anything is moved, so that a failure changes nothing
  for (Place place = first_; place != none; place = slots_[place].next) {
    Slot& slot = slots_[place];
    if (predicate(slot.entry)) continue;
    kept.insert(std::move(slot.entry.key), std::move(slot.entry.value), kept.hashOf(slot.entry.key));
  }
  swap(kept);
}

void TextDictionary::reserve(std::size_t count) {
  slots_.reserve(count);
  if (count <= mostWithoutBuckets) return;
  if (const std::size_t wanted = std::bit_ceil(2 * count); wanted > buckets_.size()) rebuildBuckets(wanted);
}

TextDictionary::Place TextDictionary::placeOf(std::string_view key, std::uint64_t hash) const noexcept {
  if (!hasBuckets()) {
    // Flags of the same length mostly differ in their last letter, which is compared first.
    const auto isKey = [key](std::string_view other) {
      return other.size() == key.size() && (key.empty() || (other.back() == key.back() && other == key));
    };
    Place place = first_;
    while (place != none && !isKey(slots_[place].entry.key)) place = slots_[place].next;
    return place;
  }
  const std::size_t mask = buckets_.size() - 1;
  for (std::size_t bucket = hash & mask; buckets_[bucket] != none; bucket = (bucket + 1) & mask) {
    const Slot& slot = slots_[buckets_[bucket]];
    if (slot.hash == hash && slot.entry.key == key) return buckets_[bucket];
  }
  return none;
}

void TextDictionary::insert(std::string&& key, std::string&& value, std::uint64_t hash) {
  // Everything that can throw comes first, so that a failure changes nothing.
  const bool grows = hasBuckets() ? 2 * (size_ + 1) > buckets_.size() : size_ + 1 > mostWithoutBuckets;
  if (grows) {
    rebuildBuckets(std::bit_ceil(4 * (size_ + 1)));
    hash = keyedHash(key);
  }
  Place place = free_;
  if (place != none) {
    free_ = slots_[place].next;
    slots_[place].entry = {std::move(key), std::move(value)};
  } else {
    if (slots_.size() >= none) throw std::length_error("TextDictionary: more than 2^32 - 2 entries");
    place = static_cast<Place>(slots_.size());
    slots_.emplace_back(std::move(key), std::move(value));
  }
  Slot& slot = slots_[place];
  slot.hash = hash;
  slot.previous = last_;
  slot.next = none;
  (last_ == none ? first_ : slots_[last_].next) = place;
  last_ = place;
  ++size_;
  if (hasBuckets()) enterBucket(place);
}

void TextDictionary::rebuildBuckets(std::size_t bucketCount) {
  const bool hadBuckets = hasBuckets();
  std::vector<Place>(bucketCount, none).swap(buckets_);
  for (Place place = first_; place != none; place = slots_[place].next) {
    if (!hadBuckets) slots_[place].hash = keyedHash(slots_[place].entry.key);
    enterBucket(place);
  }
}

void TextDictionary::enterBucket(Place place) noexcept {
  const std::size_t mask = buckets_.size() - 1;
  std::size_t bucket = slots_[place].hash & mask;
  while (buckets_[bucket] != none) bucket = (bucket + 1) & mask;
  buckets_[bucket] = place;
}

void TextDictionary::leaveBucket(Place place) noexcept {
  const std::size_t mask = buckets_.size() - 1;
  std::size_t hole = slots_[place].hash & mask;
  while (buckets_[hole] != place) hole = (hole + 1) & mask;

  // Closes the hole with a later entry of the run whose search passes it, and so on with the hole which that one
  // leaves, since a search ends at the first empty bucket.
  for (std::size_t bucket = (hole + 1) & mask; buckets_[bucket] != none; bucket = (bucket + 1) & mask) {
    const std::size_t home = slots_[buckets_[bucket]].hash & mask;
    if (((bucket - home) & mask) >= ((bucket - hole) & mask)) {
      buckets_[hole] = buckets_[bucket];
      hole = bucket;
    }
  }
  buckets_[hole] = none;
}

bool operator==(const TextDictionary& left, const TextDictionary& right) noexcept {
  return left.size() == right.size() && std::ranges::all_of(left, [&right](const TextDictionary::Entry& entry) {
           const std::string* const value = right.find(entry.key);
           return value != nullptr && *value == entry.value;
         });
}

}  // namespace meridian::inline v0_2
