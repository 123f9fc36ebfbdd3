#include "meridian/engine/libav/audio_chain.h"

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "meridian/engine/channel_layouts.h"
#include "meridian/engine/libav/channel_order.h"
#include "meridian/engine/libav/log_collector.h"

namespace meridian::inline v0_2::libav {
namespace {

using ConverterPointer = std::unique_ptr<SwrContext, FreesByPointer<swr_free>>;
struct FreesFifo {
  void operator()(AVAudioFifo* fifo) const noexcept { av_audio_fifo_free(fifo); }
};
using FifoPointer = std::unique_ptr<AVAudioFifo, FreesFifo>;
/// What failed; empty if nothing did.
using Failure = std::optional<std::string>;

constexpr const char* noMemory = "there is no memory for it";

/// What the sound of an origin becomes.
struct SoundTarget {
  AVSampleFormat planarFormat = AV_SAMPLE_FMT_NONE;
  int rate = 0;
  /// The bits that count in a sample.
  int bits = 0;
  /// The places of the source's channels and of the result's; both empty for channels that are kept as they are.
  std::vector<ChannelLabel> sourceChannels;
  std::vector<ChannelLabel> channels;
};

bool isFloat(AVSampleFormat format) noexcept {
  const AVSampleFormat planar = av_get_planar_sample_fmt(format);
  return planar == AV_SAMPLE_FMT_FLTP || planar == AV_SAMPLE_FMT_DBLP;
}

/// Converts the sound of an origin, and keeps it until it is taken.
class OriginSound {
 public:
  explicit OriginSound(SoundTarget target) : target_(std::move(target)) {}

  /// The number of channels; 0 until sound has come.
  [[nodiscard]] int channels() const noexcept { return outputChannels_; }
  [[nodiscard]] int available() const noexcept { return fifo_ ? av_audio_fifo_size(fifo_.get()) : 0; }
  [[nodiscard]] const Occurrences& filled() const noexcept { return filled_; }
  /// Returns the samples that all sound so far comes to, at the target's rate.
  [[nodiscard]] std::int64_t expected() const noexcept {
    return inputRate_ == 0 ? 0 : earlier_ + av_rescale(next_ - base_, target_.rate, inputRate_);
  }

  /// Prepares for sound whose first sample is heard at a time.
  [[nodiscard]] Failure begin(const AVFrame& sound, Ticks time) {
    if (auto failure = prepare(sound)) return failure;
    std::int64_t first = av_rescale_rnd(time, inputRate_, timeLine.den, AV_ROUND_NEAR_INF);
    // Time stamps of some containers are rounded to a millisecond, so that they jitter by as much.
    const std::int64_t tolerance = inputRate_ / 500 + 1;
    if (hasBegun_ && std::abs(first - next_) <= tolerance) first = next_;
    if (first > next_ && hasBegun_) {
      // Its middle: the sound of a part may end a little before the part does.
      filled_.add(av_rescale(first - next_, target_.rate, inputRate_),
                  av_rescale(next_ + (first - next_) / 2, timeLine.den, inputRate_));
    }
    hasBegun_ = true;
    first_ = first;
    return std::nullopt;
  }

  /// Returns true if sound is missing before the one that was prepared for.
  [[nodiscard]] bool hasGap() const noexcept { return first_ > next_; }

  /// Fills up to a second of it.
  [[nodiscard]] Failure fillGap() { return fill(std::min<std::int64_t>(first_ - next_, inputRate_)); }

  /// Takes the sound that was prepared for.
  [[nodiscard]] Failure take(const AVFrame& sound) {
    const std::int64_t cut = std::min<std::int64_t>(next_ - first_, sound.nb_samples);
    if (cut == sound.nb_samples) return std::nullopt;
    return convert(sound, static_cast<int>(cut));
  }

  /// Adds silence of this many samples at the target's rate. `channels` is their number while no sound has come.
  [[nodiscard]] Failure addSilence(std::int64_t samples, int channels) {
    if (inputRate_ > 0) return fill(av_rescale_rnd(samples, inputRate_, target_.rate, AV_ROUND_UP));
    if (auto failure = prepareSilence(channels)) return failure;
    earlier_ += samples;
    return appendSilence(samples);
  }

  /// Converts what the resampler still has, and cuts or fills the rest to `length` samples in all.
  [[nodiscard]] Failure finish(std::int64_t length) {
    if (converter_) {
      if (auto failure = drain()) return failure;
    }
    const std::int64_t missing = length - taken_ - available();
    if (missing < 0) {
      // What was taken cannot be taken back, and is never more than what is wanted by then.
      trim_ = std::max<std::int64_t>(length - taken_, 0);
      return std::nullopt;
    }
    silence_ = missing;
    return std::nullopt;
  }

