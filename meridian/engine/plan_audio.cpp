// The sound of a transcode: tracks copied or encoded, and their channels.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <ranges>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/is_in.h"
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

struct SourceTrack {
  AudioOrigin origin;
  const SourcePart* part = nullptr;
  const AudioStreamDescription* stream = nullptr;
};

std::string limitsOfChannels() { return "use 1 to " + std::to_string(greatestChannels) + " channels"; }

/// Removes errors or warnings that repeat one before them: what is wrong with one track is mostly wrong with every one.
void makeDistinct(auto& messages, std::size_t from) {
  auto end = messages.begin() + static_cast<std::ptrdiff_t>(from);
  for (auto each = end; each != messages.end(); ++each) {
    if (std::find(messages.begin(), end, *each) != end) continue;
    if (each != end) *end = std::move(*each);
    ++end;
  }
  messages.erase(end, messages.end());
}

/// Returns the tracks of all groups but those that "-ac_omit_N" leaves out.
std::vector<SourceTrack> keptTracks(PlanContext& context) {
  std::vector<SourceTrack> tracks;
  for (const SourceGroup& group : context.groups) {
    const SourcePart* const part = group.firstDescribed();
    if (part == nullptr) continue;
    for (const AudioStreamDescription& stream : part->media->audio) {
      tracks.push_back({{group.number, stream.index, static_cast<int>(tracks.size())}, part, &stream});
    }
  }
  std::vector<bool> isOmitted(tracks.size(), false);
  for (const ExplainedSetting& setting : context.words.settings) {
    if (!TranscodeCliArguments::isIgnoredTrackFlag(setting.flag)) continue;
    context.use(setting);
    const auto number = setting.typed ? std::get_if<std::int64_t>(&*setting.typed) : nullptr;
    if (number != nullptr && *number >= 0 && static_cast<std::size_t>(*number) < tracks.size()) {
      isOmitted[static_cast<std::size_t>(*number)] = true;
    } else {
      context.warn(TranscodePlanWarningCode::noSuchTrack, setting.flag, "there are " + std::to_string(tracks.size()));
    }
  }
  std::erase_if(tracks, [&isOmitted](const SourceTrack& track) {
    return isOmitted[static_cast<std::size_t>(track.origin.track)];
  });
  return tracks;
}

/// Returns the places of a track's channels; empty if it does not state one for each.
Labels labelsOf(const AudioStreamDescription& stream) {
  Labels labels;
  if (stream.channels.size() != static_cast<std::size_t>(std::max(stream.channelCount, 0))) return {};
  for (const AudioChannelDescription& channel : stream.channels) {
    const auto label = channel.label ? fromRawValue<ChannelLabel>(*channel.label) : std::nullopt;
    if (!label) return {};
    labels.push_back(*label);
  }
  return labels;
}

/// Warns of groups without images whose kept sound goes on after the last image.
void warnOfLongerSound(PlanContext& context, const std::vector<SourceTrack>& tracks) {
  if (!context.plan.video || !context.plan.video->frameCount) return;
  const double rate = context.plan.video->output().frameRate.rawValue().rawValue();
  const double ofImages = static_cast<double>(*context.plan.video->frameCount) / rate;
  for (const SourceGroup& group : context.groups) {
    const bool isKept =
        std::ranges::any_of(tracks, [&group](const SourceTrack& track) { return track.origin.group == group.number; });
    if (&group == context.image->group || !isKept) continue;
    double ofSound = 0;
    for (const SourcePart& part : group.parts) {
      if (part.media != nullptr && part.media->duration) ofSound += part.media->duration->rawValue();
    }
    if (ofSound <= ofImages + 1 / rate) continue;
    context.warn(
        TranscodePlanWarningCode::soundOutlastsImages, group.parts.front().flag,
        "it lasts " + fixedDecimalText(ofSound, 3) + " s, and the images " + fixedDecimalText(ofImages, 3) + " s");
  }
}

void checkAudioDecoder(PlanContext& context, const SourceTrack& track) {
  if (track.stream->isDecodable) return;
  const std::string& codec = track.stream->codecName;
  context.fail(notDecodable, track.part->flag,
               "track " + std::to_string(track.origin.track) + ", which is " +
                   (codec.empty() ? "of an unknown codec" : printable(codec)),
               "leave it out with -ac_omit_" + std::to_string(track.origin.track) + ", or copy it with -acopy");
}

