#include "meridian/media/frame_rate.h"

#include "meridian/base/numbers.h"
#include "meridian/media/option_list.h"
#include "meridian/platform/system_log.h"
#include "meridian/suite/localization.h"

namespace meridian::inline v0_2 {
namespace {

/// Returns "24 fps" or "23.97 fps": two decimals unless they are zeros.
std::string rateText(double framesPerSecond) {
  std::string text = fixedDecimalText(framesPerSecond, 2);
  if (text.ends_with(".00")) text.resize(text.size() - 3);
  return text + " fps";
}

}  // namespace

namespace detail {

void reportUnknownFrameRate(double rawValue) {
  writeToSystemLog("Could not convert raw value to frame rate: " + shortestDecimalText(rawValue));
}

}  // namespace detail

std::string FrameRate::description() const {
  if (kind_ == Kind::custom && rawValue_ > 0) return "Custom: " + shortestDecimalText(rawValue_) + " fps";
  return pickerDescription();
}

std::string FrameRate::pickerDescription() const {
  const FrameRateRow& row = tableRow(kind_);
  return row.description.empty() ? rateText(rawValue_) : std::string(row.description);
}

std::string FrameRate::tag() const { return kind_ == Kind::custom ? "custom" : description(); }

std::string FrameRate::localizedString() const { return localized(description()); }
std::string FrameRate::localizedPickerString() const { return localized(pickerDescription()); }

std::vector<FrameRate> FrameRate::filterScaleOptions(std::span<const FrameRate> from) {
  return membersAmong(scaleOptions(), from);
}

std::vector<FrameRate> FrameRate::filterExactFrameRateOptions(std::span<const FrameRate> from) {
  return membersAmong(exactFrameRateOptions(), from);
}

}  // namespace meridian::inline v0_2