  /// Copies samples into planes, one a channel.
  [[nodiscard]] bool read(std::span<std::uint8_t*> planes, int samples) {
    std::vector<void*> targets(planes.begin(), planes.end());
    const int kept = std::min(samples, available());
    if (av_audio_fifo_read(fifo_.get(), targets.data(), kept) != kept) return false;
    for (std::uint8_t* const plane : planes) {
      std::uint8_t* one = plane;
      av_samples_set_silence(&one, kept, samples - kept, 1, target_.planarFormat);
    }
    silence_ -= samples - kept;
    taken_ += samples;
    if (trim_) *trim_ -= samples;
    return true;
  }

  /// Returns how many samples can be taken.
  [[nodiscard]] std::int64_t rest() const noexcept {
    return std::min<std::int64_t>(available() + silence_, trim_.value_or(std::numeric_limits<std::int64_t>::max()));
  }

  /// Prepares an origin that never sounds.
  [[nodiscard]] Failure prepareSilence(int channels) {
    if (fifo_) return std::nullopt;
    outputChannels_ = channels;
    fifo_.reset(av_audio_fifo_alloc(target_.planarFormat, channels, target_.rate));
    return fifo_ ? Failure() : Failure(noMemory);
  }

 private:
  /// Opens the converter for the format of the sound; again where the format changes.
  [[nodiscard]] Failure prepare(const AVFrame& sound) {
    if (converter_ && sound.format == inputFormat_ && sound.sample_rate == inputRate_ &&
        sound.ch_layout.nb_channels == inputChannels_) {
      return std::nullopt;
    }
    if (converter_) {
      if (sound.ch_layout.nb_channels != inputChannels_) {
        return "its channels change from " + std::to_string(inputChannels_) + " to " +
               std::to_string(sound.ch_layout.nb_channels);
      }
      if (auto failure = drain()) return failure;
      earlier_ = expected();
      base_ = next_ = av_rescale(next_, sound.sample_rate, inputRate_);
    }
    return open(sound);
  }

  [[nodiscard]] Failure open(const AVFrame& sound) {
    // Of a track that was silent until now.
    if (inputRate_ == 0) base_ = next_ = av_rescale(earlier_, sound.sample_rate, target_.rate);
    inputFormat_ = sound.format;
    inputRate_ = sound.sample_rate;
    inputChannels_ = sound.ch_layout.nb_channels;
    const bool isPlaced = static_cast<std::size_t>(inputChannels_) == target_.sourceChannels.size();
    const ChannelOrder order = isPlaced ? channelOrder(target_.sourceChannels) : unplacedOrder(inputChannels_);
    const bool isMixed = isPlaced && !target_.channels.empty();
    const ChannelOrder mixed = isMixed ? channelOrder(target_.channels) : ChannelOrder();
    const ChannelOrder& wanted = isMixed ? mixed : order;
    const int channels = isMixed ? static_cast<int>(target_.channels.size()) : inputChannels_;
    if (fifo_ && channels != outputChannels_) {
      return "its channels are " + std::to_string(channels) + " where " + std::to_string(outputChannels_) +
             " were planned";
    }
    outputChannels_ = channels;
    SwrContext* converter = nullptr;
    const LogCollector log;
    const auto failure = [&log] { return log.firstError().empty() ? std::string(noMemory) : log.firstError(); };
    if (swr_alloc_set_opts2(&converter, wanted.layout.get(), target_.planarFormat, target_.rate, order.layout.get(),
                            static_cast<AVSampleFormat>(sound.format), sound.sample_rate, 0, nullptr) < 0) {
      return failure();
    }
    converter_.reset(converter);
    const bool mixes = av_channel_layout_compare(wanted.layout.get(), order.layout.get()) != 0;
    setOptions(static_cast<AVSampleFormat>(sound.format), mixes || sound.sample_rate != target_.rate);
    if (!order.map.empty() && swr_set_channel_mapping(converter, order.map.data()) < 0) return failure();
    if (swr_init(converter) < 0) {
      // A build without soxr resamples by itself.
      av_opt_set_int(converter, "resampler", SWR_ENGINE_SWR, 0);
      if (swr_init(converter) < 0) return failure();
    }
    if (!fifo_) fifo_.reset(av_audio_fifo_alloc(target_.planarFormat, outputChannels_, target_.rate));
    return fifo_ ? Failure() : Failure(noMemory);
  }

