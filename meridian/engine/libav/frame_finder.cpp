#include "meridian/engine/libav/frame_finder.h"

extern "C" {
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <thread>
#include <utility>

#include "meridian/engine/libav/log_collector.h"

namespace meridian::inline v0_2::libav {
namespace {

using enum MediaSnapshotErrorCode;

/// The last frame, whenever it is shown.
constexpr std::int64_t theEnd = std::numeric_limits<std::int64_t>::max();
/// More than any codec reorders, so that frames that are shown before a packet's are known when it is decoded.
constexpr std::size_t packetsAhead = 32;
/// The most pixels of a frame, as in a description: 16384 by 8192.
constexpr std::int64_t mostPixels = 134'217'728;
constexpr std::int64_t fromTheStart = -1;
/// How far back from the target a key frame is looked for, in seconds, if the nearer places have none or do not lead to
/// the frame, as one does not from which on an image is refreshed gradually.
constexpr auto stepsBack = std::to_array<std::int64_t>({0, 1, 4, 16, fromTheStart});

bool isShown(const AVPacket& packet) noexcept { return (packet.flags & AV_PKT_FLAG_DISCARD) == 0; }
bool isKey(const AVPacket& packet) noexcept { return (packet.flags & AV_PKT_FLAG_KEY) != 0; }

/// Returns a part of a whole, rounded down. A location that was a 32-bit float may be short of what was meant by less
/// than the tolerance.
std::int64_t floored(double location, std::int64_t whole) noexcept {
  constexpr double tolerance = 0x1p-23;
  return static_cast<std::int64_t>(std::floor(location * static_cast<double>(whole) * (1 + tolerance)));
}

bool isDamaged(const AVFrame& frame) noexcept {
  return (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0 || frame.decode_error_flags != 0;
}

}  // namespace

FrameFinder::FrameFinder(std::string path, int stream, bool endsEarly, const DescriptionLimits& limits)
    : path_(std::move(path)),
      stream_(stream),
      endsEarly_(endsEarly),
      limits_(limits),
      deadline_(std::chrono::steady_clock::now() + limits.time) {}

Expected<std::unique_ptr<FrameFinder>, MediaSnapshotError> FrameFinder::open(const std::string& path, int stream,
                                                                             bool endsEarly,
                                                                             const DescriptionLimits& limits) {
  std::unique_ptr<FrameFinder> finder(new FrameFinder(path, stream, endsEarly, limits));
  if (auto error = finder->openInput()) return Unexpected(*std::move(error));
  if (auto error = finder->openDecoder()) return Unexpected(*std::move(error));
  finder->readTimes();
  return finder;
}

MediaSnapshotError FrameFinder::failure(MediaSnapshotErrorCode code, std::string detail) const {
  return {code, path_, std::move(detail)};
}

std::optional<MediaSnapshotError> FrameFinder::openInput() {
  DescriptionLimits left = limits_;
  left.time = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - std::chrono::steady_clock::now());
  auto opened = MediaInput::open(path_, left);
  if (!opened) {
    const MediaError& error = opened.error();
    MediaSnapshotError own = failure(error.code == MediaErrorCode::limitReached ? limitReached : notRead, error.detail);
    own.systemError = error.systemError;
    return own;
  }
  input_ = *std::move(opened);
  const AVFormatContext& context = input_->context();
  const bool isThere = stream_ >= 0 && static_cast<unsigned>(stream_) < context.nb_streams &&
                       stream().codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
  if (!isThere) return failure(notRead, "it was changed");
  for (unsigned each = 0; each < context.nb_streams; ++each) {
    if (each != static_cast<unsigned>(stream_)) context.streams[each]->discard = AVDISCARD_ALL;
  }
  isAtStart_ = true;
  return std::nullopt;
}

std::optional<MediaSnapshotError> FrameFinder::openDecoder() {
  const AVCodecParameters& parameters = *stream().codecpar;
  const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
  const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(parameters.codec_id);
  if (codec == nullptr || descriptor == nullptr) {
    return failure(notDecodable, descriptor == nullptr ? std::string() : descriptor->name);
  }
  decoder_.reset(avcodec_alloc_context3(codec));
  if (!decoder_ || avcodec_parameters_to_context(decoder_.get(), &parameters) < 0) return failure(notDecodable);
  framesStandAlone_ = (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
  // Not HEVC: what it calls unreferenced may be referred to from a higher temporal layer. Of an interlaced frame the
  // fields may differ in it.
  marksUnreferenced_ = (codec->id == AV_CODEC_ID_H264 || codec->id == AV_CODEC_ID_MPEG2VIDEO) &&
                       parameters.field_order == AV_FIELD_PROGRESSIVE;
  decoder_->pkt_timebase = stream().time_base;
  decoder_->max_pixels = mostPixels;
  decoder_->thread_count = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 8U));
  decoder_->thread_type = framesStandAlone_ ? FF_THREAD_SLICE : FF_THREAD_SLICE | FF_THREAD_FRAME;
  silence(*decoder_);
  const LogCollector log;
  if (avcodec_open2(decoder_.get(), codec, nullptr) < 0) return failure(notDecodable, log.firstError());
  return std::nullopt;
}

void FrameFinder::readTimes() {
  const AVFormatContext& context = input_->context();
  const AVStream& video = stream();
  if (video.start_time != AV_NOPTS_VALUE) start_ = video.start_time;
  // Of a bare stream FFmpeg guesses the duration by its bit rate.
  if (context.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) return;
  if (video.duration != AV_NOPTS_VALUE && video.duration > 0) {
    duration_ = video.duration;
  } else if (context.duration != AV_NOPTS_VALUE && context.duration > 0) {
    duration_ = av_rescale_q(context.duration, {1, AV_TIME_BASE}, video.time_base);
  }
}

PacketPointer FrameFinder::nextPacket() {
  isAtStart_ = false;
  PacketPointer packet(av_packet_alloc());
  while (packet) {
    const int status = av_read_frame(&input_->context(), packet.get());
    if (status < 0) {
      isRead_ = true;
      readError_ = status;
      return nullptr;
    }
    if (packet->stream_index == stream_) break;
    av_packet_unref(packet.get());
  }
  return packet;
}

void FrameFinder::forgetPackets() {
  ahead_.clear();
  shown_.clear();
  last_.reset();
  isRead_ = isDrained_ = isStreaming_ = false;
  readError_ = 0;
  lastDecodingTime_ = std::numeric_limits<std::int64_t>::min();
  avcodec_flush_buffers(decoder_.get());
}

bool FrameFinder::goTo(std::int64_t place, std::int64_t target) {
  if (av_seek_frame(&input_->context(), stream_, place, AVSEEK_FLAG_BACKWARD) < 0) return false;
  forgetPackets();
  while (PacketPointer packet = nextPacket()) {
    if (!isKey(*packet)) continue;
    if (packet->pts != AV_NOPTS_VALUE && packet->pts > target) return false;
    ahead_.push_back(std::move(packet));
    return true;
  }
  return false;
}

bool FrameFinder::goToStart() {
  if (!isAtStart_ && openInput()) return false;
  forgetPackets();
  return true;
}

bool FrameFinder::mayGoOn(std::int64_t target) {
  if (!isStreaming_ || framesStandAlone_ || !last_ || last_->pts > target) return false;
  if (target == theEnd) target = start_ + *duration_;
  const AVIndexEntry* const key = avformat_index_get_entry_from_timestamp(&stream(), target, AVSEEK_FLAG_BACKWARD);
  return key != nullptr && key->timestamp <= lastDecodingTime_;
}

void FrameFinder::lookAhead(std::int64_t target) {
  const auto take = [&](const AVPacket& packet) {
    if (packet.pts == AV_NOPTS_VALUE) {
      hasTimestamps_ = false;
      return;
    }
    if (isShown(packet) && packet.pts > target) shown_.push_back(packet.pts);
    if (isShown(packet) && packet.pts <= target) {
      // Of those at or before the target only the last one counts.
      const std::int64_t best = std::max(packet.pts, wanted(target).value_or(packet.pts));
      std::erase_if(shown_, [&](std::int64_t each) { return each <= target; });
      shown_.push_back(best <= target ? best : packet.pts);
    }
    const std::int64_t decoded = packet.dts == AV_NOPTS_VALUE && framesStandAlone_ ? packet.pts : packet.dts;
    if (decoded != AV_NOPTS_VALUE) lastDecodingTime_ = std::max(lastDecodingTime_, decoded);
  };
  // A key frame was put there by a seek.
  if (shown_.empty() && ahead_.size() == 1) take(*ahead_.front());
  const auto isDecided = [&] { return isRead_ || lastDecodingTime_ > target; };
  while (!isRead_ && hasTimestamps_ && (ahead_.empty() || (!isDecided() && ahead_.size() < packetsAhead))) {
    PacketPointer packet = nextPacket();
    if (!packet) break;
    take(*packet);
    ahead_.push_back(std::move(packet));
  }
  isDecided_ = isDecided_ || isDecided();
}

std::optional<std::int64_t> FrameFinder::wanted(std::int64_t target) const {
  std::optional<std::int64_t> before;
  std::optional<std::int64_t> first;
  for (const std::int64_t time : shown_) {
    if (time <= target && (!before || time > *before)) before = time;
    if (!first || time < *first) first = time;
  }
  return before ? before : first;
}

bool FrameFinder::isUnneeded(const AVPacket& packet, std::int64_t target) const {
  if (!isShown(packet)) return true;
  const auto frame = wanted(target);
  // What is sent after the frame only pushes it out. If one of those is looked for next, it is sought anew.
  return frame && packet.pts != *frame && (packet.pts < *frame || framesStandAlone_ || isDecided_);
}

void FrameFinder::sendNext(std::int64_t target) {
  if (ahead_.empty()) {
    avcodec_send_packet(decoder_.get(), nullptr);
    isDrained_ = true;
    return;
  }
  const PacketPointer packet = std::move(ahead_.front());
  ahead_.pop_front();
  const bool isSkipped = isUnneeded(*packet, target);
  if (isSkipped && framesStandAlone_) return;
  decoder_->skip_frame = isSkipped && marksUnreferenced_ ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
  // A packet that cannot be decoded is no more than a frame that does not come.
  static_cast<void>(avcodec_send_packet(decoder_.get(), packet.get()));
}

FrameFinder::Attempt FrameFinder::decodePlanned(std::int64_t target, const std::stop_token& stop) {
  isDecided_ = false;
  FramePointer kept;
  if (last_ && last_->pts <= target) kept.reset(av_frame_clone(last_.get()));
  while (!stop.stop_requested()) {
    lookAhead(target);
    if (readError_ == AVERROR_EXIT) return {nullptr, limitReached};
    if (!hasTimestamps_ || (isRead_ && endsEarly_ && lastDecodingTime_ <= target)) return {};
    FramePointer frame(av_frame_alloc());
    const bool isReceived = frame && avcodec_receive_frame(decoder_.get(), frame.get()) >= 0;
    if (isReceived) {
      if (frame->pts == AV_NOPTS_VALUE) return {};
      isDecided_ = isDecided_ || frame->pts > target;
      const auto time = wanted(target);
      const bool isKept = kept && time && kept->pts == *time;
      if (isDecided_ && !isKept && time && frame->pts > *time) return {};
      if (frame->pts <= target || (time && frame->pts == *time)) kept = std::move(frame);
    }
    const auto time = wanted(target);
    if (isDecided_ && kept && time && kept->pts == *time) {
      if (isDamaged(*kept)) return {};
      isStreaming_ = !isDrained_;
      last_.reset(av_frame_clone(kept.get()));
      return {std::move(kept), {}};
    }
    if (isReceived) continue;
    if (isDrained_) return {};
    // The frame that stands alone is sent; what follows it is for others.
    const bool isSent = isDecided_ && framesStandAlone_ &&
                        std::ranges::none_of(ahead_, [&](const PacketPointer& each) { return each->pts == time; });
    if (isSent) ahead_.clear();
    sendNext(target);
  }
  return {nullptr, stopped};
}

FrameFinder::Attempt FrameFinder::decodeAll(std::int64_t target, const std::stop_token& stop) {
  FramePointer kept;
  decoder_->skip_frame = AVDISCARD_DEFAULT;
  while (!stop.stop_requested()) {
    FramePointer frame(av_frame_alloc());
    int status = 0;
    while (frame && (status = avcodec_receive_frame(decoder_.get(), frame.get())) >= 0) {
      const std::int64_t time = frame->pts;
      if (time == AV_NOPTS_VALUE) {
        hasTimestamps_ = false;
        return {};
      }
      const bool isBeyond = time > target;
      if (!isBeyond || !kept) kept = std::exchange(frame, FramePointer(av_frame_alloc()));
      if (isBeyond) return isDamaged(*kept) ? Attempt{} : Attempt{std::move(kept), {}};
    }
    if (status == AVERROR_EOF || isDrained_) {
      if (!kept || endsEarly_ || isDamaged(*kept)) return {};
      return {std::move(kept), {}};
    }
    PacketPointer packet;
    if (ahead_.empty()) {
      packet = nextPacket();
    } else {
      packet = std::move(ahead_.front());
      ahead_.pop_front();
    }
    if (readError_ == AVERROR_EXIT) return {nullptr, limitReached};
    isDrained_ = !packet && avcodec_send_packet(decoder_.get(), nullptr) == AVERROR_EOF;
    if (packet) static_cast<void>(avcodec_send_packet(decoder_.get(), packet.get()));
  }
  return {nullptr, stopped};
}

FrameFinder::Attempt FrameFinder::findFrom(std::int64_t target, const std::stop_token& stop) {
  if (mayGoOn(target)) {
    Attempt attempt = decodePlanned(target, stop);
    if (attempt.frame || attempt.end) return attempt;
  }
  isStreaming_ = false;
  const std::int64_t seekable = target == theEnd ? start_ + *duration_ : target;
  const std::int64_t second = std::max<std::int64_t>(av_rescale_q(1, {1, 1}, stream().time_base), 1);
  bool isPlanned = true;
  std::int64_t triedKey = AV_NOPTS_VALUE;
  for (const std::int64_t back : stepsBack) {
    if (stop.stop_requested()) return {nullptr, stopped};
    const std::int64_t place = back == fromTheStart ? start_ : std::max(seekable - back * second, start_);
    const bool isStart = place == start_;
    const auto go = [&] { return isStart ? goToStart() : goTo(place, target); };
    if (!go()) {
      if (readError_ == AVERROR_EXIT) return {nullptr, limitReached};
      if (isStart) break;
      continue;
    }
    const std::int64_t key = ahead_.empty() ? AV_NOPTS_VALUE : ahead_.front()->pts;
    if (!isStart && key != AV_NOPTS_VALUE && key == triedKey) continue;
    triedKey = key;
    if (std::exchange(isPlanned, false) && hasTimestamps_) {
      Attempt attempt = decodePlanned(target, stop);
      if (attempt.frame || attempt.end) return attempt;
      if (!hasTimestamps_ || !go()) break;
    }
    Attempt attempt = decodeAll(target, stop);
    if (attempt.frame || attempt.end || isStart || !hasTimestamps_) return attempt;
  }
  return {};
}

Expected<FoundFrame, MediaSnapshotError> FrameFinder::findByCounting(double location, const std::stop_token& stop) {
  const auto end = [&] {
    if (stop.stop_requested()) return stopped;
    return readError_ == AVERROR_EXIT ? limitReached : noFrame;
  };
  if (!goToStart()) return Unexpected(failure(notRead));
  std::int64_t count = 0;
  while (!stop.stop_requested()) {
    const PacketPointer packet = nextPacket();
    if (!packet) break;
    if (isShown(*packet)) ++count;
  }
  if (stop.stop_requested() || readError_ == AVERROR_EXIT || count == 0) return Unexpected(failure(end()));
  const std::int64_t number = std::min(floored(location, count), count - 1);
  const std::int64_t last = location >= 1 ? theEnd : number;
  if (!goToStart()) return Unexpected(failure(notRead));
  decoder_->skip_frame = AVDISCARD_DEFAULT;
  FramePointer kept;
  std::int64_t frames = 0;
  bool isFlushed = false;
  while (!stop.stop_requested() && frames <= last) {
    FramePointer frame(av_frame_alloc());
    const int status = frame ? avcodec_receive_frame(decoder_.get(), frame.get()) : AVERROR_EOF;
    if (status >= 0) {
      kept = std::move(frame);
      ++frames;
    } else if (status != AVERROR(EAGAIN) || isFlushed) {
      break;
    } else {
      const PacketPointer packet = nextPacket();
      isFlushed = !packet;
      static_cast<void>(avcodec_send_packet(decoder_.get(), packet.get()));
    }
  }
  const bool isFound = kept && !stop.stop_requested() && (location >= 1 || frames == number + 1) && !isDamaged(*kept);
  if (!isFound) return Unexpected(failure(end()));
  return FoundFrame{std::move(kept), {}, frames - 1};
}

Expected<FoundFrame, MediaSnapshotError> FrameFinder::find(double location, const std::stop_token& stop) {
  const LogCollector log;
  if (duration_) {
    const std::int64_t target = location >= 1 ? theEnd : start_ + floored(location, *duration_);
    Attempt attempt = findFrom(target, stop);
    if (attempt.end) return Unexpected(failure(*attempt.end, log.firstError()));
    if (attempt.frame) {
      const std::int64_t time = attempt.frame->pts;
      const AVRational& base = stream().time_base;
      return FoundFrame{std::move(attempt.frame), static_cast<double>(time - start_) * base.num / base.den, {}};
    }
    if (endsEarly_ || hasTimestamps_) return Unexpected(failure(noFrame, log.firstError()));
  }
  return findByCounting(location, stop);
}

}  // namespace meridian::inline v0_2::libav
