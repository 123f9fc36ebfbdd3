/// \file
/// Measures the sound of a track frame by frame. For example:
///
///     SoundMeter meter(track);
///     while (auto sound = read()) meter.take(*sound->frame, sound->time);
///     const DeepAudioAnalysis found = meter.finish();
#pragma once

#include <ebur128.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "meridian/engine/deep_analysis.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/interval_list.h"
#include "meridian/engine/libav/media_digest.h"
#include "meridian/engine/libav/time_line.h"

namespace meridian::inline v0_2::libav {

/// The least and greatest samples of a track, in parts that get longer with it.
class WaveformMeter {
 public:
  explicit WaveformMeter(int sampleRate) noexcept : samplesPerPart_(sampleRate / 1000 + 1) {}

  /// Takes samples of all channels, interleaved.
  void take(std::span<const float> samples, std::size_t channels);
  /// Takes silence of this many samples a channel.
  void takeSilence(std::int64_t samples);

  [[nodiscard]] std::int64_t samplesPerPart() const noexcept { return samplesPerPart_; }
  [[nodiscard]] std::vector<WaveformPart> takeParts() noexcept { return std::move(parts_); }

 private:
  /// Adds to the last part, or begins another.
  void add(std::int64_t samples, const WaveformPart& part);
  void joinPairs();

  std::int64_t samplesPerPart_;
  /// The samples of the last part.
  std::int64_t inPart_ = 0;
  std::vector<WaveformPart> parts_;
};

/// Finds where all samples of all channels are below a level.
class SilenceMeter {
 public:
  explicit SilenceMeter(int sampleRate) noexcept : sampleRate_(sampleRate) {}

  void take(std::span<const float> samples, std::size_t channels, Ticks time);
  /// Takes silence that begins at a time.
  void takeSilence(Ticks time);
  [[nodiscard]] std::vector<MediaInterval> finish(Ticks end);

 private:
  int sampleRate_;
  std::optional<Ticks> start_;
  IntervalList silent_{2 * Ticks{timeLine.den}};
};

/// Measures loudness and peaks by libebur128.
class LoudnessMeter {
 public:
  /// Throws std::bad_alloc without memory; measures nothing of sound that the library does not take.
  LoudnessMeter(const AVChannelLayout& layout, int sampleRate);

  void take(std::span<const float> samples, std::size_t channels, Ticks time);
  /// Takes silence of this many samples a channel, which begins at a time.
  void takeSilence(std::int64_t samples, Ticks time);
  [[nodiscard]] std::optional<Loudness> loudness() const;
  [[nodiscard]] std::vector<LoudnessPoint> takeCurve() noexcept { return std::move(curve_); }

 private:
  struct Freer {
    void operator()(ebur128_state* state) const noexcept { ebur128_destroy(&state); }
  };

  void notePoint(Ticks time);

  std::unique_ptr<ebur128_state, Freer> state_;
  std::size_t samplesPerPoint_ = 0;
  /// The samples since the last point.
  std::size_t sincePoint_ = 0;
  double greatestMomentary_;
  double greatestShortTerm_;
  std::vector<LoudnessPoint> curve_;
};

/// Measures everything of one track.
class SoundMeter {
 public:
  explicit SoundMeter(std::size_t track) noexcept : track_(track) {}

  /// Takes the next sound. Returns why it is not measured; nothing if it is.
  [[nodiscard]] std::optional<std::string> take(const AVFrame& sound, Ticks time);

  [[nodiscard]] DeepAudioAnalysis finish();

 private:
  /// Takes silence for what is missing before sound that is heard at a time.
  void fillUntil(Ticks time);

  struct Meters {
    explicit Meters(const AVFrame& sound);

    WaveformMeter waveform;
    SilenceMeter silence;
    LoudnessMeter loudness;
  };

  std::size_t track_;
  int format_ = -1;
  int sampleRate_ = 0;
  int channels_ = 0;
  std::int64_t count_ = 0;
  /// Likewise, with the silence in place of missing sound.
  std::int64_t placed_ = 0;
  Ticks start_ = 0;
  Ticks end_ = 0;
  MediaDigest digest_;
  std::vector<float> samples_;
  std::optional<Meters> meters_;
};

}  // namespace meridian::inline v0_2::libav
