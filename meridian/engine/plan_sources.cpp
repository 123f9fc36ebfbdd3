// The sources of a transcode: which files make up which clip, and which of them gives the image.
#include <algorithm>
#include <array>
#include <tuple>

#include "meridian/base/numbers.h"
#include "meridian/base/precondition.h"
#include "meridian/base/printable.h"
#include "meridian/engine/plan_context.h"
#include "meridian/media/file_extension.h"
#include "meridian/media/media_names.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2 {
namespace {

struct NumberedInput {
  std::int64_t group = 0;
  std::int64_t place = 0;
  /// The place in the store, which decides between two flags for one place.
  std::size_t order = 0;
  SourcePart part;
};

/// Returns the input files in the order of `inputFiles()`: by group, then by place, then as stored.
std::vector<NumberedInput> numberedInputs(PlanContext& context) {
  std::vector<NumberedInput> inputs;
  for (const ExplainedSetting& setting : context.words.settings) {
    if (!TranscodeCliArguments::isInputFileFlag(setting.flag)) continue;
    context.use(setting.flag);
    const std::string_view numbers = std::string_view(setting.flag).substr(SAVInputPrefixFlag.rawValue().size() + 1);
    const std::size_t separator = numbers.rfind('_');
    inputs.push_back({integerFromText(numbers.substr(0, separator)).value_or(0),
                      integerFromText(numbers.substr(separator + 1)).value_or(0),
                      inputs.size(),
                      {setting.flag, setting.value}});
  }
  std::ranges::sort(inputs, {},
                    [](const NumberedInput& each) { return std::tuple(each.group, each.place, each.order); });
  return inputs;
}

bool hasImageExtension(std::string_view path) {
  const auto extension = fileExtensionIgnoringCase(pathExtension(path));
  return extension && FileExtensionSet::imageFileExtensions().contains(*extension);
}

/// What a part must have in common with the part that it continues.
struct PartTrait {
  std::string_view name;
  std::string (*of)(const MediaDescription& media);
};

std::string videoTrait(const MediaDescription& media, auto text) {
  const VideoStreamDescription* const video = media.mainVideo();
  return video != nullptr ? text(*video) : std::string("none");
}

std::string audioTrait(const MediaDescription& media, auto text) {
  std::string texts;
  for (const AudioStreamDescription& track : media.audio) texts += (texts.empty() ? "" : ", ") + text(track);
  return texts.empty() ? "none" : texts;
}

constexpr auto partTraits = std::to_array<PartTrait>({
    {"size",
     [](const MediaDescription& media) {
       return videoTrait(media, [](const VideoStreamDescription& video) {
         return std::to_string(video.width) + " x " + std::to_string(video.height);
       });
     }},
    {"frame rate",
     [](const MediaDescription& media) {
       return videoTrait(media, [](const VideoStreamDescription& video) {
         return video.frameRate ? video.frameRate->formattedString() : std::string("unknown");
       });
     }},
    {"video codec",
     [](const MediaDescription& media) {
       return videoTrait(media, [](const VideoStreamDescription& video) {
         return video.codecName + (video.profile.empty() ? "" : " " + video.profile);
       });
     }},
    {"pixel format",
     [](const MediaDescription& media) {
       return videoTrait(media, [](const VideoStreamDescription& video) { return video.pixelFormat; });
     }},
    {"audio tracks", [](const MediaDescription& media) { return std::to_string(media.audio.size()); }},
    {"audio codec",
     [](const MediaDescription& media) {
       return audioTrait(media, [](const AudioStreamDescription& track) { return track.codecName; });
     }},
    {"sample rate",
     [](const MediaDescription& media) {
       return audioTrait(media, [](const AudioStreamDescription& track) { return std::to_string(track.sampleRate); });
     }},
    {"audio channels",
     [](const MediaDescription& media) {
       return audioTrait(media, [](const AudioStreamDescription& track) { return std::to_string(track.channelCount); });
     }},
});

/// Reports the first thing in which a part differs from the first of its group.
void checkParts(PlanContext& context, const SourceGroup& group) {
  const SourcePart* const first = group.firstDescribed();
  for (const SourcePart& part : group.parts) {
    if (part.media == nullptr || &part == first) continue;
    for (const PartTrait& trait : partTraits) {
      // The rate of single images is what "-vr" says.
      if (group.isImageSequence && trait.name == "frame rate") continue;
      const std::string expected = trait.of(*first->media);
      const std::string found = trait.of(*part.media);
      if (found == expected) continue;
      context.fail(TranscodePlanErrorCode::partsDiffer, part.flag,
                   std::string(trait.name) + " " + printable(found) + " where " + std::string(first->flag) + " has " +
                       printable(expected));
      break;
    }
  }
}

void describePart(PlanContext& context, SourcePart& part, const Expected<MediaDescription, MediaError>& media) {
  if (!media) {
    const MediaError& error = media.error();
    std::string detail = "which " + std::string(error.text());
    if (!error.detail.empty()) detail += ": " + printable(error.detail);
    if (error.systemError) detail += ": " + error.systemError.message();
    context.fail(TranscodePlanErrorCode::inputNotRead, part.flag, detail, std::string(error.remedy()));
    return;
  }
  part.media = &*media;
  for (const MediaWarning& warning : media->warnings) {
    std::string detail = inQuotes(part.path) + " " + std::string(warning.text());
    if (!warning.detail.empty()) detail += ": " + printable(warning.detail);
    context.warn(TranscodePlanWarningCode::noticedInSource, part.flag, detail, std::string(warning.remedy()));
  }
}

/// Finds the first group with an image; reports every further one.
void findImage(PlanContext& context) {
  for (const SourceGroup& group : context.groups) {
    const SourcePart* const part = group.firstDescribed();
    const VideoStreamDescription* const stream = part != nullptr ? part->media->mainVideo() : nullptr;
    if (stream == nullptr) continue;
    if (context.image) {
      context.fail(TranscodePlanErrorCode::secondPicture, part->flag,
                   "and " + std::string(context.image->part->flag) + " has one");
      continue;
    }
    context.image = {&group, part, stream};
    const auto streams = std::ranges::count(part->media->video, false, &VideoStreamDescription::isAttachedPicture);
    if (streams > 1) {
      context.warn(TranscodePlanWarningCode::partOfSourceLeftOut, part->flag,
                   inQuotes(part->path) + " has " + std::to_string(streams));
    }
  }
}

PlannedSource plannedSource(const SourceGroup& group, bool givesImage) {
  PlannedSource source{group.number, {}, givesImage, group.isImageSequence};
  for (const SourcePart& part : group.parts) {
    PlannedPart& planned = source.parts.emplace_back();
    planned.flag = part.flag;
    planned.path = part.path;
    if (part.media == nullptr) continue;
    planned.duration = part.media->duration;
    if (const VideoStreamDescription* const video = part.media->mainVideo()) planned.frameCount = video->frameCount;
  }
  return source;
}

}  // namespace

