#include "meridian/base/text_dictionary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace meridian {
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

void expectHolds(const TextDictionary& dictionary, const Pairs& expected) {
  Pairs pairs;
  std::set<std::size_t> slots{dictionary.slotCount()};
  for (auto entry = dictionary.begin(); entry != dictionary.end(); ++entry) {
    pairs.emplace_back(entry->key, entry->value);
    slots.insert(entry.slot());
    ASSERT_TRUE(dictionary.find(entry->key) == &entry->value && dictionary.slotOf(entry->key) == entry.slot());
    ASSERT_EQ(&dictionary.entryAt(entry.slot()), &*entry);
  }
  ASSERT_EQ(pairs, expected);
  ASSERT_TRUE(dictionary.size() == expected.size() && dictionary.empty() == expected.empty());
  ASSERT_TRUE(slots.size() == expected.size() + 1 && *slots.rbegin() == dictionary.slotCount());
}

bool isUnwanted(const TextDictionary::Entry& entry) { return entry.key > "k" || entry.key.ends_with('7'); }

TEST(TextDictionary, BehavesAsAPlainListOfPairs) {
  std::mt19937 random(20240614);
  TextDictionary dictionary;
  Pairs model;
  for (int step = 0; step < 20000; ++step) {
    // Few keys, so that most occur again; the size goes up and down, so that runs of buckets form and break up.
    const std::string key = std::string(random() % 3, 'k') + (random() % 40 == 0 ? "" : std::to_string(random() % 60));
    const std::string value = std::to_string(step);
    const auto place = std::ranges::find(model, key, &Pairs::value_type::first);
    const bool present = place != model.end();
    const auto action = random() % (step % 1000 < 500 ? 10 : 6);
    if (action < 3) {
      ASSERT_EQ(dictionary.erase(key), present);
      if (present) model.erase(place);
    } else if (action == 3) {
      ASSERT_EQ(dictionary.setIfAbsent(key, value), !present);
      if (!present) model.emplace_back(key, value);
    } else if (step % 300 == 0) {
      Pairs asked;
      dictionary.eraseIf(
          [&](const auto& entry) { return asked.emplace_back(entry.key, entry.value), isUnwanted(entry); });
      ASSERT_EQ(asked, model);
      std::erase_if(model, [](const auto& pair) { return isUnwanted({pair.first, pair.second}); });
    } else if (step % 1000 == 1) {
      dictionary.clear();
      dictionary.reserve(random() % 40);
      model.clear();
    } else {
      dictionary.set(key, value);
      (present ? *place : model.emplace_back(key, "")).second = value;
    }
    const bool stored = std::ranges::count(model, key, &Pairs::value_type::first) > 0;
    ASSERT_TRUE(dictionary.contains(key) == stored && dictionary.slotOf(key).has_value() == stored);
    if (step % 30 == 0) expectHolds(dictionary, model);
    if (HasFatalFailure()) return;
  }
}

TEST(TextDictionary, FindsTheOthersAfterEachRemoval) {
  // Half full, so that in most rounds a run of buckets goes beyond the end of the table and on at its beginning.
  constexpr int count = 64;
  std::mt19937 random(3);
  for (int round = 0; round < 100; ++round) {
    TextDictionary dictionary;
    std::vector<std::string> keys;
    for (int i = 0; i < count; ++i) {
      keys.push_back(std::to_string(round) + "." + std::to_string(i));
      dictionary.set(keys.back(), "");
    }
    std::ranges::shuffle(keys, random);
    while (!keys.empty()) {
      ASSERT_TRUE(dictionary.erase(keys.back()));
      ASSERT_FALSE(dictionary.contains(keys.back()));
      keys.pop_back();
      for (const std::string& key : keys) ASSERT_TRUE(dictionary.contains(key)) << key;
    }
  }
}

TEST(TextDictionary, IsAValue) {
  const Pairs pairs{{"b", "1"}, {"a", "2"}, {"", "3"}};
  TextDictionary original{{"b", "0"}, {"a", "2"}, {"b", "1"}, {"", "3"}};
  TextDictionary copy = original;
  copy.set("kk", "4");
  copy.eraseIf(isUnwanted);
  EXPECT_EQ(copy, original);
  copy.erase("b");
  expectHolds(original, pairs);

  TextDictionary moved = std::move(original);
  expectHolds(moved, pairs);
  expectHolds(original, {});  // NOLINT(bugprone-use-after-move): a moved-from dictionary is empty and can be used
  original.set("b", "again");
  original = std::move(moved);
  expectHolds(moved, {});  // NOLINT(bugprone-use-after-move)
  TextDictionary& self = original;
  original = std::move(self);
  expectHolds(original, pairs);

  // Equal in any order; different if a key, a value or an entry is.
  EXPECT_EQ(TextDictionary::fromPairs(std::map<std::string, std::string>(pairs.begin(), pairs.end())), original);
  for (const TextDictionary& other : {copy, {{"b", "1"}, {"a", "2"}, {"x", "3"}}, {{"b", "1"}, {"a", "2"}, {"", ""}}}) {
    EXPECT_FALSE(other == original || original == other);
  }
}

TEST(TextDictionary, HoldsAHundredThousandEntries) {
  constexpr int count = 100000;
  TextDictionary dictionary;
  for (int i = 0; i < count; ++i) dictionary.set(std::to_string(i), "first");
  for (int i = 0; i < count; i += 2) ASSERT_TRUE(dictionary.erase(std::to_string(i)));
  for (int i = 0; i < count; i += 2) dictionary.set(std::to_string(i), "again");
  EXPECT_EQ(dictionary.slotCount(), count);  // free slots are used again
  int place = 0;
  for (const auto& [key, value] : dictionary) {  // the odd ones are still in front
    ASSERT_EQ(key, std::to_string(place < count / 2 ? 2 * place + 1 : 2 * place - count));
    ASSERT_EQ(value, place++ < count / 2 ? "first" : "again");
  }
  EXPECT_EQ(place, count);
}

}  // namespace
}  // namespace meridian