/// The tracks of a codec that cannot be copied into the container.
struct UncopiedCodec {
  std::string text;
  bool fitsRate = true;
  std::vector<int> tracks;

  /// Returns "pcm_s24le of track 0", with the first tracks of many.
  [[nodiscard]] std::string of() const {
    constexpr std::size_t most = 8;
    std::vector<std::string> numbers;
    for (std::size_t place = 0; place < std::min(tracks.size(), most); ++place) {
      numbers.push_back(std::to_string(tracks[place]));
    }
    return text + (tracks.size() == 1 ? " of track " : " of tracks ") + joined(numbers, ", ") +
           (tracks.size() > most ? " and " + std::to_string(tracks.size() - most) + " more" : "");
  }
};

/// Copies a track, or re-packs linear PCM whose order of bytes the container does not have.
void planCopiedTrack(PlanContext& context, const SourceTrack& track, std::vector<UncopiedCodec>& uncopied) {
  const AudioStreamDescription& stream = *track.stream;
  PlannedAudioTrack& planned = context.plan.audio.emplace_back();
  planned.origins.push_back(track.origin);
  planned.sampleRate = planned.sourceSampleRate = stream.sampleRate;
  planned.bits = stream.bitsPerChannel;
  planned.channelCount = stream.channelCount;
  planned.channels = planned.sourceChannels = labelsOf(stream);
  planned.layoutTag = stream.channelLayoutTag;
  planned.bitRate = stream.bitRate;
  planned.language = stream.language;
  planned.copiedCodec = stream.codecName;
  if (!context.container) return;
  const int onlyRate = tableRow(*context.container).sampleRate;
  const bool fitsRate = onlyRate == 0 || stream.sampleRate == onlyRate;
  if (holdsCodec(*context.container, stream.codecName) && fitsRate) return;
  const auto repacked = std::ranges::find(repackedPcmRows, stream.codecName, &RepackedPcmRow::codec);
  if (repacked != repackedPcmRows.end() && fitsRate && holdsCodec(*context.container, repacked->encoder)) {
    checkAudioDecoder(context, track);
    planned.copiedCodec.clear();
    planned.encoder = repacked->encoder;
    planned.sampleFormat = stream.sampleFormat;
    if (context.inventory.encoder(planned.encoder) == nullptr) {
      context.fail(encoderMissing, context.containerFlag(), planned.encoder);
    }
    context.warn(TranscodePlanWarningCode::repacked, context.containerFlag(),
                 stream.codecName + " of track " + std::to_string(track.origin.track) + " becomes " + planned.encoder);
    return;
  }
  std::string text = stream.codecName.empty() ? "an unknown codec" : printable(stream.codecName);
  if (!fitsRate) text += " at " + std::to_string(stream.sampleRate) + " samples a second";
  const auto known = std::ranges::find(uncopied, text, &UncopiedCodec::text);
  UncopiedCodec& codec = known != uncopied.end() ? *known : uncopied.emplace_back(std::move(text), fitsRate);
  codec.tracks.push_back(track.origin.track);
}

void planCopiedTracks(PlanContext& context, std::span<const SourceTrack> tracks) {
  std::vector<UncopiedCodec> uncopied;
  for (const SourceTrack& track : tracks) planCopiedTrack(context, track, uncopied);
  for (const UncopiedCodec& codec : uncopied) {
    const OutputContainerRow& row = tableRow(*context.container);
    context.fail(containerCannotHold, context.containerFlag(), codec.of() + " in " + std::string(row.description),
                 codec.fitsRate
                     ? "set -acodec, leave the audio out, or choose another container"
                     : "set -acodec lpcm -asr " + std::to_string(row.sampleRate) + ", or choose another container");
  }
}