void planSources(PlanContext& context, std::span<const Expected<MediaDescription, MediaError>> media) {
  std::vector<NumberedInput> inputs = numberedInputs(context);
  if (inputs.size() != media.size()) preconditionFailed("planTranscode: each input file needs one description");
  for (std::size_t place = 0; place < inputs.size(); ++place) {
    describePart(context, inputs[place].part, media[place]);
    if (context.groups.empty() || context.groups.back().number != inputs[place].group) {
      context.groups.push_back({inputs[place].group, {}});
    }
    context.groups.back().parts.push_back(inputs[place].part);
  }
  if (inputs.empty()) context.fail(TranscodePlanErrorCode::noInput, SAVInputPrefixFlag.rawValue());
  for (SourceGroup& group : context.groups) {
    const SourcePart* const first = group.firstDescribed();
    group.isImageSequence =
        std::ranges::all_of(group.parts, [](const SourcePart& part) { return hasImageExtension(part.path); }) ||
        (first != nullptr && first->media->container == SLVMediaFileContainerImageSequence);
    if (first != nullptr) checkParts(context, group);
  }
  findImage(context);
  for (const SourceGroup& group : context.groups) {
    context.plan.sources.push_back(plannedSource(group, context.image && context.image->group == &group));
  }
}

}  // namespace meridian::inline v0_2
