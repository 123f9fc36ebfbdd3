#include "meridian/engine/libav/frame_finder.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/mathematics.h>
#include <libavutil/parseutils.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <thread>
#include <utility>

namespace meridian::inline v0_2::libav {
namespace {

using enum MediaSnapshotErrorCode;

/// The last frame, whenever it is shown.
constexpr std::int64_t theEnd = std::numeric_limits<std::int64_t>::max();
/// More than any codec reorders, so that frames that are shown before a packet's are known when it is decoded.
constexpr std::size_t packetsAhead = 32;
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

/// Returns the duration that a stream of Matroska states in its tags, since its container has one for all streams.
std::optional<std::int64_t> taggedDuration(const AVStream& stream, std::int64_t start) {
  const AVDictionaryEntry* tag = av_dict_get(stream.metadata, "DURATION", nullptr, 0);
  if (tag == nullptr) tag = av_dict_get(stream.metadata, "DURATION-eng", nullptr, 0);
  std::int64_t microseconds = 0;
  if (tag == nullptr || av_parse_time(&microseconds, tag->value, 1) < 0) return std::nullopt;
  // FFmpeg writes when the stream ends, mkvmerge how long it is.
  const bool isEnd = av_dict_get(stream.metadata, "_STATISTICS", nullptr, AV_DICT_IGNORE_SUFFIX) == nullptr;
  const std::int64_t duration = av_rescale_q(microseconds, {1, AV_TIME_BASE}, stream.time_base) - (isEnd ? start : 0);
  return duration > 0 ? std::optional(duration) : std::nullopt;
}

using Bytes = std::span<const std::uint8_t>;

/// Returns what follows the next start code of MPEG; empty if there is none.
Bytes afterStartCode(Bytes bytes) noexcept {
  constexpr std::array<std::uint8_t, 3> code{0, 0, 1};
  const auto found = std::ranges::search(bytes, code);
  return found.empty() ? Bytes() : bytes.subspan(static_cast<std::size_t>(found.end() - bytes.begin()));
}

/// Returns the type of an MPEG-1 or MPEG-2 picture, 3 for B; absent if the packet has no picture.
std::optional<int> pictureType(Bytes bytes) noexcept {
  while (!(bytes = afterStartCode(bytes)).empty()) {
    if (bytes[0] == 0 && bytes.size() > 2) return bytes[2] >> 3U & 7U;
  }
  return std::nullopt;
}

/// Returns true if the first slice of an H.264 packet says that no other frame refers to this one.
bool isUnreferencedSlice(Bytes bytes, Bytes configuration) noexcept {
  constexpr unsigned slice = 1;
  constexpr unsigned lastPartOfSlice = 5;
  const bool hasLengths = configuration.size() > 4 && configuration[0] == 1;
  const std::size_t lengthSize = hasLengths ? (configuration[4] & 3U) + 1U : 0;
  while (true) {
    std::size_t length = 0;
    if (hasLengths) {
      if (bytes.size() <= lengthSize) return false;
      for (const std::uint8_t byte : bytes.first(lengthSize)) length = length << 8U | byte;
      bytes = bytes.subspan(lengthSize);
      if (length == 0) return false;
    } else {
      bytes = afterStartCode(bytes);
      if (bytes.empty()) return false;
    }
    const unsigned type = bytes[0] & 31U;
    if (type >= slice && type <= lastPartOfSlice) return (bytes[0] >> 5U & 3U) == 0;
    if (type == 0 || length > bytes.size()) return false;
    bytes = bytes.subspan(length);
  }
}

bool isMpeg2(AVCodecID codec) noexcept { return codec == AV_CODEC_ID_MPEG1VIDEO || codec == AV_CODEC_ID_MPEG2VIDEO; }

Bytes bytesOf(const AVPacket& packet) noexcept {
  return {packet.data, static_cast<std::size_t>(std::max(packet.size, 0))};
}

/// Returns true if the packet itself says that no other frame refers to its own, so that it need not be decoded.
bool isUnreferenced(const AVPacket& packet, const AVCodecParameters& parameters) noexcept {
  if (isMpeg2(parameters.codec_id)) return pictureType(bytesOf(packet)) == 3;
  return isUnreferencedSlice(bytesOf(packet),
                             {parameters.extradata, static_cast<std::size_t>(std::max(parameters.extradata_size, 0))});
}

bool isDamaged(const AVFrame& frame) noexcept {
  return (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0 || frame.decode_error_flags != 0;
}

}  // namespace

FrameFinder::FrameFinder(std::string path, int stream, bool endsEarly, const DescriptionLimits& limits)
    : path_(std::move(path)), stream_(stream), endsEarly_(endsEarly), limits_(limits), timeLeft_(limits.time) {}

Expected<std::unique_ptr<FrameFinder>, MediaSnapshotError> FrameFinder::open(const std::string& path, int stream,
                                                                             bool endsEarly,
                                                                             const DescriptionLimits& limits) {
  std::unique_ptr<FrameFinder> finder(new FrameFinder(path, stream, endsEarly, limits));
  const TimedWork work(*finder);
  if (auto error = finder->openInput()) return Unexpected(*std::move(error));
  if (auto error = finder->openDecoder()) return Unexpected(*std::move(error));
  finder->readTimes();
  return finder;
}

FrameFinder::TimedWork::TimedWork(FrameFinder& finder) noexcept
    : finder_(finder), begin_(std::chrono::steady_clock::now()) {
  DescriptionLimits left = finder.limits_;
  left.time = finder.timeLeft_;
  finder.deadline_ = left.deadline();
  if (finder.input_) finder.input_->setDeadline(finder.deadline_);
}

FrameFinder::TimedWork::~TimedWork() {
  finder_.timeLeft_ -= std::chrono::ceil<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin_);
}

MediaSnapshotError FrameFinder::failure(MediaSnapshotErrorCode code, std::string detail) const {
  MediaSnapshotError error{code, path_, std::move(detail)};
  if (code == notRead && input_) error.systemError = input_->file().error();
  return error;
}

MediaSnapshotError FrameFinder::explained(MediaSnapshotErrorCode code, const LogCollector& log) const {
  const std::string said = log.firstError();
  // The size of an image in a file of its own is known when it is decoded.
  const bool isTooLarge = code == noFrame && said.starts_with("Picture size ");
  return failure(isTooLarge ? limitReached : code, said);
}

std::optional<MediaSnapshotError> FrameFinder::openInput() {
  DescriptionLimits left = limits_;
  left.time = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - std::chrono::steady_clock::now());
  if (input_) left.bytes = input_->bytesLeft();
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
  if (std::int64_t{parameters.width} * parameters.height > mostPixels) {
    return failure(limitReached, "its images have more than 16384 by 8192 pixels");
  }
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
  // Of frames that are decoded side by side, FFmpeg says only after it has handed them out that they are damaged.
  decoder_->thread_type = FF_THREAD_SLICE;
  // Only this decoder says nothing of damage otherwise; others refuse images with unusual tags or messages too.
  if (codec->id == AV_CODEC_ID_MJPEG) decoder_->err_recognition |= AV_EF_EXPLODE;
  silence(*decoder_);
  const LogCollector log;
  if (avcodec_open2(decoder_.get(), codec, nullptr) < 0) return failure(notDecodable, log.firstError());
  return std::nullopt;
}

