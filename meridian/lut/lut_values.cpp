#include "meridian/lut/lut_values.h"

#include <algorithm>

namespace meridian::inline v0_2 {

LutEssence::~LutEssence() = default;

void LutValueTriplets::append(const LutValueTriplet& triplet) {
  std::size_t place = colors_.size() * 3;
  for (const DecimalNumber* const number : {&triplet.first, &triplet.second, &triplet.third}) {
    if (!number->isPlain()) exactIntegers_.emplace_back(place, number->integerValue());
    ++place;
  }
  colors_.push_back({triplet.first.doubleValue(), triplet.second.doubleValue(), triplet.third.doubleValue()});
}

LutValueTriplet LutValueTriplets::exactTriplet(std::size_t place) const noexcept {
  const auto numberAt = [this](std::size_t key, double value) {
    const auto found = std::ranges::lower_bound(exactIntegers_, key, {}, &std::pair<std::size_t, std::int64_t>::first);
    if (found == exactIntegers_.end() || found->first != key) return DecimalNumber(value);
    return DecimalNumber(value, found->second);
  };
  const LutColor& color = colors_[place];
  return {numberAt(place * 3, color.red), numberAt(place * 3 + 1, color.green), numberAt(place * 3 + 2, color.blue)};
}

}  // namespace meridian::inline v0_2