  /// Computes in floating point where samples change, and dithers where bits are lost.
  void setOptions(AVSampleFormat format, bool changesSamples) {
    SwrContext* const converter = converter_.get();
    const bool isDeep = av_get_bytes_per_sample(format) > 2 || av_get_bytes_per_sample(target_.planarFormat) > 2;
    if (changesSamples) {
      av_opt_set_sample_fmt(converter, "internal_sample_fmt", isDeep ? AV_SAMPLE_FMT_DBLP : AV_SAMPLE_FMT_FLTP, 0);
      av_opt_set_int(converter, "resampler", SWR_ENGINE_SOXR, 0);
      constexpr double bestPrecision = 28;
      av_opt_set_double(converter, "precision", bestPrecision, 0);
    }
    const bool isReduced = av_get_bytes_per_sample(format) > av_get_bytes_per_sample(target_.planarFormat);
    const bool isRounded = changesSamples || isFloat(format);
    if (isFloat(target_.planarFormat) || !(isReduced || isRounded)) return;
    av_opt_set_int(converter, "dither_method", SWR_DITHER_TRIANGULAR, 0);
    if (target_.bits > 0 && target_.bits < 8 * av_get_bytes_per_sample(target_.planarFormat)) {
      av_opt_set_int(converter, "output_sample_bits", target_.bits, 0);
    }
  }

  [[nodiscard]] Failure convert(const AVFrame& sound, int skipped) {
    const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(sound.format)) != 0;
    const int step =
        av_get_bytes_per_sample(static_cast<AVSampleFormat>(sound.format)) * (isPlanar ? 1 : inputChannels_);
    std::vector<const std::uint8_t*> planes(static_cast<std::size_t>(isPlanar ? inputChannels_ : 1));
    for (std::size_t plane = 0; plane < planes.size(); ++plane) {
      planes[plane] = sound.extended_data[plane] + static_cast<std::ptrdiff_t>(step) * skipped;
    }
    const int samples = sound.nb_samples - skipped;
    next_ += samples;
    return convert(planes.data(), samples);
  }

  /// Gives samples to the converter, none for its rest, and keeps what it returns.
  [[nodiscard]] Failure convert(const std::uint8_t** planes, int samples) {
    const int most = swr_get_out_samples(converter_.get(), samples);
    if (most < 0) return "it cannot be converted";
    Buffer buffer(target_.planarFormat, outputChannels_, std::max(most, 1));
    if (!buffer.isValid()) return noMemory;
    const int count = swr_convert(converter_.get(), buffer.planes.data(), std::max(most, 1), planes, samples);
    if (count < 0) return "it cannot be converted";
    return append(buffer, count);
  }

  [[nodiscard]] Failure drain() { return convert(nullptr, 0); }

  /// Gives silence to the converter, so that it goes over into sound smoothly.
  [[nodiscard]] Failure fill(std::int64_t samples) {
    const auto format = static_cast<AVSampleFormat>(inputFormat_);
    while (samples > 0) {
      const int count = static_cast<int>(std::min<std::int64_t>(samples, inputRate_));
      Buffer silence(format, inputChannels_, count);
      if (!silence.isValid() || !silence.clear(format, inputChannels_, count)) return noMemory;
      std::vector<const std::uint8_t*> planes(silence.planes.begin(), silence.planes.end());
      if (auto failure = convert(planes.data(), count)) return failure;
      samples -= count;
      next_ += count;
    }
    return std::nullopt;
  }

  [[nodiscard]] Failure appendSilence(std::int64_t samples) {
    while (samples > 0) {
      const int count = static_cast<int>(std::min<std::int64_t>(samples, target_.rate));
      Buffer silence(target_.planarFormat, outputChannels_, count);
      if (!silence.isValid() || !silence.clear(target_.planarFormat, outputChannels_, count)) return noMemory;
      if (auto failure = append(silence, count)) return failure;
      samples -= count;
    }
    return std::nullopt;
  }

  /// Memory for samples of a format.
  struct Buffer {
    std::vector<std::uint8_t*> planes;

    Buffer(AVSampleFormat format, int channels, int samples)
        : planes(static_cast<std::size_t>(av_sample_fmt_is_planar(format) != 0 ? channels : 1)) {
      if (av_samples_alloc(planes.data(), nullptr, channels, samples, format, 0) < 0) planes.front() = nullptr;
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    Buffer(Buffer&&) = delete;
    Buffer& operator=(Buffer&&) = delete;
    ~Buffer() { av_free(planes.front()); }

    [[nodiscard]] bool isValid() const noexcept { return planes.front() != nullptr; }
    [[nodiscard]] bool clear(AVSampleFormat format, int channels, int samples) {
      return av_samples_set_silence(planes.data(), 0, samples, channels, format) >= 0;
    }
  };

