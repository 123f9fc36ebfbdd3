// A second reader of the transcoder's argument vector, in the plainest way: whole dictionaries step by step, searched
// from the front. It shares only the text rules and the list of known flags with the store. Tests and fuzz targets
// compare the store with it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/text.h"
#include "meridian/cli/transcode_cli_arguments.h"

namespace meridian::reference {

using Pairs = std::vector<std::pair<std::string, std::string>>;

inline void put(Pairs& pairs, const std::string& key, const std::string& value) {
  const auto found = std::ranges::find(pairs, key, &Pairs::value_type::first);
  if (found == pairs.end()) {
    pairs.emplace_back(key, value);
  } else {
    found->second = value;
  }
}

inline std::string normalized(std::string_view text) { return std::string(trimmed(lowercased(text))); }

inline std::string treatedValue(const std::string& flag, std::string_view value) {
  bool keepsCase = flag.starts_with("-in");
  for (const char* path : {"-clut", "-out", "-progress_file", "-work_dir"}) {
    keepsCase = keepsCase || equalsIgnoringCase(flag, path);
  }
  return keepsCase ? std::string(trimmed(value)) : normalized(value);
}

struct Words {
  /// Every flag in order, with its value.
  Pairs flags;
  std::vector<std::size_t> strayPlaces;
};

inline Words readWords(std::span<const std::string> words) {
  Words result;
  std::size_t valuePlace = words.size();
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string flag = normalized(words[i]);
    if (!flag.starts_with('-')) {
      if (i != valuePlace) result.strayPlaces.push_back(i);
      continue;
    }
    std::string value;
    if (i + 1 < words.size() && !normalized(words[i + 1]).starts_with('-')) {
      value = treatedValue(flag, words[i + 1]);
      valuePlace = i + 1;
    }
    result.flags.emplace_back(flag, value);
  }
  return result;
}

struct Store {
  Pairs valid;
  Pairs invalid;
  std::vector<std::string> order;

  friend bool operator==(const Store&, const Store&) = default;
};

inline Store validated(const Pairs& given) {
  static const std::map<std::string, Pairs> presets = {
      {"solvane_cloud",
       {{"-file_format", "qt"},
        {"-vcodec", "h264"},
        {"-dims", "960x540"},
        {"-aspect_scaling", "stretch"},
        {"-vbr", "3"},
        {"-web", ""},
        {"-acodec", "aac"},
        {"-asr", "48000"}}},
      {"solvane_4444xq", {{"-file_format", "qt"}, {"-vcodec", "prores4444xq"}, {"-acodec", "lpcm"}}}};

  Store store;
  std::vector<std::string> names;
  for (const auto& [givenFlag, givenValue] : given) {
    const std::string flag = normalized(givenFlag);
    const bool known = std::ranges::any_of(TranscodeCliArguments::allKnownCommandFlags(),
                                           [&](std::string_view each) { return containsIgnoringCase(flag, each); });
    if (!flag.starts_with('-') || !known) {
      put(store.invalid, givenFlag, givenValue);
    } else if (flag.starts_with("-preset")) {
      names.push_back(treatedValue(flag, givenValue));
    } else {
      put(store.valid, flag, treatedValue(flag, givenValue));
    }
  }
  for (const std::string& name : names) {
    const auto preset = presets.find(name);
    if (preset == presets.end()) {
      put(store.invalid, "-preset", name);
      continue;
    }
    for (const auto& pair : preset->second) {
      if (std::ranges::count(store.valid, pair.first, &Pairs::value_type::first) == 0) store.valid.push_back(pair);
    }
  }
  return store;
}

inline Store parsed(std::span<const std::string> words, bool keepOrder) {
  Pairs raw;
  for (const auto& [flag, value] : readWords(words).flags) put(raw, flag, value);
  Store store = validated(raw);
  if (!keepOrder) return store;

  Pairs left = store.valid;
  for (const std::string& word : words) {
    const std::string flag = normalized(word);
    if (!flag.starts_with('-')) continue;
    if (std::erase_if(left, [&flag](const auto& pair) { return pair.first == flag; }) > 0) store.order.push_back(flag);
  }
  for (const auto& [flag, value] : left) store.order.push_back(flag);
  return store;
}

inline Pairs pairsOf(const TextDictionary& dictionary) {
  Pairs pairs;
  for (const auto& [key, value] : dictionary) pairs.emplace_back(key, value);
  return pairs;
}

/// Returns a real store in the form of the plain one.
inline Store storeOf(const TranscodeCliArguments& arguments) {
  const auto& [lookup, invalid, order] = arguments.stored();
  return {pairsOf(lookup), pairsOf(invalid.value_or(TextDictionary())), order.value_or(std::vector<std::string>())};
}

}  // namespace meridian::reference
