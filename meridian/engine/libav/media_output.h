/// \file
/// Encodes and writes the streams of a transcode into one file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "meridian/base/expected.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/source_reader.h"
#include "meridian/engine/transcode_plan.h"
#include "meridian/engine/transcode_run_error.h"
#include "meridian/platform/whole_file.h"

namespace meridian::inline v0_2::libav {

/// The encoders and the container of a transcode. Streams are in the order: video, audio tracks of the plan.
class MediaOutput {
 public:
  /// Opens encoders and the container, and writes its beginning. `source` describes the copied streams. `file` must
  /// outlive the output. `threads` as for a reader.
  [[nodiscard]] static Expected<std::unique_ptr<MediaOutput>, TranscodeRunError> open(const TranscodePlan& plan,
                                                                                      const SourceReader& source,
                                                                                      WholeFile& file,
                                                                                      unsigned threads);
  MediaOutput() = default;
  MediaOutput(const MediaOutput&) = delete;
  MediaOutput& operator=(const MediaOutput&) = delete;
  MediaOutput(MediaOutput&&) = delete;
  MediaOutput& operator=(MediaOutput&&) = delete;
  virtual ~MediaOutput() = default;

  /// Returns how many samples the encoder of a track takes at a time; 0 if it takes any number, or if it is copied.
  [[nodiscard]] virtual std::size_t samplesPerFrame(std::size_t track) const = 0;

  /// Encode an image, or sound of a track, whose pts are those of the chains; write a packet that is copied.
  [[nodiscard]] virtual std::optional<TranscodeRunError> writeImage(FramePointer image) = 0;
  [[nodiscard]] virtual std::optional<TranscodeRunError> writeSound(std::size_t track, FramePointer sound) = 0;
  [[nodiscard]] virtual std::optional<TranscodeRunError> writePacket(CopiedPacket packet) = 0;

  /// End one stream: no more of its images, sound or packets follow. The encoder's rest is written.
  [[nodiscard]] virtual std::optional<TranscodeRunError> endImages() = 0;
  [[nodiscard]] virtual std::optional<TranscodeRunError> endSound(std::size_t track) = 0;

  /// Writes what is left and the end of the container. Call it once, after all streams ended.
  [[nodiscard]] virtual std::optional<TranscodeRunError> finish() = 0;

  /// Returns the images that were encoded or copied so far.
  [[nodiscard]] virtual std::int64_t images() const = 0;
  /// Return the duration of the images and of the sound of a track.
  [[nodiscard]] virtual Ticks imageDuration() const = 0;
  [[nodiscard]] virtual Ticks soundDuration(std::size_t track) const = 0;
  /// Returns how far the stream is that is furthest.
  [[nodiscard]] virtual Ticks writtenTime() const = 0;
  [[nodiscard]] virtual std::uint64_t bytes() const = 0;
};

}  // namespace meridian::inline v0_2::libav
