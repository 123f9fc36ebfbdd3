/// \file
/// Finds and decodes the frame that is shown at a part of a stream's duration.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/media_input.h"
#include "meridian/engine/media_snapshot.h"

namespace meridian::inline v0_2::libav {

/// A decoded frame and when it is shown.
struct FoundFrame {
  FramePointer frame;
  /// Seconds from the start of the stream; absent without timestamps.
  std::optional<double> seconds;
  /// The number of the frame from 0, if frames were counted.
  std::optional<std::int64_t> number;
};

/// Finds frames of a stream of images by seeking to a key frame and decoding from there, and only forward.
///
/// Which frame it is, the timestamps of the packets tell before they are decoded. So packets that neither are the frame
/// nor are needed for it need not be decoded: all others of a codec whose frames stand alone, and in H.264 and MPEG-2
/// the frames that no other one refers to. Where that does not lead to the frame (packets without timestamps, key
/// frames that are none), all frames from further back on are decoded and their own timestamps decide. A stream without
/// duration or timestamps is counted through.
class FrameFinder {
 public:
  /// Opens a stream of the file for finding frames. `endsEarly` says that data is known to be missing at the end.
  [[nodiscard]] static Expected<std::unique_ptr<FrameFinder>, MediaSnapshotError> open(const std::string& path,
                                                                                       int stream, bool endsEarly,
                                                                                       const DescriptionLimits& limits);

  /// Returns the frame at a part of the duration, from 0 to 1.
  [[nodiscard]] Expected<FoundFrame, MediaSnapshotError> find(double location, const std::stop_token& stop);

 private:
  /// What came of looking from one key frame on. Without a frame and without an end the place was not good enough.
  struct Attempt {
    FramePointer frame;
    std::optional<MediaSnapshotErrorCode> end;
  };

  FrameFinder(std::string path, int stream, bool endsEarly, const DescriptionLimits& limits);

  [[nodiscard]] MediaSnapshotError failure(MediaSnapshotErrorCode code, std::string detail = {}) const;
  [[nodiscard]] AVStream& stream() noexcept { return *input_->context().streams[stream_]; }

  [[nodiscard]] std::optional<MediaSnapshotError> openInput();
  [[nodiscard]] std::optional<MediaSnapshotError> openDecoder();
  void readTimes();

  /// Reads the next packet of the stream; null at the end, which `readError_` tells from a limit.
  [[nodiscard]] PacketPointer nextPacket();
  void forgetPackets();
  /// Goes to a key frame that is shown at the target or before it; false if there is none from this place on.
  [[nodiscard]] bool goTo(std::int64_t place, std::int64_t target);
  [[nodiscard]] bool goToStart();
  /// True if going on from here is as short as seeking.
  [[nodiscard]] bool mayGoOn(std::int64_t target);

  void lookAhead(std::int64_t target);
  [[nodiscard]] std::optional<std::int64_t> wanted(std::int64_t target) const;
  [[nodiscard]] bool isUnneeded(const AVPacket& packet, std::int64_t target) const;
  void sendNext(std::int64_t target);
  [[nodiscard]] Attempt decodePlanned(std::int64_t target, const std::stop_token& stop);
  [[nodiscard]] Attempt decodeAll(std::int64_t target, const std::stop_token& stop);
  [[nodiscard]] Attempt findFrom(std::int64_t target, const std::stop_token& stop);
  [[nodiscard]] Expected<FoundFrame, MediaSnapshotError> findByCounting(double location, const std::stop_token& stop);

  std::string path_;
  int stream_;
  bool endsEarly_;
  DescriptionLimits limits_;
  std::chrono::steady_clock::time_point deadline_;

  std::unique_ptr<MediaInput> input_;
  CodecPointer decoder_;
  /// True for codecs whose every frame stands alone, and for those that mark the frames that no other one refers to.
  bool framesStandAlone_ = false;
  bool marksUnreferenced_ = false;
  std::int64_t start_ = 0;
  std::optional<std::int64_t> duration_;

  /// True until something is read or decoded.
  bool isAtStart_ = true;
  /// True after a planned attempt from which the next one may go on.
  bool isStreaming_ = false;
  bool isRead_ = false;
  bool isDrained_ = false;
  bool hasTimestamps_ = true;
  int readError_ = 0;
  /// True if a packet was read that no frame at or before the target can follow.
  bool isDecided_ = false;
  std::deque<PacketPointer> ahead_;
  std::int64_t lastDecodingTime_ = 0;
  /// When the frames of the packets that were read are shown, without those that are before the frame to find.
  std::vector<std::int64_t> shown_;
  FramePointer last_;
};

}  // namespace meridian::inline v0_2::libav
