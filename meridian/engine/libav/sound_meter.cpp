#include "meridian/engine/libav/sound_meter.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

namespace meridian::inline v0_2::libav {
namespace {

constexpr double silentLoudness = -120;
/// The absolute gate of ITU-R BS.1770-4.
constexpr double gateLoudness = -70;
constexpr float silentLevel = 0.001F;  // -60 dBFS
constexpr std::size_t mostParts = 4096;
constexpr int pointsPerSecond = 10;
/// What the time stamps of containers, and the packets of some, are off by.
constexpr Ticks leastHole = timeLine.den / 20;

/// What a channel is to libebur128, which weighs surround channels and leaves LFE out.
struct ChannelRow {
  AVChannel channel;
  int place;
};
constexpr auto channelRows = std::to_array<ChannelRow>({
    {AV_CHAN_FRONT_LEFT, EBUR128_LEFT},
    {AV_CHAN_FRONT_RIGHT, EBUR128_RIGHT},
    {AV_CHAN_FRONT_CENTER, EBUR128_CENTER},
    {AV_CHAN_LOW_FREQUENCY, EBUR128_UNUSED},
    {AV_CHAN_LOW_FREQUENCY_2, EBUR128_UNUSED},
    {AV_CHAN_SIDE_LEFT, EBUR128_LEFT_SURROUND},
    {AV_CHAN_SIDE_RIGHT, EBUR128_RIGHT_SURROUND},
    {AV_CHAN_BACK_LEFT, EBUR128_LEFT_SURROUND},
    {AV_CHAN_BACK_RIGHT, EBUR128_RIGHT_SURROUND},
    {AV_CHAN_BACK_CENTER, EBUR128_LEFT_SURROUND},
});

template <typename Sample>
float normalized(Sample sample) noexcept {
  if constexpr (std::is_floating_point_v<Sample>) {
    // What is no number sounds like nothing, and would take all loudness after it along.
    return std::isfinite(sample) ? static_cast<float>(sample) : 0;
  } else if constexpr (std::is_unsigned_v<Sample>) {
    constexpr float middle = 128;
    return (static_cast<float>(sample) - middle) / middle;
  } else {
    constexpr double full = 1 + static_cast<double>(std::numeric_limits<Sample>::max());
    return static_cast<float>(static_cast<double>(sample) / full);
  }
}

template <typename Sample>
void normalize(const AVFrame& sound, std::vector<float>& samples) {
  const auto channels = static_cast<std::size_t>(sound.ch_layout.nb_channels);
  const auto count = static_cast<std::size_t>(sound.nb_samples);
  const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(sound.format)) != 0;
  for (std::size_t channel = 0; channel < channels; ++channel) {
    const auto* const from = reinterpret_cast<const Sample*>(sound.extended_data[isPlanar ? channel : 0]);
    const std::size_t step = isPlanar ? 1 : channels;
    const std::size_t first = isPlanar ? 0 : channel;
    for (std::size_t sample = 0; sample < count; ++sample) {
      samples[sample * channels + channel] = normalized(from[first + sample * step]);
    }
  }
}

template <typename Sample>
bool hasOnlyNumbers(const AVFrame& sound) {
  const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(sound.format)) != 0;
  const auto channels = static_cast<std::size_t>(sound.ch_layout.nb_channels);
  const std::size_t count = static_cast<std::size_t>(sound.nb_samples) * (isPlanar ? 1 : channels);
  const std::span planes(sound.extended_data, isPlanar ? channels : 1);
  return std::ranges::all_of(planes, [count](const std::uint8_t* plane) {
    return std::ranges::all_of(std::span(reinterpret_cast<const Sample*>(plane), count),
                               [](Sample sample) { return std::isfinite(sample); });
  });
}