/// The layout that the flags ask for.
struct AskedLayout {
  /// Empty if only the number of channels is asked for.
  Labels labels;
  std::optional<std::int64_t> count;
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
  if (*asked.count >= 1 && *asked.count <= greatestChannels) return asked;
  context.fail(channelsOutOfRange, layoutFlag, {}, limitsOfChannels());
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
    asked.count = count;
    if (const auto channels = channelsOfLayoutTag(tag)) {
      asked.labels.assign(channels->begin(), channels->end());
      return asked;
    }
    asked.isDiscrete = true;
    if (tag >> 16U == discreteLayoutTagNumber && count >= 1 && count <= greatestChannels) return asked;
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
  if (*asked.count <= greatestChannels) return asked;
  context.fail(channelsOutOfRange, flag, {}, limitsOfChannels());
  return std::nullopt;
}

std::optional<AskedLayout> layoutOfBitmap(PlanContext& context) {
  const std::string_view flag = SAVAudioChannelLayoutBitmapFlag.rawValue();
  const auto bitmap = context.value<std::int64_t>(flag);
  if (!bitmap) return std::nullopt;
  constexpr std::int64_t beyondWave = 1 << 18;
  const bool isInRange = *bitmap > 0 && *bitmap < beyondWave;
  const auto channels = isInRange ? channelsOfBitmap(static_cast<std::uint64_t>(*bitmap)) : std::nullopt;
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
  }
  if (!context.has(SAVDiscreteAudioFlag.rawValue())) return asked;
  if (!asked.labels.empty()) {
    context.fail(contradictoryLayout, asked.flag, "-adiscrete keeps the channels without places");
    asked.labels.clear();
  }
  asked.isDiscrete = true;
  return asked;
}

/// What the tracks that become one have in common.
struct JoinedSource {
  /// The flag of the first part.
  std::string_view flag;
  /// Empty if a channel has no place.
  Labels labels;
  std::int64_t channelCount = 0;
  std::int64_t sampleRate = 0;
  /// The greatest of all tracks; absent if none keeps samples.
  std::optional<std::int64_t> bits;
  bool isFloat = false;
  /// Absent if a track does not state its own.
  std::optional<std::int64_t> bitRate;
};

JoinedSource joinedSource(PlanContext& context, std::span<const SourceTrack> tracks) {
  JoinedSource source;
  source.flag = tracks.front().part->flag;
  source.bitRate = 0;
  if (tracks.size() == 1) source.labels = labelsOf(*tracks.front().stream);
  std::vector<std::string> rates;
  for (const SourceTrack& track : tracks) {
    const AudioStreamDescription& stream = *track.stream;
    source.channelCount += stream.channelCount;
    source.sampleRate = std::max<std::int64_t>(source.sampleRate, stream.sampleRate);
    if (stream.bitsPerChannel) source.bits = std::max<std::int64_t>(source.bits.value_or(0), *stream.bitsPerChannel);
    source.isFloat = source.isFloat || stream.codecName.starts_with("pcm_f");
    const auto sum = source.bitRate && stream.bitRate ? checkedSum(*source.bitRate, *stream.bitRate) : std::nullopt;
    source.bitRate = sum;
    std::string rate = std::to_string(stream.sampleRate);
    if (!isIn(rates, rate)) rates.push_back(std::move(rate));
  }
  if (rates.size() > 1 && !context.isSet(sampleRateFlag)) {
    context.warn(TranscodePlanWarningCode::sampleRatesDiffer, SAVDiscreteAudioFlag.rawValue(),
                 joined(rates, ", ") + "; the track has " + std::to_string(source.sampleRate));
  }
  return source;
}

/// Returns whether FFmpeg can mix from or to channels at these places: there is one alone, or one in front and each of
/// a pair with the other.
bool isMixable(std::span<const ChannelLabel> channels) {
  constexpr std::uint64_t fronts = 0x60000007;  // also Lt and Rt
  constexpr auto pairs = std::to_array<std::uint64_t>({0x3, 0x30, 0xc0, 0x600});
  const std::uint64_t bitmap = bitmapOfChannels(channels).value_or(0);
  return channels.size() == 1 || ((bitmap & fronts) != 0 && std::ranges::none_of(pairs, [bitmap](std::uint64_t pair) {
                                    return std::popcount(bitmap & pair) == 1;
                                  }));
}

