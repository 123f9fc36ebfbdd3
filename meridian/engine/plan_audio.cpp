// The sound of a transcode: tracks copied or encoded, and their channels.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "meridian/base/joined.h"
#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/cli/transcode_properties.h"
#include "meridian/engine/audio_encoders.h"
#include "meridian/engine/plan_context.h"

namespace meridian::inline v0_2 {
namespace {

using enum TranscodePlanErrorCode;
using Labels = std::vector<ChannelLabel>;

constexpr std::string_view audioCodecFlag = SAVAudioFormatFlag.rawValue();
constexpr std::string_view audioDepthFlag = SAVAudioBitsPerChannelFlag.rawValue();
constexpr std::string_view sampleRateFlag = SAVAudioSampleRateFlag.rawValue();
constexpr std::string_view audioBitRateFlag = SAVAudioBitRateFlag.rawValue();
constexpr std::string_view audioQualityFlag = SAVAudioQualityFlag.rawValue();
constexpr std::string_view layoutFlag = SAVAudioChannelLayoutFlag.rawValue();
constexpr std::int64_t greatestChannelCount = 64;

struct SourceTrack {
  AudioOrigin origin;
  const AudioStreamDescription* stream = nullptr;
};

/// Returns the tracks of all groups but those that "-ac_omit_N" leaves out.
std::vector<SourceTrack> keptTracks(PlanContext& context) {
  std::vector<SourceTrack> tracks;
  for (const SourceGroup& group : context.groups) {
    const SourcePart* const part = group.firstDescribed();
    if (part == nullptr) continue;
    for (const AudioStreamDescription& stream : part->media->audio) {
      tracks.push_back({{group.number, stream.index, static_cast<int>(tracks.size())}, &stream});
    }
  }
  const std::size_t count = tracks.size();
  for (const ExplainedSetting& setting : context.words.settings) {
    if (!TranscodeCliArguments::isIgnoredTrackFlag(setting.flag)) continue;
    context.use(setting.flag);
    const auto number = setting.typed ? std::get_if<std::int64_t>(&*setting.typed) : nullptr;
    const auto omitted = std::erase_if(
        tracks, [number](const SourceTrack& track) { return number != nullptr && track.origin.track == *number; });
    const bool exists = number != nullptr && *number >= 0 && static_cast<std::size_t>(*number) < count;
    if (omitted == 0 && !exists) {
      context.warn(TranscodePlanWarningCode::noSuchTrack, setting.flag, "there are " + std::to_string(count));
    }
  }
  return tracks;
}

/// Returns the flag that chose the container.
std::string_view containerFlag(const PlanContext& context) {
  const std::string_view format = SAVFileFormatFlag.rawValue();
  return context.isSet(format) ? format : SAVOutputFileFlag.rawValue();
}

Labels labelsOf(const AudioStreamDescription& stream) {
  Labels labels;
  for (const AudioChannelDescription& channel : stream.channels) {
    const auto label = channel.label ? fromRawValue<ChannelLabel>(*channel.label) : std::nullopt;
    if (!label) return {};
    labels.push_back(*label);
  }
  return labels;
}

std::optional<std::uint32_t> tagOf(const Labels& labels) {
  for (const ChannelLayoutTagRow& row : channelLayoutTagRows) {
    if (std::ranges::equal(row.channels, labels)) return row.tag();
  }
  return std::nullopt;
}

/// Copies a track, or stores linear PCM anew whose order of bytes the container does not have.
void planCopiedTrack(PlanContext& context, const SourceTrack& track) {
  const AudioStreamDescription& stream = *track.stream;
  PlannedAudioTrack& planned = context.plan.audio.emplace_back();
  planned.origins.push_back(track.origin);
  planned.sampleRate = stream.sampleRate;
  planned.bits = stream.bitsPerChannel;
  planned.channelCount = stream.channelCount;
  planned.channels = labelsOf(stream);
  planned.layoutTag = stream.channelLayoutTag;
  planned.bitRate = stream.bitRate;
  planned.language = stream.language;
  planned.copiedCodec = stream.codecName;
  if (!context.container) return;
  const bool fitsRate = *context.container != OutputContainer::mxf || stream.sampleRate == 48000;
  if (holdsCodec(*context.container, stream.codecName) && fitsRate) return;
  const auto repacked = std::ranges::find(repackedPcmRows, stream.codecName, &RepackedPcmRow::codec);
  const bool canRepack = repacked != repackedPcmRows.end() && fitsRate;
  if (canRepack && holdsCodec(*context.container, repacked->encoder)) {
    planned.copiedCodec.clear();
    planned.encoder = repacked->encoder;
    planned.sampleFormat = stream.sampleFormat;
    context.warn(TranscodePlanWarningCode::repacked, containerFlag(context),
                 stream.codecName + " of track " + std::to_string(track.origin.track) + " becomes " + planned.encoder);
    return;
  }
  const std::string codec = stream.codecName.empty() ? "the codec" : printable(stream.codecName);
  context.fail(notInContainer, containerFlag(context),
               "because " + std::string(description(*context.container)) + " cannot hold the copied " + codec +
                   (fitsRate ? "" : " at " + std::to_string(stream.sampleRate) + " samples a second") + " of track " +
                   std::to_string(track.origin.track),
               fitsRate ? "set -acodec, leave the track out, or choose another container"
                        : "set -acodec lpcm -asr 48000, or choose another container");
}

/// The layout that the flags ask for.
struct AskedLayout {
  /// Empty if only the number of channels is asked for.
  Labels labels;
  std::optional<std::int64_t> count;
  std::optional<std::uint32_t> tag;
  /// Channels without places are asked for.
  bool isDiscrete = false;
  /// The flag that asks; empty if none does.
  std::string_view flag;
};

std::optional<AskedLayout> layoutOfValue(PlanContext& context) {
  AskedLayout asked;
  asked.flag = layoutFlag;
  if (const auto layout = context.oneOf<SAVTranscodeArgumentAudioChannelLayoutValue>(layoutFlag)) {
    const ChannelList channels = *channelsOfLayout(*layout);
    asked.labels.assign(channels.begin(), channels.end());
    asked.count = static_cast<std::int64_t>(channels.count);
    return asked;
  }
  asked.count = context.value<std::int64_t>(layoutFlag);
  if (!asked.count) return std::nullopt;
  if (*asked.count >= 1 && *asked.count <= greatestChannelCount) return asked;
  context.fail(channelsOutOfRange, layoutFlag, {}, "use 1 to 64 channels");
  return std::nullopt;
}

std::optional<AskedLayout> layoutOfTag(PlanContext& context) {
  const std::string_view flag = SAVAudioChannelLayoutTagFlag.rawValue();
  const auto number = context.value<std::int64_t>(flag);
  if (!number) return std::nullopt;
  AskedLayout asked;
  asked.flag = flag;
  // Core Audio's tags that refer to labels or a bitmap, which have flags of their own.
  const bool refersToLabels = *number == 0 && context.isSet(SAVAudioChannelLayoutDescriptionsFlag.rawValue());
  const bool refersToBitmap = *number == 1 << 16 && context.isSet(SAVAudioChannelLayoutBitmapFlag.rawValue());
  if (refersToLabels || refersToBitmap) return std::nullopt;
  if (*number >= 0 && *number <= std::numeric_limits<std::uint32_t>::max()) {
    const auto tag = static_cast<std::uint32_t>(*number);
    const std::int64_t count = tag & 0xffffU;
    asked.tag = tag;
    asked.count = count;
    if (const auto channels = channelsOfLayoutTag(tag)) {
      asked.labels.assign(channels->begin(), channels->end());
      return asked;
    }
    asked.isDiscrete = true;
    if (tag >> 16U == discreteLayoutTagNumber && count >= 1 && count <= greatestChannelCount) return asked;
  }
  context.fail(unknownLayout, flag);
  return std::nullopt;
}

std::optional<AskedLayout> layoutOfLabels(PlanContext& context) {
  const std::string_view flag = SAVAudioChannelLayoutDescriptionsFlag.rawValue();
  if (!context.has(flag)) return std::nullopt;
  AskedLayout asked;
  asked.flag = flag;
  bool isKnown = true;
  CliArgumentStore::enumerateListValues(context.text(flag), [&](std::string_view piece) {
    if (piece.empty()) return;
    const auto number = integerFromText(piece);
    const bool isInRange = number && *number >= 0 && *number <= std::numeric_limits<int>::max();
    const auto label = isInRange ? fromRawValue<ChannelLabel>(static_cast<int>(*number)) : std::nullopt;
    if (label) {
      asked.labels.push_back(*label);
    } else if (isKnown) {
      context.fail(unknownLayout, flag, inQuotes(piece) + " is not a channel label",
                   "use Core Audio's numbers, such as 1 for left, 2 for right and 3 for centre");
      isKnown = false;
    }
  });
  if (!isKnown || asked.labels.empty()) return std::nullopt;
  asked.count = static_cast<std::int64_t>(asked.labels.size());
  if (*asked.count <= greatestChannelCount) return asked;
  context.fail(channelsOutOfRange, flag, {}, "use 1 to 64 channels");
  return std::nullopt;
}

std::optional<AskedLayout> layoutOfBitmap(PlanContext& context) {
  const std::string_view flag = SAVAudioChannelLayoutBitmapFlag.rawValue();
  const auto bitmap = context.value<std::int64_t>(flag);
  if (!bitmap) return std::nullopt;
  const auto channels = *bitmap > 0 ? channelsOfBitmap(static_cast<std::uint64_t>(*bitmap)) : std::nullopt;
  if (!channels) {
    context.fail(unknownLayout, flag, {},
                 "use the sum of 1 for left, 2 for right, 4 for centre and so on up to bit 17");
    return std::nullopt;
  }
  AskedLayout asked;
  asked.labels.assign(channels->begin(), channels->end());
  asked.count = static_cast<std::int64_t>(channels->count);
  asked.flag = flag;
  return asked;
}

/// Returns whether two lists have the same channels, in whatever order.
bool areSameChannels(Labels left, Labels right) {
  std::ranges::sort(left);
  std::ranges::sort(right);
  return left == right;
}

/// Returns what all flags of the layout come to: the most exact of them, which the others must not contradict.
AskedLayout askedLayout(PlanContext& context) {
  AskedLayout asked;
  for (auto& each : {layoutOfLabels(context), layoutOfTag(context), layoutOfBitmap(context), layoutOfValue(context)}) {
    if (!each) continue;
    if (asked.flag.empty()) {
      asked = *each;
      continue;
    }
    const bool isSame = asked.count == each->count &&
                        (asked.labels.empty() || each->labels.empty() || areSameChannels(asked.labels, each->labels));
    if (!isSame) context.fail(contradictoryLayout, each->flag, std::string(asked.flag));
    if (!asked.tag) asked.tag = each->tag;
  }
  if (!context.has(SAVDiscreteAudioFlag.rawValue())) return asked;
  if (!asked.labels.empty()) {
    context.fail(contradictoryLayout, asked.flag, "-adiscrete keeps the channels without places");
    asked.labels.clear();
  }
  asked.isDiscrete = true;
  return asked;
}

/// Returns the channels for which surround at the sides and at the back are the same.
Labels withoutSides(Labels labels) {
  std::ranges::replace(labels, ChannelLabel::leftSurroundDirect, ChannelLabel::leftSurround);
  std::ranges::replace(labels, ChannelLabel::rightSurroundDirect, ChannelLabel::rightSurround);
  return labels;
}

/// Returns whether Apple Lossless has a layout of these channels.
bool isLosslessLayout(const Labels& labels) {
  // Mono, stereo, 3.0, 4.0, 5.0, 5.1, 6.1 and 7.1 with channels between left, centre and right.
  constexpr std::array<std::uint32_t, 8> numbers{100, 101, 113, 115, 117, 121, 125, 126};
  return std::ranges::any_of(channelLayoutTagRows, [&](const ChannelLayoutTagRow& row) {
    return std::ranges::find(numbers, row.number) != numbers.end() &&
           areSameChannels(Labels(row.channels.begin(), row.channels.end()), withoutSides(labels));
  });
}

void setChannels(PlanContext& context, PlannedAudioTrack& planned, const AskedLayout& asked, const Labels& source,
                 std::int64_t sourceCount, const AudioEncoderRow* encoder) {
  const std::string_view flag = asked.flag.empty() ? audioCodecFlag : asked.flag;
  planned.channelCount = asked.count.value_or(sourceCount);
  if (asked.isDiscrete && planned.channelCount < sourceCount) {
    context.fail(channelsOutOfRange, flag, "there are " + std::to_string(sourceCount) + " discrete channels");
  }
  if (!asked.isDiscrete) {
    planned.channels = asked.flag.empty() ? source : asked.labels;
    const bool needsPlaces = asked.count.has_value() || encoder != nullptr;
    if (planned.channels.empty() && needsPlaces) {
      if (const auto usual = usualChannels(planned.channelCount)) {
        planned.channels.assign(usual->begin(), usual->end());
      }
    }
  }
  planned.layoutTag = asked.tag ? asked.tag : tagOf(planned.channels);
  if (planned.channels.empty() && !planned.layoutTag && planned.channelCount <= 0xffff) {
    planned.layoutTag = discreteLayoutTagNumber << 16U | static_cast<std::uint32_t>(planned.channelCount);
  }
  if (planned.channelCount < 1 || planned.channelCount > greatestChannelCount) {
    context.fail(channelsOutOfRange, flag, "there are " + std::to_string(planned.channelCount), "use 1 to 64 channels");
  } else if (encoder != nullptr && planned.channelCount > encoder->greatestChannelCount) {
    context.fail(channelsOutOfRange, flag,
                 "there are " + std::to_string(planned.channelCount) + ", and " + encoder->format.string() +
                     " has at most " + std::to_string(encoder->greatestChannelCount));
  } else if (encoder != nullptr && planned.channels.empty() && planned.channelCount > 2 &&
             (asked.isDiscrete || planned.channelCount <= 8)) {
    context.fail(layoutNotAvailable, flag, encoder->format.string() + " has no discrete channels");
  } else if (encoder != nullptr && encoder->format == SAVAppleLosslessAudioFormatValue && !planned.channels.empty() &&
             !isLosslessLayout(planned.channels)) {
    std::vector<std::string_view> names;
    for (const ChannelLabel label : planned.channels) names.push_back(description(label));
    context.fail(layoutNotAvailable, flag, "apple_lossless has no " + joined(names, " "));
  }
}

void setSampleRate(PlanContext& context, PlannedAudioTrack& planned, int sourceRate, const AudioEncoderRow* encoder) {
  const auto asked = context.value<std::int64_t>(sampleRateFlag);
  planned.sampleRate = asked.value_or(sourceRate);
  const std::string_view flag = asked ? sampleRateFlag : audioCodecFlag;
  const std::string detail = asked ? "" : "the source has " + std::to_string(sourceRate);
  const bool isMxf = context.container == OutputContainer::mxf;
  if (planned.sampleRate < 4000 || planned.sampleRate > 768000) {
    context.fail(sampleRateNotAvailable, flag, detail, "use 4000 to 768000 samples a second");
  } else if (isMxf && planned.sampleRate != 48000) {
    context.fail(sampleRateNotAvailable, flag, detail, "MXF holds 48000 samples a second; set -asr 48000");
  } else if (encoder != nullptr && !encoder->sampleRates.empty() &&
             !isIn(encoder->sampleRates, static_cast<int>(planned.sampleRate))) {
    std::vector<std::string> rates;
    for (const int rate : encoder->sampleRates) rates.push_back(std::to_string(rate));
    context.fail(sampleRateNotAvailable, flag, detail,
                 "the rates of " + encoder->format.string() + " are " + joined(rates, ", "));
  }
}

/// Returns the depths of linear PCM in a container, as text.
std::string lpcmDepths(std::optional<OutputContainer> container) {
  std::vector<std::string> texts;
  for (const LpcmEncoderRow& row : lpcmEncoderRows) {
    if (!row.isFloat && (!container || isIn(row.containers, *container))) texts.push_back(std::to_string(row.bits));
  }
  return joined(texts, ", ");
}

void setLpcm(PlanContext& context, PlannedAudioTrack& planned, const AudioStreamDescription& source) {
  const auto fits = [&context](const LpcmEncoderRow& row) {
    return !context.container || isIn(row.containers, *context.container);
  };
  const bool isKnownContainer = !context.container || std::ranges::any_of(lpcmEncoderRows, fits);
  if (!isKnownContainer) {
    context.fail(notInContainer, audioCodecFlag, "in " + std::string(description(*context.container)));
  }
  const auto asked = context.value<std::int64_t>(audioDepthFlag);
  const LpcmEncoderRow* row = nullptr;
  if (asked) {
    row = lpcmEncoderOf(*asked, false);
    if (row == nullptr || (isKnownContainer && !fits(*row))) {
      context.fail(sampleDepthNotAvailable, audioDepthFlag, {}, "use " + lpcmDepths(context.container) + " bits");
    }
  } else if (source.codecName.starts_with("pcm_f") && fits(*lpcmEncoderOf(32, true))) {
    row = lpcmEncoderOf(32, true);
  } else {
    // The least depth that keeps the source's samples, or the greatest that there is; 16 at least.
    for (const LpcmEncoderRow& each : lpcmEncoderRows) {
      if (each.isFloat || each.bits < 16 || (isKnownContainer && !fits(each))) continue;
      if (row == nullptr || row->bits < source.bitsPerChannel.value_or(16)) row = &each;
    }
  }
  if (row == nullptr) return;
  planned.encoder = row->encoder;
  planned.sampleFormat = row->sampleFormat;
  planned.bits = row->bits;
}

void setCompressed(PlanContext& context, PlannedAudioTrack& planned, const AudioStreamDescription& source,
                   const AudioEncoderRow& encoder) {
  if (context.container && !isIn(encoder.containers, *context.container)) {
    context.fail(notInContainer, audioCodecFlag, "in " + std::string(description(*context.container)));
  }
  if (context.inventory.encoder(encoder.encoder) == nullptr) {
    context.fail(encoderMissing, audioCodecFlag, std::string(encoder.encoder));
  }
  planned.encoder = encoder.encoder;
  if (encoder.depths.empty()) {
    planned.sampleFormat = "fltp";
    context.ignore(audioDepthFlag, "AAC does not keep samples");
    return;
  }
  const auto asked = context.value<std::int64_t>(audioDepthFlag);
  planned.bits = asked.value_or(source.bitsPerChannel.value_or(16) <= 16 ? 16 : 24);
  planned.sampleFormat = planned.bits == 16 ? "s16p" : "s32p";
  if (*planned.bits == 16 || *planned.bits == 24) return;
  context.fail(sampleDepthNotAvailable, audioDepthFlag, {}, encoder.format.string() + " has 16 and 24 bits");
}

void setBitRate(PlanContext& context, PlannedAudioTrack& planned, const AudioEncoderRow* encoder) {
  if (encoder == nullptr || !encoder->hasBitRate) {
    context.ignore(audioBitRateFlag, "the samples decide the bit rate of the codec");
    context.ignore(audioQualityFlag, "the codec loses nothing");
    return;
  }
  const std::int64_t greatest = greatestAacBitRate(planned.sampleRate, planned.channelCount);
  if (const auto asked = context.value<std::int64_t>(audioBitRateFlag)) {
    context.ignore(audioQualityFlag, "-abr sets the bit rate");
    if (*asked < 8000) {
      context.fail(bitRateOutOfRange, audioBitRateFlag, {},
                   *asked > 0 ? "the unit is bits a second: did you mean " + std::to_string(*asked * 1000) + "?"
                              : "use 8000 bits a second or more");
    } else if (*asked > greatest) {
      context.fail(bitRateOutOfRange, audioBitRateFlag,
                   "for " + std::to_string(planned.channelCount) + " channels of " +
                       std::to_string(planned.sampleRate) + " samples a second",
                   "use at most " + std::to_string(greatest));
    }
    planned.bitRate = *asked;
    return;
  }
  const auto quality = context.oneOf<TranscodeAudioQuality>(audioQualityFlag).value_or(TranscodeAudioQuality::medium);
  planned.bitRate = std::min(aacBitRatePerChannel(quality) * planned.channelCount, greatest);
}

void planEncodedTracks(PlanContext& context, const std::vector<SourceTrack>& tracks) {
  const auto format = context.oneOf<SAVTranscodeArgumentAudioFormatValue>(audioCodecFlag);
  const AudioEncoderRow* const encoder = audioEncoderOf(*format);
  const AskedLayout layout = askedLayout(context);
  const bool joins = context.isSet(SAVDiscreteAudioFlag.rawValue());
  // What is wrong with one track is mostly wrong with every one.
  const auto report = [&context](std::size_t from) {
    std::vector<TranscodePlanError> distinct(context.errors.begin(),
                                             context.errors.begin() + static_cast<std::ptrdiff_t>(from));
    for (std::size_t place = from; place < context.errors.size(); ++place) {
      if (std::ranges::find(distinct, context.errors[place]) == distinct.end()) {
        distinct.push_back(context.errors[place]);
      }
    }
    context.errors = std::move(distinct);
  };
  const std::size_t before = context.errors.size();
  const auto planTrack = [&](std::span<const SourceTrack> origins) {
    PlannedAudioTrack& planned = context.plan.audio.emplace_back();
    std::int64_t channelCount = 0;
    for (const SourceTrack& origin : origins) {
      planned.origins.push_back(origin.origin);
      channelCount += origin.stream->channelCount;
    }
    const AudioStreamDescription& first = *origins.front().stream;
    planned.language = first.language;
    setChannels(context, planned, layout, labelsOf(first), channelCount, encoder);
    setSampleRate(context, planned, first.sampleRate, encoder);
    if (encoder != nullptr) {
      setCompressed(context, planned, first, *encoder);
    } else {
      setLpcm(context, planned, first);
    }
    setBitRate(context, planned, encoder);
  };
  if (joins) {
    planTrack(tracks);
  } else {
    for (const SourceTrack& track : tracks) planTrack({&track, 1});
  }
  report(before);
}

}  // namespace

void planAudio(PlanContext& context) {
  if (context.has(SAVNoAudioFlag.rawValue())) return;
  const std::vector<SourceTrack> tracks = keptTracks(context);
  if (tracks.empty()) return;
  const std::string_view copyFlag = SAVCopyAudioFlag.rawValue();
  const bool isCopied = context.arguments.copyAudio();
  const int most = context.container ? tableRow(*context.container).audioTracks : greatestChannelCount;
  if (most == 0) {
    context.fail(notInContainer, containerFlag(context),
                 "because " + std::string(description(*context.container)) + " holds no audio", "add -an");
    for (const std::string_view flag : {copyFlag, audioCodecFlag}) context.use(flag);
    return;
  }
  if (isCopied) {
    const std::string_view codec = context.text(audioCodecFlag);
    if (context.has(copyFlag)) {
      context.ignore(audioCodecFlag, "-acopy copies the audio");
      if (isCopyOfSource(audioCodecFlag, codec)) context.use(audioCodecFlag);
    } else if (context.has(audioCodecFlag) && !isCopyOfSource(audioCodecFlag, codec) && !codec.empty()) {
      context.warn(TranscodePlanWarningCode::copiedInstead, audioCodecFlag, inQuotes(codec));
    }
    for (const SourceTrack& track : tracks) planCopiedTrack(context, track);
  } else {
    planEncodedTracks(context, tracks);
  }
  if (context.plan.audio.size() > static_cast<std::size_t>(most)) {
    context.fail(
        tooManyTracks, containerFlag(context),
        std::to_string(context.plan.audio.size()) + " tracks in " + std::string(description(*context.container)));
  }
}

}  // namespace meridian::inline v0_2
