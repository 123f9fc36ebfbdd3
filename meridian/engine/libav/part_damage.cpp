#include "meridian/engine/libav/part_damage.h"

#include <algorithm>
#include <utility>

#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"

namespace meridian::inline v0_2::libav {

void PartDamage::note(Ticks time, std::string_view reason, std::optional<std::size_t> track) {
  if (isAccepted_ && block_) {
    block_(time, track, reason);
    return;
  }
  std::string detail = "at " + fixedDecimalText(std::max(secondsOfTicks(time), 0.0), 3) + " s";
  if (!reason.empty()) detail += ": " + printable(reason);
  if (!isAccepted_) {
    if (!error_) error_ = TranscodeRunError{TranscodeRunErrorCode::sourceDamaged, path_, std::move(detail)};
    return;
  }
  if (count_++ == 0) first_ = std::move(detail);
}

void PartDamage::noteShort(Ticks time, std::string detail) {
  if (isAccepted_ && block_) {
    block_(time, std::nullopt, detail);
  } else if (isAccepted_) {
    short_ = std::move(detail);
  } else if (!error_) {
    error_ = TranscodeRunError{TranscodeRunErrorCode::sourceShort, path_, std::move(detail)};
  }
}

std::vector<TranscodeRunWarning> PartDamage::takeWarnings() {
  std::vector<TranscodeRunWarning> warnings;
  if (const std::int64_t count = std::exchange(count_, 0); count > 0) {
    std::string detail = std::exchange(first_, {});
    if (count > 1) detail += ", and in " + countText(count - 1, "more place");
    warnings.push_back({TranscodeRunWarningCode::damageAccepted, path_, std::move(detail)});
  }
  if (!short_.empty()) {
    warnings.push_back({TranscodeRunWarningCode::shortSourceAccepted, path_, std::exchange(short_, {})});
  }
  return warnings;
}

}  // namespace meridian::inline v0_2::libav
