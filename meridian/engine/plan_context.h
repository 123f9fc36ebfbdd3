/// \file
/// What every step of planning a transcode shares: the settings, the sources, and the errors and warnings found so far.
///
///     if (const auto depth = context.value<std::int64_t>(SAVVideoBitDepthFlag)) { ... }  // marks "-vbd" as used
///     context.fail(TranscodePlanErrorCode::bitDepthNotAvailable, "-vbd", "prores4444 has 10");
///
/// A setting that no step asks for has no effect, and is warned about at the end.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "meridian/cli/transcode_explanation.h"
#include "meridian/engine/channel_layouts.h"
#include "meridian/engine/encoder_inventory.h"
#include "meridian/engine/media_description.h"
#include "meridian/engine/output_container.h"
#include "meridian/engine/transcode_error.h"
#include "meridian/engine/transcode_plan.h"

namespace meridian::inline v0_2 {

/// One input file.
struct SourcePart {
  std::string_view flag;
  std::string_view path;
  /// Null if the file cannot be described.
  const MediaDescription* media = nullptr;
};

/// The input files of one group.
struct SourceGroup {
  std::int64_t number = 0;
  std::vector<SourcePart> parts;
  bool isImageSequence = false;

  /// Returns the first part that is described; null if there is none.
  [[nodiscard]] const SourcePart* firstDescribed() const noexcept {
    for (const SourcePart& part : parts) {
      if (part.media != nullptr) return &part;
    }
    return nullptr;
  }
};

/// The video that is used.
struct UsedImage {
  const SourceGroup* group = nullptr;
  const SourcePart* part = nullptr;
  const VideoStreamDescription* stream = nullptr;
};

class PlanContext {
 public:
  PlanContext(const TranscodeExplanation& explained, const EncoderInventory& installed,
              const TranscodeSurroundings& found);

  const TranscodeExplanation& words;
  const TranscodeCliArguments& arguments;
  const EncoderInventory& inventory;
  const TranscodeSurroundings& surroundings;

  // Found by one step for those after it.
  std::vector<SourceGroup> groups;
  /// Absent if there is no video, or if it is left out.
  std::optional<UsedImage> image;
  /// Absent if it cannot be told.
  std::optional<OutputContainer> container;
  /// False if "-vn" or the container leaves the video out.
  bool keepsVideo = true;
  bool isAudioCopied = false;
  TranscodePlan plan;
  std::vector<TranscodePlanError> errors;

  /// Adds an error about a flag. Where the flag has a value, the detail begins with it, as written.
  void fail(TranscodePlanErrorCode code, std::string_view flag, std::string_view detail = {}, std::string advice = {});
  /// Adds an error about the frame rate of the output, which is that of "-vr" or of the source.
  void failRate(std::string_view detail, std::string advice = {});
  void warn(TranscodePlanWarningCode code, std::string_view flag, std::string_view detail = {},
            std::string advice = {});

  /// Returns the setting of a flag and marks it as used; null if it is not set.
  const ExplainedSetting* use(std::string_view flag);
  /// Marks a setting of `words` as used.
  void use(const ExplainedSetting& setting) { isUsed_[placeOf(setting)] = true; }
  /// Returns whether the flag is set, and marks it as used.
  bool has(std::string_view flag) { return use(flag) != nullptr; }
  /// Returns whether the flag is set, without marking it.
  [[nodiscard]] bool isSet(std::string_view flag) const { return find(flag) != nullptr; }
  /// Returns the typed value of a flag and marks it as used; absent if the flag is not set, if its value means "as the
  /// source", or if it cannot be read, which is reported elsewhere.
  template <typename Value>
  std::optional<Value> value(std::string_view flag) {
    const ExplainedSetting* const setting = use(flag);
    if (setting == nullptr || !setting->typed) return std::nullopt;
    const Value* const typed = std::get_if<Value>(&*setting->typed);
    return typed != nullptr ? std::optional(*typed) : std::nullopt;
  }
  /// Returns the same as one of a list of values.
  template <typename Enumerated>
  std::optional<Enumerated> oneOf(std::string_view flag) {
    const auto text = value<std::string>(flag);
    if (!text) return std::nullopt;
    if constexpr (TabledEnumeration<Enumerated>) {
      return fromRawValue<Enumerated>(*text);
    } else {
      return Enumerated::fromRawValue(*text);
    }
  }
  /// Returns the text of a flag, valid or not, without marking it; empty if it is not set.
  [[nodiscard]] std::string_view text(std::string_view flag) const;

  /// Returns the flag that chose the container.
  [[nodiscard]] std::string_view containerFlag() const;

  /// Says why a flag, if it is set, has no effect.
  void ignore(std::string_view flag, std::string_view reason);
  /// Warns about every setting that no step has used.
  void warnOfUnused();

 private:
  [[nodiscard]] const ExplainedSetting* find(std::string_view flag) const;
  [[nodiscard]] std::size_t placeOf(const ExplainedSetting& setting) const {
    return static_cast<std::size_t>(&setting - words.settings.data());
  }

  struct IgnoredFlag {
    std::string_view flag;
    std::string_view reason;
  };

  std::vector<bool> isUsed_;
  /// The settings sorted by their flags: a camera card has thousands of inputs.
  std::vector<const ExplainedSetting*> byFlag_;
  std::vector<IgnoredFlag> ignored_;
};

/// Returns a size as text: "1920 x 1080".
[[nodiscard]] inline std::string sizeText(const auto& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

/// Returns the names of channels: "L R C LFE Ls Rs".
[[nodiscard]] std::string namesOf(std::span<const ChannelLabel> labels);

/// Returns a rate as text: "25 fps", "29.970 fps (30000/1001)".
[[nodiscard]] std::string frameRateText(const VideoFrameRate& rate);

// The steps, in the order in which they run. Each adds its part to the plan, and its errors and warnings.

/// Reports what the words themselves get wrong.
void planWords(PlanContext& context);
/// Chooses the container and its file.
void planOutput(PlanContext& context);
/// Finds the sources, and the video that is used.
void planSources(PlanContext& context, std::span<const Expected<MediaDescription, MediaError>> media);
void planVideo(PlanContext& context);
void planAudio(PlanContext& context);
void planTimecode(PlanContext& context);
/// Chooses the container's options and the tags that go along, which depend on everything else.
void planContainerOptions(PlanContext& context);

}  // namespace meridian::inline v0_2