/// Writes the samples as floating point, interleaved. Returns what is wrong with them; nothing if nothing is.
std::optional<std::string> normalizeSound(const AVFrame& sound, std::vector<float>& samples) {
  const auto reasonIf = [](bool hasOnly) {
    return hasOnly ? std::nullopt : std::optional<std::string>("some of its samples are not numbers");
  };
  samples.resize(static_cast<std::size_t>(sound.nb_samples) * static_cast<std::size_t>(sound.ch_layout.nb_channels));
  switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(sound.format))) {
    case AV_SAMPLE_FMT_U8:
      normalize<std::uint8_t>(sound, samples);
      return std::nullopt;
    case AV_SAMPLE_FMT_S16:
      normalize<std::int16_t>(sound, samples);
      return std::nullopt;
    case AV_SAMPLE_FMT_S32:
      normalize<std::int32_t>(sound, samples);
      return std::nullopt;
    case AV_SAMPLE_FMT_S64:
      normalize<std::int64_t>(sound, samples);
      return std::nullopt;
    case AV_SAMPLE_FMT_FLT:
      normalize<float>(sound, samples);
      return reasonIf(hasOnlyNumbers<float>(sound));
    case AV_SAMPLE_FMT_DBL:
      normalize<double>(sound, samples);
      return reasonIf(hasOnlyNumbers<double>(sound));
    default:
      samples.clear();
      return "the format of its samples is not known";
  }
}

std::optional<double> aboveGate(double loudness) {
  return loudness >= gateLoudness ? std::optional(loudness) : std::nullopt;
}

std::optional<double> decibels(double peak) { return peak > 0 ? std::optional(20 * std::log10(peak)) : std::nullopt; }

}  // namespace

void WaveformMeter::joinPairs() {
  for (std::size_t pair = 0; pair < parts_.size() / 2; ++pair) {
    const WaveformPart& left = parts_[2 * pair];
    const WaveformPart& right = parts_[2 * pair + 1];
    parts_[pair] = {std::min(left.least, right.least), std::max(left.greatest, right.greatest)};
  }
  parts_.resize(parts_.size() / 2);
  samplesPerPart_ *= 2;
}

void WaveformMeter::take(std::span<const float> samples, std::size_t channels) {
  for (std::size_t first = 0; first < samples.size(); first += channels) {
    const auto [least, greatest] = std::ranges::minmax(samples.subspan(first, channels));
    add(1, {least, greatest});
  }
}

void WaveformMeter::takeSilence(std::int64_t samples) {
  while (samples > 0) {
    if (inPart_ == 0 && parts_.size() == mostParts) joinPairs();
    const std::int64_t taken = std::min(samples, samplesPerPart_ - inPart_);
    add(taken, {});
    samples -= taken;
  }
}

void WaveformMeter::add(std::int64_t samples, const WaveformPart& part) {
  if (inPart_ == 0) {
    if (parts_.size() == mostParts) joinPairs();
    parts_.push_back(part);
  } else {
    parts_.back().least = std::min(parts_.back().least, part.least);
    parts_.back().greatest = std::max(parts_.back().greatest, part.greatest);
  }
  inPart_ += samples;
  if (inPart_ >= samplesPerPart_) inPart_ = 0;
}

void SilenceMeter::take(std::span<const float> samples, std::size_t channels, Ticks time) {
  const auto isLoud = [](float sample) { return std::abs(sample) >= silentLevel; };
  const auto timeOf = [&](std::size_t place) {
    return time + av_rescale(static_cast<std::int64_t>(place / channels), timeLine.den, sampleRate_);
  };
  std::size_t place = 0;
  while (place < samples.size()) {
    const auto rest = samples.subspan(place);
    const auto loud = static_cast<std::size_t>(std::ranges::find_if(rest, isLoud) - rest.begin());
    if (loud > 0 && !start_) start_ = timeOf(place);
    place += loud;
    if (place == samples.size()) return;
    if (start_) silent_.add(*std::exchange(start_, std::nullopt), timeOf(place));
    // The whole sample sounds, whichever of its channels does.
    place = (place / channels + 1) * channels;
  }
}