/// Takes the channels as they are, one after the other.
void setDiscreteChannels(PlanContext& context, PlannedAudioTrack& planned, std::string_view flag,
                         const JoinedSource& source, const AudioEncoderRow* encoder) {
  planned.sourceChannels.clear();
  if (planned.channelCount < source.channelCount) {
    context.fail(channelsOutOfRange, flag, "there are " + std::to_string(source.channelCount) + " discrete channels");
  } else if (planned.channelCount > source.channelCount) {
    context.warn(TranscodePlanWarningCode::channelsAdded, flag,
                 std::to_string(planned.channelCount) + " where there are " + std::to_string(source.channelCount));
  }
  if (encoder == nullptr) return;
  if (planned.channelCount > 2) {
    context.fail(layoutNotAvailable, flag, encoder->format.string() + " has no discrete channels", "use -acodec lpcm");
  } else {
    const ChannelList channels = *usualChannels(planned.channelCount);
    planned.channels.assign(channels.begin(), channels.end());
  }
}

/// Fits the places to those that the encoder has.
void fitLayout(PlanContext& context, PlannedAudioTrack& planned, std::string_view flag,
               const AudioEncoderRow& encoder) {
  const std::uint64_t bitmap = bitmapOfChannels(planned.channels).value_or(0);
  if (isIn(encoder.layouts, bitmap)) return;
  if (const std::uint64_t other = withOtherSurround(bitmap); isIn(encoder.layouts, other)) {
    const ChannelList channels = *channelsOfBitmap(other);
    planned.channels.assign(channels.begin(), channels.end());
    return;
  }
  const std::string layout = planned.channels.empty()
                                 ? "layout of " + std::to_string(planned.channelCount) + " channels"
                                 : namesOf(planned.channels);
  context.fail(layoutNotAvailable, flag, encoder.format.string() + " has no " + layout,
               "choose another layout with -acl, or -acodec lpcm");
}

void setChannels(PlanContext& context, PlannedAudioTrack& planned, const AskedLayout& asked, const JoinedSource& source,
                 const AudioEncoderRow* encoder) {
  const std::string_view flag = asked.flag.empty() ? source.flag : asked.flag;
  planned.sourceChannels = source.labels;
  planned.channelCount = asked.count.value_or(source.channelCount);
  const std::string count = std::to_string(planned.channelCount);
  if (planned.channelCount < 1 || planned.channelCount > greatestChannels) {
    context.fail(channelsOutOfRange, flag, "there are " + count, limitsOfChannels());
    return;
  }
  if (encoder != nullptr && planned.channelCount > encoder->greatestChannelCount) {
    context.fail(channelsOutOfRange, flag,
                 "there are " + count + ", and " + encoder->format.string() + " has at most " +
                     std::to_string(encoder->greatestChannelCount));
    return;
  }
  if (asked.isDiscrete) {
    const std::string_view discrete = SAVDiscreteAudioFlag.rawValue();
    setDiscreteChannels(context, planned, asked.flag.empty() ? discrete : asked.flag, source, encoder);
    return;
  }

  const bool keepsCount = planned.channelCount == source.channelCount;
  Labels places = asked.labels;
  if (places.empty() && keepsCount) places = source.labels;
  const bool isUsual = places.empty();
  if (isUsual && (encoder != nullptr || asked.count)) {
    if (const auto usual = usualChannels(planned.channelCount)) places.assign(usual->begin(), usual->end());
  }
  // Channels without places are taken to be those that are asked for, or the usual ones.
  if (planned.sourceChannels.empty() && keepsCount) {
    planned.sourceChannels = places;
  } else if (const auto usual = usualChannels(source.channelCount); planned.sourceChannels.empty() && usual) {
    planned.sourceChannels.assign(usual->begin(), usual->end());
  }
  const bool isAssumed = source.labels.empty() && !planned.sourceChannels.empty() && (isUsual || !keepsCount);
  if (isAssumed && source.channelCount > 2) {
    context.warn(TranscodePlanWarningCode::layoutAssumed, source.flag, namesOf(planned.sourceChannels) + " is assumed",
                 keepsCount ? "state them with -acl_descs" + std::string(asked.count ? " instead of -acl" : "") : "");
  }
  const auto ordered = inBitmapOrder(places);
  if (!places.empty() && !ordered) {
    context.fail(layoutNotAvailable, flag, namesOf(places) + " has two channels at one place", "name each place once");
    return;
  }
  if (ordered) planned.channels.assign(ordered->begin(), ordered->end());
  if (!asked.labels.empty() && !source.labels.empty() && bitmapOfChannels(places) &&
      !std::ranges::is_sorted(places, {}, [](ChannelLabel each) { return bitmapOfChannels({&each, 1}).value_or(0); })) {
    context.warn(TranscodePlanWarningCode::channelsReordered, flag, "they are stored as " + namesOf(planned.channels));
  }
  const bool mixes = !keepsCount || bitmapOfChannels(planned.sourceChannels) != bitmapOfChannels(planned.channels);
  if (mixes && (planned.sourceChannels.empty() || planned.channels.empty())) {
    const std::int64_t unplaced = planned.sourceChannels.empty() ? source.channelCount : planned.channelCount;
    context.fail(layoutNotAvailable, flag,
                 "the places of " + std::to_string(unplaced) + " channels are not known, so that they cannot be mixed",
                 "keep them with -adiscrete, or leave tracks out with -ac_omit_N");
    return;
  }
  if (mixes && !(isMixable(planned.sourceChannels) && isMixable(planned.channels))) {
    context.fail(layoutNotAvailable, flag,
                 namesOf(planned.sourceChannels) + " cannot be mixed to " + namesOf(planned.channels),
                 "choose a layout with all channels of each pair");
    return;
  }
  if (encoder != nullptr) fitLayout(context, planned, flag, *encoder);
  if (const auto row = channelLayoutWithBitmap(bitmapOfChannels(planned.channels).value_or(0))) {
    planned.layoutTag = row->tag;
  }
}