void FrameFinder::readTimes() {
  const AVFormatContext& context = input_->context();
  const AVStream& video = stream();
  if (video.start_time != AV_NOPTS_VALUE) start_ = video.start_time;
  // Of a bare stream FFmpeg guesses the duration by its bit rate, and of an AVI file without its index by what is left.
  const bool isAvi = std::string_view(context.iformat->name) == "avi";
  if (context.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE || (isAvi && endsEarly_)) return;
  if (video.duration != AV_NOPTS_VALUE && video.duration > 0) {
    duration_ = video.duration;
  } else if (context.duration != AV_NOPTS_VALUE && context.duration > 0) {
    duration_ = av_rescale_q(context.duration, {1, AV_TIME_BASE}, video.time_base);
    if (const auto own = taggedDuration(video, start_)) duration_ = std::min(*own, *duration_);
  }
}

PacketPointer FrameFinder::nextPacket() {
  isAtStart_ = false;
  PacketPointer packet(av_packet_alloc());
  while (packet) {
    const int status = av_read_frame(&input_->context(), packet.get());
    if (status == AVERROR(EAGAIN)) continue;
    // FFmpeg may take bytes that could not be read for the end, or go on without them.
    if (status == AVERROR_EXIT || input_->file().error()) readingEnd_ = status == AVERROR_EXIT ? limitReached : notRead;
    if (status < 0 || readingEnd_) {
      isRead_ = true;
      isCutShort_ = status != AVERROR_EOF && avio_feof(input_->context().pb) == 0;
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
  isRead_ = isCutShort_ = isDrained_ = isStreaming_ = false;
  readingEnd_.reset();
  isBroken_ = areLeadingBroken_ = false;
  keyTime_.reset();
  doubtful_.clear();
  sentSinceKey_.clear();
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
  if (const auto error = isAtStart_ ? std::nullopt : openInput()) {
    readingEnd_ = error->code;
    return false;
  }
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

void FrameFinder::noteError(std::int64_t time) {
  const bool isLeading = keyTime_ && time != AV_NOPTS_VALUE && time < *keyTime_;
  (isLeading ? areLeadingBroken_ : isBroken_) = true;
  ++errorCount_;
  doubtful_.insert(time);
  if (framesStandAlone_ || isLeading) return;
  // A damaged frame may come out when further ones that refer to it are decoded.
  const auto sent = std::ranges::find(sentSinceKey_, time);
  doubtful_.insert(sent, sentSinceKey_.end());
}

void FrameFinder::send(const AVPacket* packet) {
  if (packet != nullptr) {
    sentTime_ = packet->pts;
    if (isKey(*packet)) {
      areLeadingBroken_ = std::exchange(isBroken_, false);
      sentSinceKey_.clear();
      keyTime_ = packet->pts == AV_NOPTS_VALUE ? std::nullopt : std::optional(packet->pts);
    }
    const bool isLeading = keyTime_ && packet->pts != AV_NOPTS_VALUE && packet->pts < *keyTime_;
    sentSinceKey_.push_back(packet->pts);
    if (!framesStandAlone_ && (isLeading ? areLeadingBroken_ : isBroken_)) doubtful_.insert(packet->pts);
    if ((packet->flags & AV_PKT_FLAG_CORRUPT) != 0) noteError(packet->pts);
    // The decoder passes over a packet without a picture.
    if (isMpeg2(decoder_->codec_id) && !pictureType(bytesOf(*packet))) noteError(packet->pts);
  }
  const int status = avcodec_send_packet(decoder_.get(), packet);
  if (status < 0 && status != AVERROR(EAGAIN) && status != AVERROR_EOF) noteError(sentTime_);
}

int FrameFinder::receive(AVFrame& frame) {
  const int status = avcodec_receive_frame(decoder_.get(), &frame);
  if (status < 0 && status != AVERROR(EAGAIN) && status != AVERROR_EOF) noteError(sentTime_);
  if (status >= 0 && isDamaged(frame)) noteError(frame.pts);
  return status;
}

bool FrameFinder::isSound(const AVFrame& frame) const { return !isDamaged(frame) && !doubtful_.contains(frame.pts); }

bool FrameFinder::isFrameOf(std::int64_t frame, std::int64_t packet) const {
  if (frame == packet) return true;
  const AVRational rate = input_->context().streams[stream_]->avg_frame_rate;
  if (rate.num <= 0 || rate.den <= 0) return false;
  const std::int64_t length = av_rescale_q(1, av_inv_q(rate), input_->context().streams[stream_]->time_base);
  // A field is half a frame; timestamps are rounded.
  return frame < packet && 4 * (packet - frame) < 3 * length;
}

void FrameFinder::sendNext(std::int64_t target) {
  if (ahead_.empty()) {
    send(nullptr);
    isDrained_ = true;
    return;
  }
  const PacketPointer packet = std::move(ahead_.front());
  ahead_.pop_front();
  const bool isSkipped = isUnneeded(*packet, target);
  if (isSkipped && framesStandAlone_) return;
  if (isSkipped && marksUnreferenced_ && isUnreferenced(*packet, *stream().codecpar)) return;
  send(packet.get());
}

FrameFinder::Attempt FrameFinder::decodePlanned(std::int64_t target, const std::stop_token& stop) {
  isDecided_ = false;
  FramePointer kept;
  if (last_ && last_->pts <= target) kept.reset(av_frame_clone(last_.get()));
  while (!stop.stop_requested()) {
    lookAhead(target);
    if (readingEnd_) return {nullptr, readingEnd_};
    if (!hasTimestamps_ || (isRead_ && (endsEarly_ || isCutShort_) && lastDecodingTime_ <= target)) return {};
    FramePointer frame(av_frame_alloc());
    const bool isReceived = frame && receive(*frame) >= 0;
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
      if (!isSound(*kept)) return {};
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

FrameFinder::Attempt FrameFinder::decodeAll(std::int64_t target, bool isStart, const std::stop_token& stop) {
  FramePointer kept;
  std::optional<std::int64_t> firstKey;
  std::optional<std::int64_t> best;
  // What comes or is shown before the first key frame cannot be decoded from here.
  const auto take = [&](const AVPacket& packet) {
    if (packet.pts == AV_NOPTS_VALUE) return;
    if (!firstKey && isKey(packet)) firstKey = packet.pts;
    const bool isCandidate = firstKey && isShown(packet) && packet.pts >= *firstKey && packet.pts <= target;
    if (isCandidate) best = std::max(packet.pts, best.value_or(packet.pts));
  };
  // A frame that did not come is not replaced by its neighbour.
  const auto result = [&] {
    if (!kept || !isSound(*kept)) return Attempt{};
    const bool isRight = kept->pts <= target ? best && isFrameOf(kept->pts, *best) : isStart && !best;
    return isRight ? Attempt{std::move(kept), {}} : Attempt{};
  };
  while (!stop.stop_requested()) {
    FramePointer frame(av_frame_alloc());
    int status = 0;
    while (frame && (status = receive(*frame)) >= 0) {
      const std::int64_t time = frame->pts;
      if (time == AV_NOPTS_VALUE) {
        hasTimestamps_ = false;
        return {};
      }
      const bool isBeyond = time > target;
      if (!isBeyond || !kept) kept = std::exchange(frame, FramePointer(av_frame_alloc()));
      if (isBeyond) return result();
    }
    if (!frame || status == AVERROR_EOF || isDrained_) return endsEarly_ || isCutShort_ ? Attempt{} : result();
    PacketPointer packet;
    if (ahead_.empty()) {
      packet = nextPacket();
    } else {
      packet = std::move(ahead_.front());
      ahead_.pop_front();
    }
    if (readingEnd_) return {nullptr, readingEnd_};
    if (packet) take(*packet);
    isDrained_ = !packet;
    send(packet.get());
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
      if (readingEnd_) return {nullptr, readingEnd_};
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
    Attempt attempt = decodeAll(target, isStart, stop);
    if (attempt.frame || attempt.end || isStart || !hasTimestamps_) return attempt;
  }
  return {};
}

Expected<FoundFrame, MediaSnapshotError> FrameFinder::findByCounting(double location, const std::stop_token& stop) {
  const auto end = [&] {
    if (stop.stop_requested()) return stopped;
    return readingEnd_.value_or(noFrame);
  };
  if (!goToStart()) return Unexpected(failure(end()));
  std::int64_t count = 0;
  while (!stop.stop_requested()) {
    const PacketPointer packet = nextPacket();
    if (!packet) break;
    if (isShown(*packet)) ++count;
  }
  if (stop.stop_requested() || readingEnd_ || count == 0) return Unexpected(failure(end()));
  const std::int64_t number = std::min(floored(location, count), count - 1);
  const std::int64_t last = location >= 1 ? theEnd : number;
  if (!goToStart()) return Unexpected(failure(end()));
  FramePointer kept;
  std::int64_t frames = 0;
  const std::int64_t errorsBefore = errorCount_;
  std::int64_t errors = 0;
  while (!stop.stop_requested() && frames <= last) {
    FramePointer frame(av_frame_alloc());
    const int status = frame ? receive(*frame) : AVERROR_EOF;
    if (status >= 0) {
      kept = std::move(frame);
      ++frames;
    } else if (status == AVERROR_EOF || isDrained_) {
      break;
    } else {
      const PacketPointer packet = nextPacket();
      isDrained_ = !packet;
      send(packet.get());
    }
    // In place of a frame that stands alone there is the error; how many others there would be is not known.
    if (errors == errorCount_ - errorsBefore) continue;
    errors = errorCount_ - errorsBefore;
    if (status < 0) ++frames;
    kept.reset();
    if (!framesStandAlone_ && location < 1) break;
  }
  const bool isFound = kept && !stop.stop_requested() && !readingEnd_ && (location >= 1 || frames == number + 1) &&
                       (framesStandAlone_ || !isBroken_) && !isDamaged(*kept);
  if (!isFound) return Unexpected(failure(end()));
  return FoundFrame{std::move(kept), {}, frames - 1};
}

Expected<FoundFrame, MediaSnapshotError> FrameFinder::find(double location, const std::stop_token& stop) {
  const LogCollector log;
  const TimedWork work(*this);
  if (duration_ && hasTimestamps_) {
    const std::int64_t target = location >= 1 ? theEnd : start_ + floored(location, *duration_);
    Attempt attempt = findFrom(target, stop);
    if (attempt.end) return Unexpected(explained(*attempt.end, log));
    if (attempt.frame) {
      const std::int64_t time = attempt.frame->pts;
      const AVRational& base = stream().time_base;
      return FoundFrame{std::move(attempt.frame), static_cast<double>(time - start_) * base.num / base.den, {}};
    }
    if (hasTimestamps_) return Unexpected(explained(noFrame, log));
  }
  // Of which duration the location is a part is not known.
  if (endsEarly_) return Unexpected(explained(noFrame, log));
  auto found = findByCounting(location, stop);
  if (!found) return Unexpected(explained(found.error().code, log));
  return found;
}

}  // namespace meridian::inline v0_2::libav
