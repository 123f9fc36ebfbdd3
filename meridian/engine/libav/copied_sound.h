/// \file
/// Joins the copied sound of the parts of a clip, packet by packet. For example:
///
///     CopiedSound sound(parameters);
///     sound.beginPart(begin, end);                        // where the part begins, and ends unless it is the last
///     if (sound.fit(*packet)) write(std::move(packet));   // placed; dropped if there is no room for it
#pragma once

#include <cstdint>
#include <optional>

#include "meridian/engine/libav/handles.h"
#include "meridian/engine/libav/time_line.h"

namespace meridian::inline v0_2::libav {

/// Returns the bytes of a sample of all channels of linear PCM; 0 for other codecs.
[[nodiscard]] int linearFrameSize(const AVCodecParameters& parameters) noexcept;

/// The packets of one track. Those of a part follow each other. At a join, linear PCM is cut to the sample; packets of
/// coded sound stay whole, so that they are up to half a packet early or late, which does not add up over many parts.
class CopiedSound {
 public:
  explicit CopiedSound(const AVCodecParameters& parameters)
      : parameters_(parameters), frameSize_(linearFrameSize(parameters)) {}

  /// Begins a part at a time. `end` is where the next part begins; absent for the last part.
  void beginPart(Ticks begin, std::optional<Ticks> end);

  /// Places a packet, whose times are those of the part moved to its begin; false if it is to be dropped.
  [[nodiscard]] bool fit(AVPacket& packet);

  /// Returns silence of linear PCM that is missing before the packet that was fitted last; null for none.
  [[nodiscard]] PacketPointer takeSilence();

  /// Returns how much sound was cut at the end of parts so far.
  [[nodiscard]] Ticks cut() const noexcept { return cut_; }

 private:
  [[nodiscard]] bool fitSamples(AVPacket& packet);
  [[nodiscard]] bool fitCoded(AVPacket& packet);
  [[nodiscard]] std::int64_t samplesOf(Ticks duration) const noexcept;

  const AVCodecParameters& parameters_;
  int frameSize_;
  /// Where the next packet follows the one before it; absent before the first.
  std::optional<Ticks> next_;
  Ticks begin_ = 0;
  std::optional<Ticks> end_;
  bool isFirstPart_ = true;
  /// How far the packets of this part are moved to follow the last one of the part before it; absent before the first.
  std::optional<Ticks> shift_;
  Ticks packetDuration_ = 0;
  Ticks cut_ = 0;
  PacketPointer silence_;
};

}  // namespace meridian::inline v0_2::libav
