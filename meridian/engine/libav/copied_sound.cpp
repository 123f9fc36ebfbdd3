#include "meridian/engine/libav/copied_sound.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace meridian::inline v0_2::libav {

int linearFrameSize(const AVCodecParameters& parameters) noexcept {
  const bool isLinear =
      parameters.codec_id >= AV_CODEC_ID_FIRST_AUDIO && parameters.codec_id < AV_CODEC_ID_ADPCM_IMA_QT;
  return isLinear ? av_get_exact_bits_per_sample(parameters.codec_id) * parameters.ch_layout.nb_channels / 8 : 0;
}

void CopiedSound::beginPart(Ticks begin, std::optional<Ticks> end) {
  isFirstPart_ = !next_ && !shift_;
  begin_ = begin;
  end_ = end;
  shift_.reset();
}

std::int64_t CopiedSound::samplesOf(Ticks duration) const noexcept {
  return av_rescale(duration, parameters_.sample_rate, timeLine.den);
}

bool CopiedSound::fit(AVPacket& packet) { return frameSize_ > 0 ? fitSamples(packet) : fitCoded(packet); }

bool CopiedSound::fitSamples(AVPacket& packet) {
  const std::int64_t rate = parameters_.sample_rate;
  std::int64_t samples = packet.size / frameSize_;
  std::int64_t first = samplesOf(packet.pts);
  // Sound before the first image of the clip stays, as the container can place it there.
  const std::int64_t from = next_ ? std::max(samplesOf(*next_), isFirstPart_ ? first : samplesOf(begin_)) : first;
  // Time stamps of some containers are rounded to milliseconds.
  const std::int64_t tolerance = rate / 500 + 1;
  if (next_ && std::abs(first - samplesOf(*next_)) <= tolerance) first = samplesOf(*next_);
  const std::int64_t early = std::clamp<std::int64_t>(from - first, 0, samples);
  const std::int64_t late = end_ ? std::clamp<std::int64_t>(first + samples - samplesOf(*end_), 0, samples - early) : 0;
  cut_ += av_rescale(late, timeLine.den, rate);
  samples -= early + late;
  if (samples <= 0) return false;
  first += early;
  packet.data += early * frameSize_;
  packet.size = static_cast<int>(samples * frameSize_);
  packet.pts = packet.dts = av_rescale(first, timeLine.den, rate);
  packet.duration = av_rescale(samples, timeLine.den, rate);
  const std::int64_t missing = next_ ? first - samplesOf(*next_) : 0;
  // A minute is more than any join lacks; more is the file's own silence.
  if (missing > 0 && missing < rate * 60) {
    silence_.reset(av_packet_alloc());
    const auto size = static_cast<int>(missing * frameSize_);
    if (silence_ && av_new_packet(silence_.get(), size) == 0) {
      constexpr int middleOfUnsigned = 0x80;
      std::memset(silence_->data, parameters_.codec_id == AV_CODEC_ID_PCM_U8 ? middleOfUnsigned : 0,
                  static_cast<std::size_t>(size));
      silence_->pts = silence_->dts = *next_;
      silence_->duration = packet.pts - *next_;
      silence_->flags |= AV_PKT_FLAG_KEY;
    }
  }
  next_ = packet.pts + packet.duration;
  return true;
}

bool CopiedSound::fitCoded(AVPacket& packet) {
  // The last packet of a file states how much of it is heard; decoders give all of it.
  packetDuration_ = std::max(packetDuration_, packet.duration);
  const Ticks half = packetDuration_ / 2;
  if (end_ && packet.pts + shift_.value_or(0) + half > *end_) {
    cut_ += packet.duration;
    return false;
  }
  if (!shift_) {
    // A packet that overlaps what comes before by more than half is dropped, and the next one is looked at.
    const Ticks room = next_ ? *next_ : packet.pts;
    if (!isFirstPart_ && packet.pts < std::max(room, begin_) - half) return false;
    const Ticks gap = packet.pts - room;
    shift_ = next_ && gap <= half ? -gap : 0;
  }
  packet.pts += *shift_;
  packet.dts = packet.pts;
  next_ = packet.pts + packetDuration_;
  return true;
}

PacketPointer CopiedSound::takeSilence() { return std::move(silence_); }

}  // namespace meridian::inline v0_2::libav
