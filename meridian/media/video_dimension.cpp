#include "meridian/media/video_dimension.h"

#include <algorithm>
#include <iterator>

#include "meridian/base/numbers.h"
#include "meridian/media/option_list.h"
#include "meridian/suite/localization.h"

namespace meridian::inline v0_2 {

std::string VideoDimension::description() const {
  if (isCustom() && size_.width > 0 && size_.height > 0) {
    return "Custom: " + shortestDecimalText(size_.width) + " x " + shortestDecimalText(size_.height);
  }
  if (isCustomScale() && size_.width > 0) return "Custom: " + fixedDecimalText(size_.width * 100, 1) + "%";
  return pickerDescription();
}

std::string VideoDimension::pickerDescription() const { return std::string(tableRow(kind_).description); }

std::string VideoDimension::tag() const {
  return std::string(isCustom() || isCustomScale() ? tableRow(kind_).rawValue : tableRow(kind_).description);
}

std::string VideoDimension::localizedString() const { return localized(description()); }
std::string VideoDimension::localizedPickerString() const { return localized(pickerDescription()); }

std::vector<VideoDimension> VideoDimension::filterScaleOptions(std::span<const VideoDimension> from) {
  return membersAmong(scaleOptions(), from);
}

std::vector<VideoDimension> VideoDimension::filterExactDimensionsOptions(std::span<const VideoDimension> from) {
  return membersAmong(exactDimensionsOptions(), from);
}

std::vector<VideoDimension> VideoDimension::allAllowedOptions(ConversionCodecType codec) {
  std::vector<VideoDimension> options;
  std::ranges::copy(allowedScaledOptions(codec), std::back_inserter(options));
  std::ranges::copy(allowedExactOptions(codec), std::back_inserter(options));
  return options;
}

}  // namespace meridian::inline v0_2
