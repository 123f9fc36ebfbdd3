/// \file
/// Finds and decodes the frame that is shown at a part of a stream's duration.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/libav/decoding_handles.h"
#include "meridian/engine/libav/log_collector.h"
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
/// The packets' timestamps say which frame it is before they are decoded. So packets that neither are the frame
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

  /// Returns the frame at a part of the duration, from 0 to 1. A frame that is damaged, or that may refer to one that
  /// is, is an error, and is not replaced by its neighbour.
  [[nodiscard]] Expected<FoundFrame, MediaSnapshotError> find(double location, const std::stop_token& stop);

 private:
  /// What came of looking from one key frame on. Without a frame and without an end the place was not good enough.
  struct Attempt {
    FramePointer frame;
    std::optional<MediaSnapshotErrorCode> end;
  };

  /// Counts the time of a call against the limit; the time between calls does not count.
  class TimedWork {
   public:
    explicit TimedWork(FrameFinder& finder) noexcept;
    TimedWork(const TimedWork&) = delete;
    TimedWork& operator=(const TimedWork&) = delete;
    TimedWork(TimedWork&&) = delete;
    TimedWork& operator=(TimedWork&&) = delete;
    ~TimedWork();

   private:
    FrameFinder& finder_;
    std::chrono::steady_clock::time_point begin_;
  };

  FrameFinder(std::string path, int stream, bool endsEarly, const DescriptionLimits& limits);

  [[nodiscard]] MediaSnapshotError failure(MediaSnapshotErrorCode code, std::string detail = {}) const;
  /// Returns the error with what FFmpeg said.
  [[nodiscard]] MediaSnapshotError explained(MediaSnapshotErrorCode code, const LogCollector& log) const;
  [[nodiscard]] AVStream& stream() noexcept { return *input_->context().streams[stream_]; }

  [[nodiscard]] std::optional<MediaSnapshotError> openInput();
  [[nodiscard]] std::optional<MediaSnapshotError> openDecoder();
  void readTimes();

  /// Reads the next packet of the stream; null at the end, and where `readingEnd_` says why not.
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

  /// Send to and receive from the decoder, and note what is damaged. A null packet is the end.
  void send(const AVPacket* packet);
  [[nodiscard]] int receive(AVFrame& frame);
  /// Notes that a packet or frame with this timestamp is damaged.
  void noteError(std::int64_t time);
  /// True if neither the frame nor a frame that it may refer to is known to be damaged.
  [[nodiscard]] bool isSound(const AVFrame& frame) const;
  /// True if a frame with the first timestamp is what a packet with the second one shows: the packet may be a field.
  [[nodiscard]] bool isFrameOf(std::int64_t frame, std::int64_t packet) const;
  [[nodiscard]] Attempt decodePlanned(std::int64_t target, const std::stop_token& stop);
  [[nodiscard]] Attempt decodeAll(std::int64_t target, bool isStart, const std::stop_token& stop);
  [[nodiscard]] Attempt findFrom(std::int64_t target, const std::stop_token& stop);
  [[nodiscard]] Expected<FoundFrame, MediaSnapshotError> findByCounting(double location, const std::stop_token& stop);

  std::string path_;
  int stream_;
  bool endsEarly_;
  DescriptionLimits limits_;
  std::chrono::milliseconds timeLeft_;
  std::chrono::steady_clock::time_point deadline_;

  std::unique_ptr<MediaInput> input_;
  const QuietDecoding quiet_;
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
  /// Why reading ended before the end: a limit or an error of the file.
  std::optional<MediaSnapshotErrorCode> readingEnd_;
  /// True if what follows could not be made out.
  bool isCutShort_ = false;

  /// The timestamp of the last key packet that was sent. What is shown before it may refer to earlier frames, what
  /// follows it refers neither to those nor to earlier ones.
  std::optional<std::int64_t> keyTime_;
  std::int64_t sentTime_ = AV_NOPTS_VALUE;
  /// True if a frame since the last key frame is damaged, and if one is to which frames refer that are shown before it.
  bool isBroken_ = false;
  bool areLeadingBroken_ = false;
  std::int64_t errorCount_ = 0;
  /// The timestamps of the packets from the last key packet on, in the order of decoding.
  std::vector<std::int64_t> sentSinceKey_;
  /// The timestamps of damaged frames and of those that may refer to one.
  std::set<std::int64_t> doubtful_;

  /// True if a packet was read that no frame at or before the target can follow.
  bool isDecided_ = false;
  std::deque<PacketPointer> ahead_;
  std::int64_t lastDecodingTime_ = 0;
  /// When the frames of the packets that were read are shown, without those that are before the frame to find.
  std::vector<std::int64_t> shown_;
  FramePointer last_;
};

}  // namespace meridian::inline v0_2::libav
