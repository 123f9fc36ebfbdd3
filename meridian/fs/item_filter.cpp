#include "meridian/fs/item_filter.h"

#include <algorithm>
#include <functional>
#include <set>

#include "meridian/base/ascii.h"
#include "meridian/base/precondition.h"
#include "meridian/base/text.h"
#include "meridian/fs/url_operations.h"
#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {
namespace {

/// The end of a lower-cased name that the entry of an extension list stands for.
std::string patternOf(std::string_view extension) {
  return (extension.starts_with('.') ? "" : ".") + lowercased(extension);
}

bool isIgnoredByOption(ItemFilteringOption option, bool isListed) {
  switch (option) {
    case ItemFilteringOption::ignoreListedExtensions:
      return isListed;
    case ItemFilteringOption::onlyListedExtensions:
      return !isListed;
  }
  preconditionFailed("item filtering option " + std::to_string(static_cast<int>(option)) + " is none of the cases");
}

/// A name in the forms that it is compared in. For ASCII they are one and need no allocation.
class CaseForms {
 public:
  explicit CaseForms(std::string_view name) : name_(name) {
    unsigned char bits = 0;
    const std::size_t size = std::min(name.size(), ascii_.size());
    for (std::size_t i = 0; i < size; ++i) {
      const char c = name[i];
      bits |= static_cast<unsigned char>(c);
      ascii_[i] = detail::lowercasedAscii(c);
    }
    isAscii_ = size == name.size() && bits < 0x80;
  }

  /// Valid until the next form is asked for.
  [[nodiscard]] std::string_view folded() {
    if (isAscii_) return {ascii_.data(), name_.size()};
    return text_ = caseFolded(name_);
  }

  /// Lower-cased, from the first dot on: that part alone is mostly ASCII. Valid likewise.
  [[nodiscard]] std::string_view loweredEnd() {
    const std::size_t dot = std::min(name_.find('.'), name_.size());
    if (isAscii_) return std::string_view(ascii_.data(), name_.size()).substr(dot);
    return text_ = lowercased(name_.substr(dot));
  }

 private:
  std::string_view name_;
  bool isAscii_ = false;
  std::array<char, 256> ascii_{};  // a component is at most 255 bytes long
  std::string text_;
};

bool isAmong(const std::vector<std::string>& sorted, std::string_view text) {
  return std::binary_search(sorted.begin(), sorted.end(), text, std::less<>());
}

/// Whether the folding of a name can be among sorted ones, by its first character: most forced names begin with a dot,
/// hardly any other does, and folding a whole name takes long where it is not ASCII.
bool mayBeAmong(const std::vector<std::string>& sortedFoldings, std::string_view name) {
  if (sortedFoldings.empty()) return false;
  if (name.empty() || static_cast<unsigned char>(name.front()) >= 0x80) return true;
  const std::string first = caseFolded(name.substr(0, 1));
  const auto candidate = std::ranges::lower_bound(sortedFoldings, first);
  return candidate != sortedFoldings.end() && candidate->starts_with(first);
}

/// Whether a name ends with one of the patterns, by what it holds from its first dot on: each pattern begins with one.
bool endsWithAny(std::string_view lowered, const std::vector<std::string>& patterns) {
  for (std::size_t dot = lowered.find('.'); dot != std::string_view::npos; dot = lowered.find('.', dot + 1)) {
    if (isAmong(patterns, lowered.substr(dot))) return true;
  }
  return false;
}

std::vector<std::string> sortedOnce(const std::vector<std::string>& texts,
                                    FunctionRef<std::string(std::string_view)> form) {
  std::vector<std::string> result;
  result.reserve(texts.size());
  for (const std::string& text : texts) result.push_back(form(text));
  std::ranges::sort(result);
  const auto repeats = std::ranges::unique(result);
  result.erase(repeats.begin(), repeats.end());
  return result;
}

/// What the file system says of an item, asked at most once.
class ItemQuestions {
 public:
  explicit ItemQuestions(const Url& item) noexcept : path_(item.path()) {}

