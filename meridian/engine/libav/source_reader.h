/// \file
/// Reads the sources of a transcode: decoded images and sound, and packets that are copied, on one time line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/time_line.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/engine/transcode_run_error.h"

namespace meridian::inline v0_2::libav {

/// A decoded image of the group that gives the image.
struct SourceImage {
  FramePointer frame;
  /// When it is shown, from the first image of the first part, and for how long. Images come in the order of display.
  Ticks time = 0;
  Ticks duration = 0;
  /// The number of the part that it is from, from 0.
  std::size_t part = 0;
  /// The place of its stream among the others that are wanted; absent for the main images.
  std::optional<std::size_t> otherVideo = std::nullopt;
};

/// Decoded sound of one origin of an audio track of the output that is encoded.
struct SourceSound {
  /// The audio track of the plan and the origin within it, both from 0.
  std::size_t track = 0;
  std::size_t origin = 0;
  FramePointer frame;
  /// When its first sample sounds; may be below 0 for sound that begins before the first image, which is not heard.
  Ticks time = 0;
};

/// A packet of a stream that is copied.
struct CopiedPacket {
  /// The audio track of the plan; absent for video.
  std::optional<std::size_t> track;
  /// With pts, dts and duration in ticks of the time line.
  PacketPointer packet;
};

using SourceItem = std::variant<SourceImage, SourceSound, CopiedPacket>;

/// How a copied stream is described to the output.
struct CopiedStream {
  const AVCodecParameters* parameters = nullptr;
  /// Of a stream of images; 0/1 if it is not known.
  AVRational frameRate{0, 1};
  /// The source's display matrix, if it has one: nine numbers of 32 bits.
  std::vector<std::uint8_t> displayMatrix{};
};

/// Is told of damage: its time, the audio track, which is absent for images and for the file as a whole, and FFmpeg's
/// reason.
using DamageBlock = std::function<void(Ticks time, std::optional<std::size_t> track, std::string_view reason)>;

/// What a reader goes by beside the plan.
struct ReadingOptions {
  bool acceptsDamaged = false;
  std::stop_token stop = {};
  /// Threads of each decoder; 0 for as many as there are cores.
  unsigned threads = 0;
  /// Decodes one image after the other, so that the time of damage is exact; threads share an image where they can.
  bool decodesInTurn = false;
  /// Is told of each damage that is accepted, if it is set; there are no warnings of it then.
  DamageBlock notesDamage = {};
};

/// Reads all groups and parts of a plan. Parts of a group follow each other without a gap: each begins where the one
/// before it ends. Groups begin together. Images, sound and packets come roughly in the order of time.
///
/// A packet or frame that cannot be decoded, a part that ends before it should, a part whose streams are not those of
/// the plan: each is an error, or with `acceptsDamaged` a warning where something is left to go on with.
class SourceReader {
 public:
  [[nodiscard]] static Expected<std::unique_ptr<SourceReader>, TranscodeRunError> open(const TranscodePlan& plan,
                                                                                       const ReadingOptions& options);
  SourceReader() = default;
  SourceReader(const SourceReader&) = delete;
  SourceReader& operator=(const SourceReader&) = delete;
  SourceReader(SourceReader&&) = delete;
  SourceReader& operator=(SourceReader&&) = delete;
  virtual ~SourceReader() = default;

  /// Returns the next item; nothing at the end of all sources.
  [[nodiscard]] virtual Expected<std::optional<SourceItem>, TranscodeRunError> next() = 0;

  /// Returns the description of a stream that is copied: of video without a track. It ends with the reader.
  [[nodiscard]] virtual CopiedStream copiedStream(std::optional<std::size_t> track) const = 0;

  /// Returns the time at which the images of all parts end, as far as they were read.
  [[nodiscard]] virtual Ticks imageEnd() const = 0;

  /// Returns the file that an image, or the sound of an origin of a track, is from at a time that was read.
  [[nodiscard]] virtual const std::string& imagePathAt(Ticks time) const = 0;
  [[nodiscard]] virtual const std::string& soundPathAt(std::size_t track, std::size_t origin, Ticks time) const = 0;

  /// Returns what was noticed so far.
  [[nodiscard]] virtual const std::vector<TranscodeRunWarning>& warnings() const = 0;
};

}  // namespace meridian::inline v0_2::libav
