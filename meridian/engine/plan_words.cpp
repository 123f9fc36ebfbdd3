// What the words of an argument vector get wrong, whatever the sources are.
#include <algorithm>
#include <array>
#include <iterator>

#include "meridian/base/is_in.h"
#include "meridian/base/joined.h"
#include "meridian/base/printable.h"
#include "meridian/base/text.h"
#include "meridian/engine/plan_context.h"

namespace meridian::inline v0_2 {
namespace {

/// The values that a flag of a camera look may have.
struct LookValues {
  std::string_view flag;
  std::array<std::string_view, 7> values;
};

constexpr auto lookValues = std::to_array<LookValues>({
    {SAVArriLookColorSpacePrimaryFlag.rawValue(),
     {SAVArriLookColorSpaceRec709, SAVArriLookColorSpaceRec2020, SAVArriLookColorSpaceP3, SAVArriLookColorSpaceAP0,
      SAVArriLookColorSpaceAWG3, SAVArriLookColorSpaceAWG4}},
    {SAVArriLookColorSpaceWhitePointFlag.rawValue(),
     {SAVArriWhitePointD60, SAVArriWhitePointDCI, SAVArriWhitePointD65}},
    {SAVArriLookColorSpaceCurveFlag.rawValue(),
     {SAVArriCurveBT1886, SAVArriCurveDCI, SAVArriCurvePQ, SAVArriCurveHLG, SAVArriCurveLogC3, SAVArriCurveLogC4,
      SAVArriCurveLinear}},
    {SAVArriLookInvalidLookResolutionFlag.rawValue(), {SAVArriLookResolutionIgnore, SAVArriLookResolutionFirst}},
});

void checkLook(PlanContext& context, const LookValues& look) {
  const ExplainedSetting* const setting = context.use(look.flag);
  if (setting == nullptr || setting->value.empty()) return;
  const auto values =
      std::span(look.values).first(static_cast<std::size_t>(std::ranges::find(look.values, "") - look.values.begin()));
  if (!isIn(values, setting->value)) {
    context.fail(TranscodePlanErrorCode::unreadableValue, look.flag, {}, "expected one of " + joined(values, ", "));
  } else {
    context.fail(TranscodePlanErrorCode::lookNotSupported, look.flag);
  }
}

/// Whether another step reads the text of a flag although its property does not.
bool isReadElsewhere(const ExplainedSetting& setting) {
  if (setting.flag == SAVAudioFormatFlag.rawValue()) return true;
  return setting.flag == SAVVideoColorSpaceFlag.rawValue() && setting.value == lowercased(SAVSrgbColorSpace.rawValue());
}

/// Whether lower-casing the value of a flag changes what it means.
bool isCaseKept(std::string_view flag) {
  return flag == SAVWatermarkTextBurnTextFlag.rawValue() || flag == SAVWatermarkFileBurnFilePathFlag.rawValue() ||
         flag == SAVProgressOutputPrefixFlag.rawValue();
}

/// Returns the value of a setting, or for a watermark the path of the image that was found.
const std::string& usedValue(const PlanContext& context, const ExplainedSetting& setting) {
  const auto& watermark = context.surroundings.watermark;
  const bool isFound =
      setting.flag == SAVWatermarkFileBurnFilePathFlag.rawValue() && watermark && watermark->has_value();
  return isFound ? watermark->value().path : setting.value;
}

void checkSetting(PlanContext& context, const ExplainedSetting& setting, const TranscodeWarning& warning) {
  using enum TranscodeWarningCode;
  switch (warning.code) {
    case invalidValue:
    case needsCapitals:
      if (isReadElsewhere(setting)) break;
      context.fail(TranscodePlanErrorCode::unreadableValue, setting.flag,
                   warning.code == needsCapitals ? "no argument vector can carry it" : "",
                   std::string(warning.remedy()));
      break;
    case lacksValue:
      context.fail(TranscodePlanErrorCode::lacksValue, setting.flag, {}, std::string(warning.remedy()));
      break;
    case inputWithoutNumbers:
    case omissionWithoutNumber:
      context.fail(TranscodePlanErrorCode::unnumberedFlag, setting.flag, {}, std::string(warning.remedy()));
      break;
    case acceptedByContainment:
      context.use(setting);
      context.warn(TranscodePlanWarningCode::acceptedByContainment, setting.flag, warning.detail, warning.advice);
      break;
    case holdsValueButTakesNone:
      context.warn(TranscodePlanWarningCode::valueAfterSwitch, setting.flag, inQuotes(setting.writtenValue));
      break;
    case lowerCased:
      if (const std::string& used = usedValue(context, setting);
          isCaseKept(setting.flag) && used != setting.writtenValue) {
        context.warn(TranscodePlanWarningCode::lowerCased, setting.flag,
                     inQuotes(setting.writtenValue) + " is used as " + inQuotes(used));
      }
      break;
    case repeated:
      if (auto dropped = setting.earlierValues; std::erase(dropped, setting.value) < setting.earlierValues.size()) {
        context.warn(TranscodePlanWarningCode::repeated, setting.flag, "instead of " + inQuotes(dropped));
      }
      break;
    case overridesPreset:
    case unusedTimecodeSource:
    case strayWord:
    case readsBackDifferently:
      break;
  }
}

}  // namespace

void planWords(PlanContext& context) {
  for (const RejectedEntry& entry : context.words.rejectedEntries) {
    if (entry.isListing() || equalsIgnoringCase(entry.flag, TranscodeCliArguments::runInTranscodeModeFlag)) continue;
    if (entry.error.code == TranscodeErrorCode::unknownPreset) {
      std::vector<std::string_view> presets;
      std::ranges::transform(allCases<TranscodeCliPreset>(), std::back_inserter(presets), preset);
      context.fail(TranscodePlanErrorCode::unreadableValue, entry.writtenFlag,
                   inQuotes(entry.value) + " is not a preset",
                   entry.suggestion ? entry.error.advice : "use " + joined(presets, " or "));
    } else {
      context.fail(TranscodePlanErrorCode::unknownFlag, entry.flag, {}, entry.error.advice);
    }
  }
  for (const ExplainedSetting& setting : context.words.settings) {
    for (const TranscodeWarning& warning : setting.warnings) checkSetting(context, setting, warning);
    const FlagDescription* const known = findFlag(setting.flag);
    if (known != nullptr && known->group == FlagGroup::command) context.use(setting);
  }
  for (const LookValues& look : lookValues) checkLook(context, look);
  for (const DroppedWord& dropped : context.words.droppedWords) {
    context.warn(TranscodePlanWarningCode::strayWord, dropped.word);
  }
}

}  // namespace meridian::inline v0_2
