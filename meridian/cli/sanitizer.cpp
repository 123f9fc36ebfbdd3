#include "meridian/cli/sanitizer.h"

#include <algorithm>
#include <utility>

#include "meridian/base/text.h"

namespace meridian::inline v0_2 {

std::string CLISanitizationOptions::sanitize(std::string_view text) const {
  // Trimmed first, which gives the same: no character becomes white space, or stops being it, in lower case.
  const std::string_view kept = contains(trimWhiteSpace) ? trimmed(text) : text;
  return contains(lowercase) ? lowercased(kept) : std::string(kept);
}

CLIArgumentSanitizer::CLIArgumentSanitizer(std::vector<std::string> validCommandFlags,
                                           std::optional<CLISanitizationOptions> flagSanitizationOptions)
    : validCommandFlags_(std::move(validCommandFlags)), flagSanitizationOptions_(flagSanitizationOptions) {}

void CLIArgumentSanitizer::enumerateSanitizedCLIEntries(std::span<const std::string_view> cliArgs,
                                                        OptionsCallback sanitizationOptionsCallback,
                                                        PairBlock validPairBlock, PairBlock invalid) const {
  const auto flagAt = [&](std::size_t index) -> std::optional<std::string> {
    std::string word = flagSanitizationOptions_.value_or(CLISanitizationOptions{}).sanitize(cliArgs[index]);
    if (!word.starts_with('-')) return std::nullopt;
    return word;
  };

  std::size_t index = 0;
  std::optional<std::string> flag;
  while (index < cliArgs.size() && !flag) flag = flagAt(index++);
  while (flag) {
    const bool valid = std::ranges::any_of(
        validCommandFlags_, [&flag](const std::string& known) { return containsIgnoringCase(*flag, known); });
    const PairBlock& report = valid ? validPairBlock : invalid;
    const CLISanitizationOptions options = sanitizationOptionsCallback(*flag);

    std::optional<std::string> next;
    bool anyValue = false;
    for (; index < cliArgs.size() && !next; ++index) {
      next = flagAt(index);
      if (next) continue;
      report(*flag, options.sanitize(cliArgs[index]));
      anyValue = true;
    }
    if (!anyValue) report(*flag, std::nullopt);
    flag = std::move(next);
  }
}

std::string cliFlag(CLICustodialFlag flag) { return "-" + std::string(rawValue(flag)); }

}  // namespace meridian::inline v0_2