void setSampleRate(PlanContext& context, PlannedAudioTrack& planned, const JoinedSource& source,
                   const AudioEncoderRow* encoder) {
  const auto asked = context.value<std::int64_t>(sampleRateFlag);
  planned.sampleRate = asked.value_or(source.sampleRate);
  planned.sourceSampleRate = source.sampleRate;
  const std::string_view flag = asked ? sampleRateFlag : source.flag;
  const std::string detail = asked ? "" : "with " + std::to_string(source.sampleRate) + " samples a second";
  const int onlyRate = context.container ? tableRow(*context.container).sampleRate : 0;
  if (planned.sampleRate < leastSampleRate || planned.sampleRate > greatestSampleRate) {
    context.fail(sampleRateNotAvailable, flag, detail,
                 "set -asr to " + std::to_string(leastSampleRate) + " to " + std::to_string(greatestSampleRate));
    // The bit rate, which depends on it, is planned all the same.
    planned.sampleRate = std::clamp<std::int64_t>(planned.sampleRate, leastSampleRate, greatestSampleRate);
  } else if (onlyRate != 0 && planned.sampleRate != onlyRate) {
    context.fail(sampleRateNotAvailable, flag, detail,
                 std::string(description(*context.container)) + " holds " + std::to_string(onlyRate) +
                     " samples a second; set -asr " + std::to_string(onlyRate));
  } else if (encoder != nullptr && !encoder->sampleRates.empty() &&
             !isIn(encoder->sampleRates, static_cast<int>(planned.sampleRate))) {
    std::vector<std::string> rates;
    for (const int rate : encoder->sampleRates) rates.push_back(std::to_string(rate));
    context.fail(sampleRateNotAvailable, flag, detail,
                 "the rates of " + encoder->format.string() + " are " + joined(rates, ", ") + "; choose one with -asr");
  }
}

void warnOfReducedDepth(PlanContext& context, const PlannedAudioTrack& planned, const JoinedSource& source,
                        std::string advice) {
  if (!planned.bits || !source.bits || *source.bits <= *planned.bits) return;
  context.warn(TranscodePlanWarningCode::depthReduced, source.flag,
               std::to_string(*source.bits) + " of its audio become " + std::to_string(*planned.bits),
               std::move(advice) + ", or set -abpc " + std::to_string(*planned.bits) + " to say that it is meant");
}

/// Returns the depths of linear PCM in a container, as text.
std::string lpcmDepths(std::optional<OutputContainer> container) {
  std::vector<std::string> texts;
  for (const LpcmEncoderRow& row : lpcmEncoderRows) {
    if (!row.isFloat && row.fits(container)) texts.push_back(std::to_string(row.bits));
  }
  return joined(texts, ", ");
}