void SilenceMeter::takeSilence(Ticks time) {
  if (!start_) start_ = time;
}

std::vector<MediaInterval> SilenceMeter::finish(Ticks end) {
  if (start_) silent_.add(*start_, end);
  return silent_.take();
}

LoudnessMeter::LoudnessMeter(const AVChannelLayout& layout, int sampleRate)
    : samplesPerPoint_(static_cast<std::size_t>(std::max(sampleRate / pointsPerSecond, 1))),
      greatestMomentary_(silentLoudness),
      greatestShortTerm_(silentLoudness) {
  // NOLINTNEXTLINE(hicpp-signed-bitwise): the library's own flags.
  constexpr int mode = EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK | EBUR128_MODE_HISTOGRAM;
  state_.reset(ebur128_init(static_cast<unsigned>(layout.nb_channels), static_cast<unsigned long>(sampleRate), mode));
  if (!state_) return;
  // Channels without places are at the usual ones of their number.
  AVChannelLayout usual{};
  if (layout.order == AV_CHANNEL_ORDER_UNSPEC) av_channel_layout_default(&usual, layout.nb_channels);
  const AVChannelLayout& places = usual.nb_channels == layout.nb_channels ? usual : layout;
  for (int place = 0; place < layout.nb_channels; ++place) {
    const AVChannel channel = av_channel_layout_channel_from_index(&places, static_cast<unsigned>(place));
    const auto* const row = std::ranges::find(channelRows, channel, &ChannelRow::channel);
    // What is nowhere, or above the listener, has the weight of a front channel.
    const int as = row == channelRows.end() ? EBUR128_LEFT : row->place;
    ebur128_set_channel(state_.get(), static_cast<unsigned>(place), as);
  }
}

void LoudnessMeter::take(std::span<const float> samples, std::size_t channels, Ticks time) {
  if (!state_) return;
  const std::size_t count = samples.size() / channels;
  std::size_t done = 0;
  while (done < count) {
    const std::size_t part = std::min(count - done, samplesPerPoint_ - sincePoint_);
    if (ebur128_add_frames_float(state_.get(), samples.data() + done * channels, part) != EBUR128_SUCCESS) {
      state_.reset();
      return;
    }
    done += part;
    sincePoint_ += part;
    if (sincePoint_ < samplesPerPoint_) continue;
    sincePoint_ = 0;
    notePoint(time + av_rescale(static_cast<std::int64_t>(done), timeLine.den, static_cast<int>(state_->samplerate)));
  }
}

void LoudnessMeter::takeSilence(std::int64_t samples, Ticks time) {
  if (!state_) return;
  // Longer ones change nothing more, as no loudness is that of more than 3 s.
  constexpr std::int64_t mostSeconds = 4;
  const auto sampleRate = static_cast<int>(state_->samplerate);
  samples = std::min(samples, mostSeconds * sampleRate);
  const std::vector<float> silence(samplesPerPoint_ * state_->channels);
  while (samples > 0 && state_) {
    const std::int64_t part = std::min(samples, static_cast<std::int64_t>(samplesPerPoint_));
    take(std::span(silence).first(static_cast<std::size_t>(part) * state_->channels), state_->channels, time);
    time += av_rescale(part, timeLine.den, sampleRate);
    samples -= part;
  }
}

void LoudnessMeter::notePoint(Ticks time) {
  LoudnessPoint point{secondsOfTicks(time), silentLoudness, silentLoudness};
  double loudness = 0;
  if (ebur128_loudness_momentary(state_.get(), &loudness) == EBUR128_SUCCESS) {
    point.momentary = std::max(loudness, silentLoudness);
  }
  if (ebur128_loudness_shortterm(state_.get(), &loudness) == EBUR128_SUCCESS) {
    point.shortTerm = std::max(loudness, silentLoudness);
  }
  greatestMomentary_ = std::max(greatestMomentary_, point.momentary);
  greatestShortTerm_ = std::max(greatestShortTerm_, point.shortTerm);
  curve_.push_back(point);
}

