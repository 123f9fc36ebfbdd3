#include "meridian/engine/plan_context.h"

#include <algorithm>
#include <array>

#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/cli/transcode_properties.h"

namespace meridian::inline v0_2 {
namespace {

/// Returns why no flag of the group has an effect; empty if some have.
std::string_view reasonOfGroup(FlagGroup group, const PlanContext& context) {
  const TranscodePlan& plan = context.plan;
  switch (group) {
    case FlagGroup::video:
    case FlagGroup::watermarkFile:
    case FlagGroup::watermarkText:
    case FlagGroup::cameraLook:
      if (!plan.video) return "there is no video in the output";
      return plan.video->isCopied() ? "the video is copied" : "";
    case FlagGroup::audio:
      if (plan.audio.empty()) return "there is no audio in the output";
      return context.isAudioCopied ? "the audio is copied" : "";
    case FlagGroup::timecode:
      if (!plan.video) return "there is no video in the output";
      if (plan.timecode) return "";
      return context.container && tableRow(*context.container).timecode == TimecodeStorage::none
                 ? "the container keeps no timecode"
                 : "there is no timecode in the output; add -tc_track or -tc_burn";
    case FlagGroup::command:
    case FlagGroup::general:
      break;
  }
  return "";
}

/// A flag that has an effect only beside another.
struct DependentFlag {
  std::string_view flag;
  std::string_view needed;
  std::string_view reason;
};

constexpr std::string_view withoutTimecodeBurn = "there is no -tc_burn";
constexpr std::string_view withoutTextBurn = "there is no -wmt_burn";
constexpr std::string_view withoutWatermark = "there is no -wmf_path";

constexpr auto dependentFlags = std::to_array<DependentFlag>({
    {SAVTimecodeBurnAnchorFlag.rawValue(), SAVTimecodeAddBurnFlag.rawValue(), withoutTimecodeBurn},
    {SAVTimecodeBurnFontSize.rawValue(), SAVTimecodeAddBurnFlag.rawValue(), withoutTimecodeBurn},
    {SAVTimecodeBurnFontRGB.rawValue(), SAVTimecodeAddBurnFlag.rawValue(), withoutTimecodeBurn},
    {SAVTimecodeBurnBoxRGB.rawValue(), SAVTimecodeAddBurnFlag.rawValue(), withoutTimecodeBurn},
    {SAVWatermarkTextBurnTextFlag.rawValue(), SAVWatermarkTextAddBurnFlag.rawValue(), withoutTextBurn},
    {SAVWatermarkTextBurnFontSizeFlag.rawValue(), SAVWatermarkTextAddBurnFlag.rawValue(), withoutTextBurn},
    {SAVWatermarkTextBurnAnchorFlag.rawValue(), SAVWatermarkTextAddBurnFlag.rawValue(), withoutTextBurn},
    {SAVWatermarkTextBurnFontRGBFlag.rawValue(), SAVWatermarkTextAddBurnFlag.rawValue(), withoutTextBurn},
    {SAVWatermarkTextBurnBoxRGBFlag.rawValue(), SAVWatermarkTextAddBurnFlag.rawValue(), withoutTextBurn},
    {SAVWatermarkFileBurnAnchorFlag.rawValue(), SAVWatermarkFileBurnFilePathFlag.rawValue(), withoutWatermark},
    {SAVWatermarkFileBurnScaleFlag.rawValue(), SAVWatermarkFileBurnFilePathFlag.rawValue(), withoutWatermark},
});

/// Says which preset set a flag, for one that is not among the words.
std::string presetText(const ExplainedSetting* setting) {
  if (setting == nullptr || setting->source != SettingSource::preset || !setting->preset) return "";
  return "set by -preset " + std::string(preset(*setting->preset));
}

}  // namespace

std::string namesOf(std::span<const ChannelLabel> labels) {
  std::vector<std::string_view> names;
  for (const ChannelLabel label : labels) names.push_back(description(label));
  return joined(names, " ");
}

std::string frameRateText(const VideoFrameRate& rate) {
  const MediaRational rational = rate.rawValue();
  if (rational.denominator == 1) return std::to_string(rational.numerator) + " fps";
  return fixedDecimalText(rational.rawValue(), 3) + " fps (" + std::to_string(rational.numerator) + "/" +
         std::to_string(rational.denominator) + ")";
}

PlanContext::PlanContext(const TranscodeExplanation& explained, const EncoderInventory& installed,
                         const TranscodeSurroundings& found)
    : words(explained),
      arguments(explained.arguments),
      inventory(installed),
      surroundings(found),
      isUsed_(explained.settings.size(), false) {
  byFlag_.reserve(explained.settings.size());
  for (const ExplainedSetting& setting : explained.settings) byFlag_.push_back(&setting);
  std::ranges::sort(byFlag_, {}, &ExplainedSetting::flag);
}

void PlanContext::fail(TranscodePlanErrorCode code, std::string_view flag, std::string_view detail,
                       std::string advice) {
  const ExplainedSetting* const setting = use(flag);
  std::vector<std::string> texts;
  if (setting != nullptr && !setting->value.empty()) {
    texts.push_back(inQuotes(setting->writtenValue.empty() ? setting->value : setting->writtenValue));
  }
  texts.push_back(presetText(setting));
  texts.emplace_back(detail);
  std::erase(texts, "");
  errors.push_back({{code, std::string(flag), joined(texts, ", ")}, std::move(advice)});
}

void PlanContext::failRate(std::string_view detail, std::string advice) {
  const std::string_view flag = SAVVideoFrameRateFlag.rawValue();
  fail(TranscodePlanErrorCode::rateOutOfRange, value<float>(flag) ? flag : image->part->flag, detail,
       std::move(advice));
}

void PlanContext::warn(TranscodePlanWarningCode code, std::string_view flag, std::string_view detail,
                       std::string advice) {
  std::vector<std::string> texts{presetText(find(flag)), std::string(detail)};
  std::erase(texts, "");
  plan.warnings.push_back({{code, std::string(flag), joined(texts, ", ")}, std::move(advice)});
}

const ExplainedSetting* PlanContext::find(std::string_view flag) const {
  const auto flagOf = [](const ExplainedSetting* setting) { return std::string_view(setting->flag); };
  const auto found = std::ranges::lower_bound(byFlag_, flag, {}, flagOf);
  return found == byFlag_.end() || (*found)->flag != flag ? nullptr : *found;
}

const ExplainedSetting* PlanContext::use(std::string_view flag) {
  const ExplainedSetting* const setting = find(flag);
  if (setting != nullptr) use(*setting);
  return setting;
}

std::string_view PlanContext::text(std::string_view flag) const {
  const ExplainedSetting* const setting = find(flag);
  return setting != nullptr ? std::string_view(setting->value) : std::string_view();
}

std::string_view PlanContext::containerFlag() const {
  return isSet(SAVFileFormatFlag.rawValue()) ? SAVFileFormatFlag.rawValue() : SAVOutputFileFlag.rawValue();
}

void PlanContext::ignore(std::string_view flag, std::string_view reason) { ignored_.push_back({flag, reason}); }

void PlanContext::warnOfUnused() {
  for (std::size_t place = 0; place < isUsed_.size(); ++place) {
    if (isUsed_[place]) continue;
    const ExplainedSetting& setting = words.settings[place];
    // As the source is what a copy is.
    if (isCopyOfSource(setting.flag, setting.value)) continue;
    const auto ignored = std::ranges::find(ignored_, setting.flag, &IgnoredFlag::flag);
    const FlagDescription* const known = findFlag(setting.flag);
    std::string_view reason = ignored != ignored_.end() ? ignored->reason : "";
    const auto dependent = std::ranges::find(dependentFlags, setting.flag, &DependentFlag::flag);
    if (reason.empty() && dependent != dependentFlags.end() && !isSet(dependent->needed)) reason = dependent->reason;
    if (reason.empty() && TranscodeCliArguments::isIgnoredTrackFlag(setting.flag)) {
      reason = reasonOfGroup(FlagGroup::audio, *this);
    }
    if (reason.empty() && known != nullptr) reason = reasonOfGroup(known->group, *this);
    warn(TranscodePlanWarningCode::withoutEffect, setting.flag, reason);
  }
}

}  // namespace meridian::inline v0_2