  bool canBeRead() noexcept {
    isMissing_ = !nameIsTaken(path_);
    return !isMissing_;
  }
  [[nodiscard]] bool isDirectory() const noexcept { return !isMissing_ && pathIsDirectory(path_); }

 private:
  const std::string& path_;
  bool isMissing_ = false;
};

}  // namespace

ItemDecision decisionBasedOnSettings(const Url& item, const ItemFilterSettings& settings) {
  const std::string_view name = item.lastPathComponent();
  for (const std::string& component : settings.forcePathComponents) {
    if (equalsIgnoringCase(component, name)) return {true, ItemFilterRule::forcedComponent};
  }
  if (settings.ignoreHiddenItems && isHiddenItem(item) == true) return {true, ItemFilterRule::hidden};
  if (isDirectory(item)) return {false, ItemFilterRule::directory};

  std::set<std::string> patterns;
  for (const std::string& extension : settings.extensionFilterList) patterns.insert(patternOf(extension));
  if (patterns.empty()) return {false, ItemFilterRule::noExtensions};

  const std::string lowered = lowercased(name);
  const bool isListed =
      std::ranges::any_of(patterns, [&lowered](const std::string& pattern) { return lowered.ends_with(pattern); });
  return {isIgnoredByOption(settings.filteringOption, isListed), ItemFilterRule::extension};
}

bool shouldIgnoreBasedOnSettings(const Url& item, const ItemFilterSettings& settings) {
  return decisionBasedOnSettings(item, settings).isIgnored;
}

ItemFilter::ItemFilter(const ItemFilterSettings& settings)
    : forcedNames_(sortedOnce(settings.forcePathComponents, caseFolded)),
      patterns_(sortedOnce(settings.extensionFilterList, patternOf)),
      option_(settings.filteringOption),
      ignoresHidden_(settings.ignoreHiddenItems) {}

bool ItemFilter::isIgnored(std::string_view name, Question canBeRead, Question isDirectory) const {
  CaseForms forms(name);
  if (mayBeAmong(forcedNames_, name) && isAmong(forcedNames_, forms.folded())) return true;
  if (ignoresHidden_ && nameIsHidden(name) && canBeRead()) return true;
  if (patterns_.empty()) return false;
  const bool isListed = endsWithAny(forms.loweredEnd(), patterns_);
  // What is copied be it a directory or not needs no question.
  if (option_ == (isListed ? ItemFilteringOption::onlyListedExtensions : ItemFilteringOption::ignoreListedExtensions)) {
    return false;
  }
  return !isDirectory() && isIgnoredByOption(option_, isListed);
}

ItemDecision ItemFilter::decision(std::string_view name, Question canBeRead, Question isDirectory) const {
  CaseForms forms(name);
  if (mayBeAmong(forcedNames_, name) && isAmong(forcedNames_, forms.folded()))
    return {true, ItemFilterRule::forcedComponent};
  if (ignoresHidden_ && nameIsHidden(name) && canBeRead()) return {true, ItemFilterRule::hidden};
  if (isDirectory()) return {false, ItemFilterRule::directory};
  if (patterns_.empty()) return {false, ItemFilterRule::noExtensions};
  return {isIgnoredByOption(option_, endsWithAny(forms.loweredEnd(), patterns_)), ItemFilterRule::extension};
}

bool ItemFilter::isIgnored(const Url& item) const {
  ItemQuestions questions(item);
  return isIgnored(
      item.lastPathComponent(), [&] { return questions.canBeRead(); }, [&] { return questions.isDirectory(); });
}

ItemDecision ItemFilter::decision(const Url& item) const {
  ItemQuestions questions(item);
  return decision(
      item.lastPathComponent(), [&] { return questions.canBeRead(); }, [&] { return questions.isDirectory(); });
}

bool ItemFilter::isIgnored(std::string_view name, FunctionRef<bool()> isDirectory) const {
  return isIgnored(name, [] { return true; }, isDirectory);
}

ItemDecision ItemFilter::decision(std::string_view name, FunctionRef<bool()> isDirectory) const {
  return decision(name, [] { return true; }, isDirectory);
}

}  // namespace meridian::inline v0_2
