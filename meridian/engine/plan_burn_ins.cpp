// What is burnt into the image: timecode, a text, and a watermark image.
#include <cmath>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/engine/plan_video.h"

namespace meridian::inline v0_2 {
namespace {

using enum TranscodePlanErrorCode;
using Anchor = SAVTranscodeArgumentOverlayAnchorValue;

/// The flags of a burnt-in text.
struct TextFlags {
  std::string_view burn;
  std::string_view anchor;
  std::string_view size;
  std::string_view fontColor;
  std::string_view boxColor;
  Anchor usualAnchor;
};

constexpr TextFlags timecodeFlags{SAVTimecodeAddBurnFlag.rawValue(),  SAVTimecodeBurnAnchorFlag.rawValue(),
                                  SAVTimecodeBurnFontSize.rawValue(), SAVTimecodeBurnFontRGB.rawValue(),
                                  SAVTimecodeBurnBoxRGB.rawValue(),   SAVAnchorBottomCenter};
constexpr TextFlags textFlags{SAVWatermarkTextAddBurnFlag.rawValue(),      SAVWatermarkTextBurnAnchorFlag.rawValue(),
                              SAVWatermarkTextBurnFontSizeFlag.rawValue(), SAVWatermarkTextBurnFontRGBFlag.rawValue(),
                              SAVWatermarkTextBurnBoxRGBFlag.rawValue(),   SAVAnchorTopCenter};

/// Returns the distance of a burn-in from the edges of the image, in pixels: a fortieth of the height.
int marginOf(const ImageForm& image) { return static_cast<int>(std::lround(image.height * 0.025)); }

TextStyle textStyle(PlanContext& context, const TextFlags& flags, const ImageForm& image) {
  TextStyle style;
  style.anchor = context.oneOf<Anchor>(flags.anchor).value_or(flags.usualAnchor);
  style.margin = marginOf(image);
  style.fontSize = image.height * 0.04;
  if (const auto points = context.value<std::int64_t>(flags.size)) {
    if (*points < 4 || *points > 400) context.fail(fontSizeOutOfRange, flags.size);
    constexpr double linesOfPoints = 1080;
    style.fontSize = static_cast<double>(*points) * image.height / linesOfPoints;
  }
  constexpr double leastReadable = 4;
  if (style.fontSize < leastReadable) {
    context.warn(TranscodePlanWarningCode::textTooSmall, flags.burn,
                 fixedDecimalText(style.fontSize, 1) + " pixels high");
  }
  style.fontColor = context.value<RgbColor>(flags.fontColor).value_or(style.fontColor);
  style.boxColor = context.value<RgbColor>(flags.boxColor).value_or(style.boxColor);
  if (!context.surroundings.hasFont) context.fail(noFont, flags.burn);
  if (!context.inventory.hasFilter("drawtext")) context.fail(filterMissing, flags.burn, "drawtext");
  return style;
}

void planWatermark(PlanContext& context, std::vector<PlannedStep>& steps, const ImageForm& image) {
  const std::string_view pathFlag = SAVWatermarkFileBurnFilePathFlag.rawValue();
  const std::string_view scaleFlag = SAVWatermarkFileBurnScaleFlag.rawValue();
  if (!context.has(pathFlag)) return;
  WatermarkStep step;
  step.margin = marginOf(image);
  step.path = context.text(pathFlag);
  step.anchor = context.oneOf<Anchor>(SAVWatermarkFileBurnAnchorFlag.rawValue()).value_or(SAVAnchorBottomRight);
  // The number as written, of which the float is a rounding.
  if (context.value<float>(scaleFlag)) step.scale = doubleFromText(context.text(scaleFlag)).value_or(1);
  if (!context.inventory.hasFilter("overlay")) context.fail(filterMissing, pathFlag, "overlay");
  const bool isScale = step.scale > 0 && std::isfinite(step.scale);
  if (!isScale) context.fail(scaleOutOfRange, scaleFlag);
  if (const auto& looked = context.surroundings.watermark) {
    if (!*looked) {
      context.fail(watermarkNotRead, pathFlag, "which " + printable(looked->error()));
    } else if (isScale) {
      const FoundWatermark& mark = looked->value();
      step.path = mark.path;
      const double width = mark.size.width * step.scale;
      const double height = mark.size.height * step.scale;
      if (width > image.width || height > image.height) {
        context.fail(watermarkTooLarge, context.isSet(scaleFlag) ? scaleFlag : pathFlag,
                     "the frame is " + sizeText(image));
      } else {
        step.size = {std::max(static_cast<int>(std::lround(width)), 1),
                     std::max(static_cast<int>(std::lround(height)), 1)};
        constexpr double leastVisible = 4;
        if (std::max(width, height) < leastVisible) {
          context.warn(TranscodePlanWarningCode::watermarkTooSmall, context.isSet(scaleFlag) ? scaleFlag : pathFlag,
                       sizeText(step.size));
        }
      }
    }
  }
  steps.push_back({std::move(step), image});
}

}  // namespace

void planBurnIns(PlanContext& context, std::vector<PlannedStep>& steps, const ImageForm& image) {
  if (context.has(timecodeFlags.burn)) {
    steps.push_back({TimecodeBurnStep{textStyle(context, timecodeFlags, image)}, image});
  }
  const std::string_view textFlag = SAVWatermarkTextBurnTextFlag.rawValue();
  if (context.has(textFlags.burn)) {
    const auto text = context.value<std::string>(textFlag);
    if (!text) context.fail(textMissing, textFlags.burn);
    steps.push_back({TextBurnStep{text.value_or(""), textStyle(context, textFlags, image)}, image});
  }
  planWatermark(context, steps, image);
}

}  // namespace meridian::inline v0_2
