#include "meridian/cli/nearest_text.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2 {
namespace {

bool areSameLetter(char left, char right) noexcept {
  return detail::lowercasedAscii(left) == detail::lowercasedAscii(right);
}

/// Returns the candidate that begins with the text; absent if none or several do.
std::optional<std::string_view> onlyContinuation(std::string_view text, std::span<const std::string_view> candidates) {
  constexpr std::size_t shortest = 3;
  if (text.size() < shortest) return std::nullopt;
  const auto continues = [text](std::string_view candidate) {
    return std::ranges::equal(text, candidate.substr(0, text.size()), areSameLetter);
  };
  const auto first = std::ranges::find_if(candidates, continues);
  if (first == candidates.end() || std::find_if(first + 1, candidates.end(), continues) != candidates.end()) {
    return std::nullopt;
  }
  return *first;
}

/// Returns the restricted Damerau-Levenshtein distance (optimal string alignment).
std::size_t distance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> beforeLast(right.size() + 1);
  std::vector<std::size_t> last(right.size() + 1);
  std::vector<std::size_t> current(right.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= left.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (areSameLetter(left[i - 1], right[j - 1]) ? 0 : 1);
      current[j] = std::min({last[j] + 1, current[j - 1] + 1, replaced});
      const bool exchanged =
          i > 1 && j > 1 && areSameLetter(left[i - 1], right[j - 2]) && areSameLetter(left[i - 2], right[j - 1]);
      if (exchanged) current[j] = std::min(current[j], beforeLast[j - 2] + 1);
    }
    beforeLast.swap(last);
    last.swap(current);
  }
  return last.back();
}

}  // namespace

std::optional<std::string_view> nearestText(std::string_view text, std::span<const std::string_view> candidates) {
  const std::size_t limit = text.size() / 3;
  std::optional<std::string_view> nearest;
  std::size_t least = limit + 1;
  for (const std::string_view candidate : candidates) {
    // The distance is at least the difference in length, so a huge text is never compared.
    const std::size_t longer = std::max(text.size(), candidate.size());
    if (longer - std::min(text.size(), candidate.size()) >= least) continue;
    const std::size_t here = distance(text, candidate);
    if (here < least) {
      least = here;
      nearest = candidate;
    }
  }
  return nearest ? nearest : onlyContinuation(text, candidates);
}

}  // namespace meridian::inline v0_2