  [[nodiscard]] Failure append(Buffer& buffer, int samples) {
    std::vector<void*> planes(buffer.planes.begin(), buffer.planes.end());
    return av_audio_fifo_write(fifo_.get(), planes.data(), samples) == samples ? Failure() : Failure(noMemory);
  }

  SoundTarget target_;
  ConverterPointer converter_;
  FifoPointer fifo_;
  int inputFormat_ = AV_SAMPLE_FMT_NONE;
  int inputRate_ = 0;
  int inputChannels_ = 0;
  int outputChannels_ = 0;
  bool hasBegun_ = false;
  /// The next sample of the source, at its own rate.
  std::int64_t next_ = 0;
  /// The first sample of the sound that was prepared for.
  std::int64_t first_ = 0;
  /// Where the current rate began, and the samples of the target until then.
  std::int64_t base_ = 0;
  std::int64_t earlier_ = 0;
  Occurrences filled_;
  std::int64_t taken_ = 0;
  /// Silence after all sound, which needs no memory.
  std::int64_t silence_ = 0;
  /// How many samples are still wanted; absent until the end.
  std::optional<std::int64_t> trim_;
};

class TrackChain final : public AudioChain {
 public:
  TrackChain(const PlannedAudioTrack& track, std::size_t samplesPerFrame, std::string path)
      : track_(track),
        format_(av_get_sample_fmt(track.sampleFormat.c_str())),
        rate_(static_cast<int>(track.sampleRate)),
        samplesPerFrame_(static_cast<int>(samplesPerFrame)),
        path_(std::move(path)) {}

  [[nodiscard]] std::optional<TranscodeRunError> open() {
    if (format_ == AV_SAMPLE_FMT_NONE) return soundError("the sample format is not known");
    SoundTarget target{.planarFormat = av_get_planar_sample_fmt(format_),
                       .rate = rate_,
                       .bits = static_cast<int>(track_.bits.value_or(0)),
                       .sourceChannels = {},
                       .channels = {}};
    if (track_.origins.size() == 1 && !track_.sourceChannels.empty()) {
      target.sourceChannels = track_.sourceChannels;
      target.channels = track_.channels;
    }
    for (std::size_t origin = 0; origin < track_.origins.size(); ++origin) origins_.emplace_back(target);
    return std::nullopt;
  }

  std::optional<TranscodeRunError> take(std::size_t origin, const AVFrame& sound, Ticks time, SoundSink sink) override {
    OriginSound& taking = origins_[origin];
    if (auto failure = taking.begin(sound, time)) return soundError(*failure);
    // However long a gap is, it is not kept in memory.
    while (taking.hasGap()) {
      if (auto failure = taking.fillGap()) return soundError(*failure);
      if (auto failure = fillLaggards()) return soundError(*failure);
      if (auto error = handOn(false, sink)) return error;
    }
    if (auto failure = taking.take(sound)) return soundError(*failure);
    if (auto failure = fillLaggards()) return soundError(*failure);
    return handOn(false, sink);
  }

  std::optional<TranscodeRunError> finish(std::optional<Ticks> end, SoundSink sink) override {
    std::int64_t length = 0;
    for (const OriginSound& origin : origins_) length = std::max(length, origin.expected());
    if (end) length = av_rescale_rnd(*end, rate_, timeLine.den, AV_ROUND_NEAR_INF);
    for (OriginSound& origin : origins_) {
      if (auto failure = origin.prepareSilence(channelsOfSilentOrigin())) return soundError(*failure);
      if (auto failure = origin.finish(length)) return soundError(*failure);
    }
    return handOn(true, sink);
  }

  [[nodiscard]] FilledSound filledSound() const override {
    const auto most =
        std::ranges::max_element(origins_, {}, [](const OriginSound& origin) { return origin.filled().count; });
    return {static_cast<std::size_t>(most - origins_.begin()), most->filled()};
  }

 private:
  [[nodiscard]] TranscodeRunError soundError(std::string reason) const {
    return {TranscodeRunErrorCode::soundNotConverted, path_, std::move(reason)};
  }

  /// An origin without any sound has the channels that the others leave.
  [[nodiscard]] int channelsOfSilentOrigin() const {
    int known = 0;
    int silent = 0;
    for (const OriginSound& origin : origins_) {
      known += origin.channels();
      silent += origin.channels() == 0 ? 1 : 0;
    }
    return silent == 0 ? 1 : std::max((static_cast<int>(track_.channelCount) - known) / silent, 1);
  }

