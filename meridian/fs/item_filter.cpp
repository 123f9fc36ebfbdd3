#include "meridian/fs/item_filter.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "meridian/base/ascii.h"
#include "meridian/base/precondition.h"
#include "meridian/base/text.h"
#include "meridian/fs/name_rules.h"
#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {
namespace {

/// Returns what a lower-cased name ends with if it has the extension.
std::string endingOf(std::string_view extension) { return "." + lowercased(deletingPrefix(extension, ".")); }

/// Returns whether the option ignores a file; absent for an option that is not one of the cases.
std::optional<bool> ignoresFile(ItemFilteringOption option, bool isListed) noexcept {
  switch (option) {
    case ItemFilteringOption::ignoreListedExtensions:
      return isListed;
    case ItemFilteringOption::onlyListedExtensions:
      return !isListed;
  }
  return std::nullopt;
}

/// A name in the forms in which it is compared. For an ASCII name both are the same and need no allocation.
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

  /// Returns the case folding; valid until the next call.
  [[nodiscard]] std::string_view folded() {
    if (isAscii_) return {ascii_.data(), name_.size()};
    return text_ = caseFolded(name_);
  }

  /// Returns the lower-cased name from its first dot on, which is mostly ASCII; valid until the next call.
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

/// Returns false if the first character alone shows that the folded name is not among sorted ones. Most forced names
/// begin with a dot and few other names do, and folding a whole name that is not ASCII is slow.
bool mayBeAmong(const std::vector<std::string>& sortedFoldings, std::string_view name) {
  if (sortedFoldings.empty()) return false;
  if (name.empty() || static_cast<unsigned char>(name.front()) >= 0x80) return true;
  const std::string first = caseFolded(name.substr(0, 1));
  const auto candidate = std::ranges::lower_bound(sortedFoldings, first);
  return candidate != sortedFoldings.end() && candidate->starts_with(first);
}

/// Returns true if the lower-cased end of a name, from its first dot on, ends with one of the sorted endings. Each
/// ending begins with a dot, so only the positions of dots are tried.
bool endsWithAny(std::string_view lowered, const std::vector<std::string>& endings) {
  for (std::size_t dot = lowered.find('.'); dot != std::string_view::npos; dot = lowered.find('.', dot + 1)) {
    if (isAmong(endings, lowered.substr(dot))) return true;
  }
  return false;
}

std::vector<std::string> sortedDistinct(const std::vector<std::string>& texts,
                                        FunctionRef<std::string(std::string_view)> form) {
  std::vector<std::string> result;
  result.reserve(texts.size());
  for (const std::string& text : texts) result.push_back(form(text));
  std::ranges::sort(result);
  const auto repeats = std::ranges::unique(result);
  result.erase(repeats.begin(), repeats.end());
  return result;
}

/// Asks the file system about an item, at most once: an item that does not exist is not a directory.
class ItemQuestions {
 public:
  explicit ItemQuestions(const Url& item) noexcept : path_(item.path()) {}

  bool exists() noexcept {
    isMissing_ = !nameIsTaken(path_);
    return !isMissing_;
  }
  [[nodiscard]] bool isDirectory() const noexcept { return !isMissing_ && pathIsDirectory(path_); }

 private:
  const std::string& path_;
  bool isMissing_ = false;
};

}  // namespace

ItemFilter::ItemFilter(const ItemFilterSettings& settings)
    : forcedNames_(sortedDistinct(settings.forcePathComponents, caseFolded)),
      endings_(sortedDistinct(settings.extensionFilterList, endingOf)),
      option_(settings.filteringOption),
      ignoresHidden_(settings.ignoreHiddenItems) {}

ItemDecision ItemFilter::decide(std::string_view name, Question exists, Question isDirectory, Wanted wanted) const {
  CaseForms forms(name);
  if (mayBeAmong(forcedNames_, name) && isAmong(forcedNames_, forms.folded()))
    return {true, ItemFilterRule::forcedComponent};
  if (ignoresHidden_ && nameIsHidden(name) && exists()) return {true, ItemFilterRule::hidden};

  const std::optional<bool> isIgnoredAsFile =
      endings_.empty() ? false : ignoresFile(option_, endsWithAny(forms.loweredEnd(), endings_));
  // Directories are copied. If a file of this name is copied too, only the rule depends on which of the two it is.
  const bool isDirectoryMatters = wanted == Wanted::rule || isIgnoredAsFile.value_or(true);
  if (isDirectoryMatters && isDirectory()) return {false, ItemFilterRule::directory};
  if (endings_.empty()) return {false, ItemFilterRule::noExtensions};
  if (!isIgnoredAsFile) {
    preconditionFailed("item filtering option " + std::to_string(static_cast<int>(option_)) +
                       " is not one of the cases");
  }
  return {*isIgnoredAsFile, ItemFilterRule::extension};
}

bool ItemFilter::isIgnored(const Url& item) const {
  ItemQuestions questions(item);
  return decide(
             item.lastPathComponent(), [&] { return questions.exists(); }, [&] { return questions.isDirectory(); },
             Wanted::verdict)
      .isIgnored;
}

ItemDecision ItemFilter::decision(const Url& item) const {
  ItemQuestions questions(item);
  return decide(
      item.lastPathComponent(), [&] { return questions.exists(); }, [&] { return questions.isDirectory(); },
      Wanted::rule);
}

bool ItemFilter::isIgnored(std::string_view name, FunctionRef<bool()> isDirectory) const {
  return decide(name, [] { return true; }, isDirectory, Wanted::verdict).isIgnored;
}

ItemDecision ItemFilter::decision(std::string_view name, FunctionRef<bool()> isDirectory) const {
  return decide(name, [] { return true; }, isDirectory, Wanted::rule);
}

ItemDecision decisionBasedOnSettings(const Url& item, const ItemFilterSettings& settings) {
  return ItemFilter(settings).decision(item);
}

bool shouldIgnoreBasedOnSettings(const Url& item, const ItemFilterSettings& settings) {
  return ItemFilter(settings).isIgnored(item);
}

}  // namespace meridian::inline v0_2
