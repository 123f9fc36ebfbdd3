#include "meridian/engine/transcode_plan.h"

#include <algorithm>

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
  const auto fail = [&context](std::string_view flag, std::string_view detail) {
    context.fail(TranscodePlanErrorCode::nothingLeft, flag, detail);
  };
  const auto& settings = context.words.settings;
  const auto omission =
      std::ranges::find_if(settings, TranscodeCliArguments::isIgnoredTrackFlag, &ExplainedSetting::flag);
  const bool hasAudio = std::ranges::any_of(context.groups, [](const SourceGroup& group) {
    const SourcePart* const part = group.firstDescribed();
    return part != nullptr && !part->media->audio.empty();
  });
  if (hasAudio && omission != settings.end() && !context.isSet(noAudio)) {
    fail(omission->flag, "there is no other audio");
  } else if (context.isSet(noAudio)) {
    fail(noAudio, "the source has no video");
  } else if (context.isSet(noVideo)) {
    fail(noVideo, "the source has no audio");
  } else {
    fail(SAVOutputFileFlag.rawValue(), "the source has neither that the output can hold");
  }
}

using InputFiles = std::vector<std::string>;

/// Returns why the rendered vector has other input files than the store.
std::vector<TranscodePlanError> unreadInputs(const TranscodeCliArguments& arguments) {
  std::vector<TranscodePlanError> errors;
  const auto add = [&errors](std::string_view flag, std::string detail, std::string advice) {
    errors.push_back(
        {{TranscodePlanErrorCode::unreadableValue, std::string(flag), std::move(detail)}, std::move(advice)});
  };
  for (const TranscodeWarning& warning : readingBackWarnings(arguments)) {
    if (!TranscodeCliArguments::isInputFileFlag(warning.place)) continue;
    add(warning.place, "the vector gives " + warning.detail,
        "give a path that does not begin with \"-\", such as ./-a.mov");
  }
  if (errors.empty()) {
    add(SAVInputPrefixFlag.rawValue(), "the vector has other input files than the store",
        "store input files with lower-case flags, such as -in_0_0");
  }
  return errors;
}

}  // namespace

Expected<TranscodePlan, std::vector<TranscodePlanError>> planTranscode(
    const TranscodeExplanation& words, std::span<const Expected<MediaDescription, MediaError>> media,
    const EncoderInventory& inventory, const TranscodeSurroundings& surroundings) {
  PlanContext context(words, inventory, surroundings);
  planWords(context);
  planOutput(context);
  planSources(context, media);
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
  const TranscodeExplanation explanation = explain(wordsWithRejected(arguments));
  if (explanation.arguments.inputFiles().value_or(InputFiles()) != arguments.inputFiles().value_or(InputFiles())) {
    return Unexpected(unreadInputs(arguments));
  }
  return planTranscode(explanation, media, inventory, surroundings);
}

}  // namespace meridian::inline v0_2
