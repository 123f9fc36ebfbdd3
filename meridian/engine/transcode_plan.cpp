#include "meridian/engine/transcode_plan.h"

#include "meridian/cli/argument_words.h"
#include "meridian/engine/plan_context.h"

namespace meridian::inline v0_2 {
namespace {

/// Reports an output without video and audio.
void checkAnythingLeft(PlanContext& context) {
  const std::string_view noVideo = SAVNoVideoFlag.rawValue();
  const std::string_view noAudio = SAVNoAudioFlag.rawValue();
  if (context.isSet(noVideo) && context.isSet(noAudio)) {
    context.fail(TranscodePlanErrorCode::nothingLeft, noVideo, "together with -an");
    return;
  }
  if (context.plan.video || !context.plan.audio.empty() || !context.errors.empty()) return;
  const std::string_view flag = context.isSet(noAudio)   ? noAudio
                                : context.isSet(noVideo) ? noVideo
                                                         : SAVOutputFileFlag.rawValue();
  context.fail(TranscodePlanErrorCode::nothingLeft, flag, "of what the source has");
}

}  // namespace

Expected<TranscodePlan, std::vector<TranscodePlanError>> planTranscode(
    const TranscodeExplanation& words, std::span<const Expected<MediaDescription, MediaError>> media,
    const EncoderInventory& inventory, const TranscodeSurroundings& surroundings) {
  PlanContext context(words, inventory, surroundings);
  planWords(context);
  planSources(context, media);
  planOutput(context);
  planVideo(context);
  planAudio(context);
  planTimecode(context);
  planContainerOptions(context);
  checkAnythingLeft(context);
  context.warnOfUnused();
  if (!context.errors.empty()) return Unexpected(std::move(context.errors));
  return std::move(context.plan);
}

Expected<TranscodePlan, std::vector<TranscodePlanError>> planTranscode(
    const TranscodeCliArguments& arguments, std::span<const Expected<MediaDescription, MediaError>> media,
    const EncoderInventory& inventory, const TranscodeSurroundings& surroundings) {
  std::vector<std::string> words = arguments.commandLine();
  // What was rejected is not rendered, and is not forgotten.
  arguments.enumerateUnknownFlags([&words](std::string_view flag, std::string_view value) {
    words.emplace_back(flag);
    words.emplace_back(value);
  });
  return planTranscode(explain(words), media, inventory, surroundings);
}

}  // namespace meridian::inline v0_2
