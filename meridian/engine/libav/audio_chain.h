/// \file
/// Makes the sound of an output track out of the decoded sound of its origins. For example:
///
///     auto chain = AudioChain::open(track, encoder.samplesPerFrame());
///     (*chain)->take(0, *frame, time, [&](FramePointer sound) { return encoder.encode(std::move(sound)); });
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "meridian/base/expected.h"
#include "meridian/base/function_ref.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/time_line.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/engine/transcode_run_error.h"

namespace meridian::inline v0_2::libav {

/// Receives sound for the encoder, in the planned sample format, rate and channel layout; the layout of discrete
/// channels has no places (AV_CHANNEL_ORDER_UNSPEC). Its pts counts samples of the output from 0 without a gap. Returns
/// an error to stop.
using SoundSink = FunctionRef<std::optional<TranscodeRunError>(FramePointer sound)>;

/// Samples of silence that were put in the place of missing sound between other sound, for the origin that lacks most.
struct FilledSound {
  std::size_t origin = 0;
  Occurrences samples;
};

/// The conversion of one audio track that is encoded: sample rate, channels, sample format.
class AudioChain {
 public:
  /// Prepares the conversion. `samplesPerFrame` is what the encoder takes at a time; 0 if it takes any number. `path`
  /// is what errors name. The track must outlive the chain.
  [[nodiscard]] static Expected<std::unique_ptr<AudioChain>, TranscodeRunError> open(const PlannedAudioTrack& track,
                                                                                     std::size_t samplesPerFrame,
                                                                                     std::string path);
  AudioChain() = default;
  AudioChain(const AudioChain&) = delete;
  AudioChain& operator=(const AudioChain&) = delete;
  AudioChain(AudioChain&&) = delete;
  AudioChain& operator=(AudioChain&&) = delete;
  virtual ~AudioChain() = default;

  /// Takes decoded sound of an origin whose first sample sounds at `time`. Sound before 0 is cut; sound that is missing
  /// between is silence; sound that overlaps what came before is cut at its beginning. Deviations that are the rounding
  /// of a container's time stamps change nothing.
  [[nodiscard]] virtual std::optional<TranscodeRunError> take(std::size_t origin, const AVFrame& sound, Ticks time,
                                                              SoundSink sink) = 0;

  /// Hands on what is left after the last sound. With `end`, the track is cut or filled with silence up to that time;
  /// without, it ends with the last sound of its longest origin.
  [[nodiscard]] virtual std::optional<TranscodeRunError> finish(std::optional<Ticks> end, SoundSink sink) = 0;

  [[nodiscard]] virtual FilledSound filledSound() const = 0;
};

}  // namespace meridian::inline v0_2::libav
