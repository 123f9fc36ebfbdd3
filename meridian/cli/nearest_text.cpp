#include "meridian/cli/nearest_text.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace meridian::inline v0_2 {
namespace {

/// Returns the restricted Damerau-Levenshtein distance (optimal string alignment).
std::size_t distance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> beforeLast(right.size() + 1);
  std::vector<std::size_t> last(right.size() + 1);
  std::vector<std::size_t> current(right.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= left.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      current[j] = std::min({last[j] + 1, current[j - 1] + 1, replaced});
      const bool exchanged = i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
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
  return nearest;
}

}  // namespace meridian::inline v0_2