void setLpcm(PlanContext& context, PlannedAudioTrack& planned, const JoinedSource& source) {
  const auto fits = [&context](const LpcmEncoderRow& row) { return row.fits(context.container); };
  const bool isKnownContainer = std::ranges::any_of(lpcmEncoderRows, fits);
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
  } else if (source.isFloat && fits(*lpcmEncoderOf(32, true))) {
    row = lpcmEncoderOf(32, true);
  } else {
    // The least depth that keeps the source's samples, or the greatest that there is; 16 at least.
    for (const LpcmEncoderRow& each : lpcmEncoderRows) {
      if (each.isFloat || each.bits < 16 || (isKnownContainer && !fits(each))) continue;
      if (row == nullptr || row->bits < source.bits.value_or(16)) row = &each;
    }
  }
  if (row == nullptr) return;
  if (context.inventory.encoder(row->encoder) == nullptr) {
    context.fail(encoderMissing, audioCodecFlag, std::string(row->encoder));
  }
  planned.encoder = row->encoder;
  planned.sampleFormat = row->sampleFormat;
  planned.bits = row->bits;
  if (!asked) warnOfReducedDepth(context, planned, source, "choose another container");
}

void setCompressed(PlanContext& context, PlannedAudioTrack& planned, const JoinedSource& source,
                   const AudioEncoderRow& encoder) {
  if (context.container && !isIn(encoder.containers, *context.container)) {
    context.fail(notInContainer, audioCodecFlag, "in " + std::string(description(*context.container)));
  }
  if (context.inventory.encoder(encoder.encoder) == nullptr) {
    context.fail(encoderMissing, audioCodecFlag, std::string(encoder.encoder));
  }
  planned.encoder = encoder.encoder;
  planned.sampleFormat = encoder.depths.back().sampleFormat;
  if (!encoder.keepsSamples()) {
    context.ignore(audioDepthFlag, "the codec does not keep samples");
    return;
  }
  const auto asked = context.value<std::int64_t>(audioDepthFlag);
  std::vector<std::string> texts;
  for (const SampleDepth& depth : encoder.depths | std::views::reverse) {
    texts.insert(texts.begin(), std::to_string(depth.bits));
    const bool isChosen = asked ? depth.bits == *asked : !planned.bits || depth.bits >= source.bits.value_or(16);
    if (!isChosen) continue;
    planned.bits = depth.bits;
    planned.sampleFormat = depth.sampleFormat;
  }
  if (!planned.bits) {
    context.fail(sampleDepthNotAvailable, audioDepthFlag, {},
                 encoder.format.string() + " has " + joined(texts, " and ") + " bits");
  } else if (!asked) {
    warnOfReducedDepth(context, planned, source, "use -acodec lpcm");
  }
}

void setBitRate(PlanContext& context, PlannedAudioTrack& planned, const JoinedSource& source,
                const AudioEncoderRow* encoder) {
  if (encoder == nullptr || !encoder->hasBitRate) {
    context.ignore(audioBitRateFlag, "the samples decide the bit rate of the codec");
    context.ignore(audioQualityFlag, "the codec loses nothing");
    return;
  }
  constexpr std::int64_t least = 8000;
  const std::int64_t greatest = greatestAacBitRate(planned.sampleRate, planned.channelCount);
  if (const auto asked = context.value<std::int64_t>(audioBitRateFlag)) {
    context.ignore(audioQualityFlag, "-abr sets the bit rate");
    if (*asked < least) {
      context.fail(bitRateOutOfRange, audioBitRateFlag, {},
                   *asked > 0 ? "the unit is bits a second: did you mean " + std::to_string(*asked * 1000) + "?"
                              : "use " + std::to_string(least) + " bits a second or more");
    } else if (*asked > greatest) {
      context.fail(bitRateOutOfRange, audioBitRateFlag,
                   "for " + std::to_string(planned.channelCount) + " channels of " +
                       std::to_string(planned.sampleRate) + " samples a second",
                   "use at most " + std::to_string(greatest));
    }
    planned.bitRate = asked;
    return;
  }
  if (isCopyOfSource(audioBitRateFlag, context.text(audioBitRateFlag))) {
    if (source.bitRate) {
      context.ignore(audioQualityFlag, "-abr sets the bit rate");
      planned.bitRate = std::max(std::min(*source.bitRate, greatest), std::min(least, greatest));
      return;
    }
    context.warn(TranscodePlanWarningCode::withoutEffect, audioBitRateFlag, "the source does not state its bit rate");
  }
  const auto quality = context.oneOf<TranscodeAudioQuality>(audioQualityFlag).value_or(TranscodeAudioQuality::medium);
  planned.bitRate = std::min(aacBitRatePerChannel(quality) * planned.channelCount, greatest);
}