  /// Fills an origin that lags behind another by more than ten seconds, as one that has ended does, so that the others
  /// need not be kept.
  [[nodiscard]] Failure fillLaggards() {
    if (origins_.size() < 2) return std::nullopt;
    const int silentChannels = channelsOfSilentOrigin();
    int least = std::numeric_limits<int>::max();
    int most = 0;
    for (const OriginSound& origin : origins_) {
      least = std::min(least, origin.available());
      most = std::max(most, origin.available());
    }
    constexpr int greatestLag = 10;
    if (most - least <= greatestLag * rate_) return std::nullopt;
    const int wanted = most - greatestLag / 2 * rate_;
    for (OriginSound& origin : origins_) {
      if (auto failure = origin.addSilence(std::max(wanted - origin.available(), 0), silentChannels)) return failure;
    }
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> handOn(bool isEnd, SoundSink sink) {
    // Any number of samples would do for linear PCM; whole tenths of a second keep packets few.
    const int size = samplesPerFrame_ > 0 ? samplesPerFrame_ : std::max(rate_ / 10, 1);
    for (;;) {
      std::int64_t count = size;
      for (const OriginSound& origin : origins_) count = std::min(count, origin.rest());
      if (count <= 0 || (count < size && !isEnd)) return std::nullopt;
      FramePointer frame = nextFrame(static_cast<int>(count));
      if (!frame) return soundError(noMemory);
      frame->pts = next_;
      next_ += count;
      if (auto error = sink(std::move(frame))) return error;
    }
  }

  /// Returns the next sound of all origins side by side; null without memory.
  [[nodiscard]] FramePointer nextFrame(int samples) {
    int channels = 0;
    for (const OriginSound& origin : origins_) channels += origin.channels();
    const int wanted = std::max(static_cast<int>(track_.channelCount), channels);
    FramePointer planar = newSound(av_get_planar_sample_fmt(format_), wanted, samples);
    if (!planar) return nullptr;
    std::size_t first = 0;
    for (OriginSound& origin : origins_) {
      const auto count = static_cast<std::size_t>(origin.channels());
      if (!origin.read({planar->extended_data + first, count}, samples)) return nullptr;
      first += count;
    }
    // Channels that are asked for beyond those of the sources.
    for (auto channel = first; channel < static_cast<std::size_t>(wanted); ++channel) {
      av_samples_set_silence(planar->extended_data + channel, 0, samples, 1, av_get_planar_sample_fmt(format_));
    }
    if (av_sample_fmt_is_planar(format_) != 0) return planar;
    FramePointer packed = newSound(format_, wanted, samples);
    if (packed) interleave(*planar, *packed);
    return packed;
  }

  [[nodiscard]] FramePointer newSound(AVSampleFormat format, int channels, int samples) const {
    FramePointer frame(av_frame_alloc());
    if (!frame) return nullptr;
    frame->format = format;
    frame->sample_rate = rate_;
    frame->nb_samples = samples;
    const bool isPlaced = track_.channels.size() == static_cast<std::size_t>(channels);
    const ChannelOrder order = isPlaced ? channelOrder(track_.channels) : unplacedOrder(channels);
    if (av_channel_layout_copy(&frame->ch_layout, order.layout.get()) < 0) return nullptr;
    return av_frame_get_buffer(frame.get(), 0) < 0 ? nullptr : std::move(frame);
  }

  static void interleave(const AVFrame& planar, AVFrame& packed) noexcept {
    const auto size = static_cast<std::size_t>(av_get_bytes_per_sample(static_cast<AVSampleFormat>(packed.format)));
    const auto channels = static_cast<std::size_t>(packed.ch_layout.nb_channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
      const std::uint8_t* from = planar.extended_data[channel];
      std::uint8_t* to = packed.data[0] + channel * size;
      for (int sample = 0; sample < planar.nb_samples; ++sample, from += size, to += channels * size) {
        std::memcpy(to, from, size);
      }
    }
  }

  const PlannedAudioTrack& track_;
  AVSampleFormat format_;
  int rate_;
  int samplesPerFrame_;
  std::string path_;
  std::vector<OriginSound> origins_;
  std::int64_t next_ = 0;
};

}  // namespace

Expected<std::unique_ptr<AudioChain>, TranscodeRunError> AudioChain::open(const PlannedAudioTrack& track,
                                                                          std::size_t samplesPerFrame,
                                                                          std::string path) {
  auto chain = std::make_unique<TrackChain>(track, samplesPerFrame, std::move(path));
  if (auto error = chain->open()) return Unexpected(*std::move(error));
  return chain;
}

}  // namespace meridian::inline v0_2::libav