std::optional<Loudness> LoudnessMeter::loudness() const {
  if (!state_) return std::nullopt;
  Loudness found;
  double integrated = 0;
  if (ebur128_loudness_global(state_.get(), &integrated) == EBUR128_SUCCESS) found.integrated = aboveGate(integrated);
  if (ebur128_loudness_range(state_.get(), &found.range) != EBUR128_SUCCESS) found.range = 0;
  found.greatestMomentary = aboveGate(greatestMomentary_);
  found.greatestShortTerm = aboveGate(greatestShortTerm_);
  double truePeak = 0;
  double samplePeak = 0;
  for (unsigned channel = 0; channel < state_->channels; ++channel) {
    double peak = 0;
    if (ebur128_true_peak(state_.get(), channel, &peak) == EBUR128_SUCCESS) truePeak = std::max(truePeak, peak);
    if (ebur128_sample_peak(state_.get(), channel, &peak) == EBUR128_SUCCESS) samplePeak = std::max(samplePeak, peak);
  }
  found.truePeak = decibels(std::max(truePeak, samplePeak));
  found.samplePeak = decibels(samplePeak);
  return found;
}

SoundMeter::Meters::Meters(const AVFrame& sound)
    : waveform(sound.sample_rate), silence(sound.sample_rate), loudness(sound.ch_layout, sound.sample_rate) {}

void SoundMeter::fillUntil(Ticks time) {
  const Ticks end = start_ + av_rescale(placed_, timeLine.den, sampleRate_);
  if (time - end < leastHole) return;
  const std::int64_t missing = av_rescale(time - end, sampleRate_, timeLine.den);
  meters_->waveform.takeSilence(missing);
  meters_->silence.takeSilence(end);
  meters_->loudness.takeSilence(missing, end);
  placed_ += missing;
}

std::optional<std::string> SoundMeter::take(const AVFrame& sound, Ticks time) {
  if (!meters_) {
    format_ = sound.format;
    sampleRate_ = sound.sample_rate;
    channels_ = sound.ch_layout.nb_channels;
    start_ = time;
    meters_.emplace(sound);
  }
  if (sound.sample_rate != sampleRate_ || sound.ch_layout.nb_channels != channels_) {
    return "the sound changes to " + std::to_string(sound.sample_rate) + " Hz with " +
           std::to_string(sound.ch_layout.nb_channels) + " channels";
  }
  if (sound.format != format_) return std::string("the format of the samples changes");
  digest_.addSound(sound);
  fillUntil(time);
  count_ += sound.nb_samples;
  placed_ += sound.nb_samples;
  end_ = time + av_rescale(sound.nb_samples, timeLine.den, sampleRate_);
  auto reason = normalizeSound(sound, samples_);
  const auto channels = static_cast<std::size_t>(channels_);
  meters_->waveform.take(samples_, channels);
  meters_->silence.take(samples_, channels, time);
  meters_->loudness.take(samples_, channels, time);
  return reason;
}

DeepAudioAnalysis SoundMeter::finish() {
  DeepAudioAnalysis found;
  found.track = track_;
  found.sampleCount = count_;
  found.start = secondsOfTicks(start_);
  found.seconds = sampleRate_ > 0 ? static_cast<double>(placed_) / sampleRate_ : 0;
  found.md5 = digest_.text();
  if (!meters_) return found;
  found.silent = meters_->silence.finish(end_);
  found.loudness = meters_->loudness.loudness();
  found.loudnessCurve = meters_->loudness.takeCurve();
  found.secondsPerPart = static_cast<double>(meters_->waveform.samplesPerPart()) / sampleRate_;
  found.waveform = meters_->waveform.takeParts();
  return found;
}

}  // namespace meridian::inline v0_2::libav