void planEncodedTracks(PlanContext& context, const std::vector<SourceTrack>& tracks) {
  const auto format = context.oneOf<SAVTranscodeArgumentAudioFormatValue>(audioCodecFlag);
  const AudioEncoderRow* const encoder = audioEncoderOf(*format);
  const AskedLayout layout = askedLayout(context);
  const bool joins = context.isSet(SAVDiscreteAudioFlag.rawValue());
  const std::size_t errorCount = context.errors.size();
  const std::size_t warningCount = context.plan.warnings.size();
  const auto planTrack = [&](std::span<const SourceTrack> origins) {
    PlannedAudioTrack& planned = context.plan.audio.emplace_back();
    for (const SourceTrack& origin : origins) {
      planned.origins.push_back(origin.origin);
      checkAudioDecoder(context, origin);
    }
    planned.language = origins.front().stream->language;
    const JoinedSource source = joinedSource(context, origins);
    setChannels(context, planned, layout, source, encoder);
    setSampleRate(context, planned, source, encoder);
    if (encoder != nullptr) {
      setCompressed(context, planned, source, *encoder);
    } else {
      setLpcm(context, planned, source);
    }
    setBitRate(context, planned, source, encoder);
  };
  if (joins) {
    planTrack(tracks);
  } else {
    for (const SourceTrack& track : tracks) planTrack({&track, 1});
  }
  makeDistinct(context.errors, errorCount);
  makeDistinct(context.plan.warnings, warningCount);
}

}  // namespace

void planAudio(PlanContext& context) {
  if (context.has(SAVNoAudioFlag.rawValue())) return;
  const std::vector<SourceTrack> tracks = keptTracks(context);
  if (tracks.empty()) return;
  warnOfLongerSound(context, tracks);
  const std::string_view copyFlag = SAVCopyAudioFlag.rawValue();
  context.isAudioCopied = context.arguments.copyAudio();
  if (context.container && tableRow(*context.container).audioTracks == 0) {
    context.fail(containerCannotHold, context.containerFlag(),
                 "audio in " + std::string(description(*context.container)), "add -an");
    for (const std::string_view flag : {copyFlag, audioCodecFlag}) context.use(flag);
    return;
  }
  if (context.isAudioCopied) {
    const std::string_view codec = context.text(audioCodecFlag);
    if (context.has(copyFlag)) {
      context.ignore(audioCodecFlag, "-acopy copies the audio");
      if (isCopyOfSource(audioCodecFlag, codec)) context.use(audioCodecFlag);
    } else if (context.has(audioCodecFlag) && !isCopyOfSource(audioCodecFlag, codec) && !codec.empty()) {
      context.warn(TranscodePlanWarningCode::copiedInstead, audioCodecFlag, inQuotes(codec));
    }
    planCopiedTracks(context, tracks);
  } else {
    planEncodedTracks(context, tracks);
  }
  if (!context.container) return;
  const OutputContainerRow& row = tableRow(*context.container);
  if (context.plan.audio.size() > static_cast<std::size_t>(row.audioTracks)) {
    context.fail(
        tooManyTracks, context.containerFlag(),
        std::to_string(context.plan.audio.size()) + " tracks in " + std::string(row.description),
        context.isAudioCopied ? "leave tracks out with -ac_omit_N, or join them with -acodec lpcm -adiscrete" : "");
  }
  if (row.needsVideo && !context.plan.video) {
    context.fail(containerCannotHold, context.containerFlag(), "audio without video in " + std::string(row.description),
                 "use .wav or .mov");
  }
}

}  // namespace meridian::inline v0_2
