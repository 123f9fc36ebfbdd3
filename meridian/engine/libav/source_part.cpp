// A file of a clip, read and decoded.
#include "meridian/engine/libav/source_part.h"

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "meridian/base/numbers.h"
#include "meridian/engine/describe_media.h"
#include "meridian/engine/libav/image_decoding.h"
#include "meridian/engine/libav/packet_structure.h"
#include "meridian/engine/libav/part_damage.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2::libav {
namespace {

using enum TranscodeRunErrorCode;

constexpr DescriptionLimits withoutLimits{.bytes = std::numeric_limits<std::uint64_t>::max(),
                                          .time = std::chrono::milliseconds::max(),
                                          .indexEntries = std::numeric_limits<std::uint64_t>::max()};

/// A jump of timestamps back by more than a second is damage; smaller ones are late images.
constexpr Ticks greatestStepBack = timeLine.den;

TranscodeRunError readingError(const std::string& path, const MediaError& error) {
  return {sourceNotRead, path, std::string(error.text()) + (error.detail.empty() ? "" : ": " + error.detail),
          error.systemError};
}

/// The description of a file that is about to be read, and where its wanted streams are.
struct Located {
  MediaDescription media;
  const VideoStreamDescription* video = nullptr;
  std::vector<const AudioStreamDescription*> sounds;
};

/// Finds the wanted streams; an error if the file is not what was planned.
std::optional<TranscodeRunError> locate(Located& located, const std::string& path, const WantedStreams& wanted) {
  const auto changed = [&path](std::string detail) {
    return TranscodeRunError{sourceChanged, path, std::move(detail)};
  };
  if (wanted.hasVideo) {
    located.video = located.media.mainVideo();
    if (located.video == nullptr) return changed("it has no video");
    if (located.video->width != wanted.image.width || located.video->height != wanted.image.height) {
      return changed("its images are " + std::to_string(located.video->width) + " x " +
                     std::to_string(located.video->height));
    }
  }
  for (const WantedSound& sound : wanted.sounds) {
    if (sound.place >= located.media.audio.size()) {
      return changed("it has " + std::to_string(located.media.audio.size()) + " audio tracks");
    }
    located.sounds.push_back(&located.media.audio[sound.place]);
  }
  return std::nullopt;
}

class FilePart final : public PartSource {
 public:
  FilePart(const std::string& path, const WantedStreams& wanted, const ReadingOptions& options)
      : path_(path), wanted_(wanted), options_(options), damage_(path, options.acceptsDamaged, options.notesDamage) {}

  [[nodiscard]] std::optional<TranscodeRunError> open() {
    auto described = describeMedia(Url::fromFilePath(path_), withoutLimits);
    if (!described) return readingError(path_, described.error());
    Located located{*std::move(described), nullptr, {}};
    if (auto error = locate(located, path_, wanted_)) return error;
    for (const MediaWarning& warning : located.media.warnings) {
      if (warning.code == MediaWarningCode::endsBeforeItsData) damage_.noteShort(0, warning.detail);
    }
    if (damage_.error()) return damage_.error();
    auto input = MediaInput::open(path_, withoutLimits);
    if (!input) return readingError(path_, input.error());
    input_ = *std::move(input);
    input_->setStop(options_.stop);
    return openStreams(located);
  }

  Expected<std::optional<SourceItem>, TranscodeRunError> next() override {
    while (pending_.empty() && !isEnded_) {
      if (options_.stop.stop_requested()) return Unexpected(TranscodeRunError{interrupted, path_});
      readPacket();
      if (error_) return Unexpected(*error_);
      if (damage_.error()) return Unexpected(*damage_.error());
    }
    if (pending_.empty()) return std::nullopt;
    Expected<std::optional<SourceItem>, TranscodeRunError> item(std::move(pending_.front()));
    pending_.pop_front();
    return item;
  }

  [[nodiscard]] Ticks end() const override {
    if (!wanted_.hasVideo) return soundEnd_;
    const Ticks duration = wanted_.imageDuration();
    if (wanted_.isVariable || duration <= 0) return imageEnd_;
    // The time stamps of some containers are rounded; images of a constant rate end on its grid.
    const MediaRational rate = wanted_.image.frameRate.rawValue();
    const std::int64_t images =
        av_rescale_rnd(imageEnd_, rate.numerator, std::int64_t{timeLine.den} * rate.denominator, AV_ROUND_NEAR_INF);
    return av_rescale(images, std::int64_t{timeLine.den} * rate.denominator, rate.numerator);
  }

  [[nodiscard]] std::optional<Ticks> statedEnd() const override { return statedEnd_; }

  [[nodiscard]] CopiedStream copiedStream(std::optional<std::size_t> track) const override {
    for (const auto& [index, stream] : streams_) {
      if (stream.sound != nullptr ? track != stream.sound->track : track.has_value()) continue;
      const AVStream& source = *input_->context().streams[index];
      CopiedStream copied{.parameters = source.codecpar};
      if (stream.sound != nullptr) return copied;
      copied.frameRate = source.avg_frame_rate;
      std::size_t size = 0;
      const std::uint8_t* const matrix = av_stream_get_side_data(&source, AV_PKT_DATA_DISPLAYMATRIX, &size);
      if (matrix != nullptr) copied.displayMatrix.assign(matrix, matrix + size);
      return copied;
    }
    return {};
  }

  [[nodiscard]] std::vector<TranscodeRunWarning> takeWarnings() override {
    auto warnings = damage_.takeWarnings();
    std::ranges::move(warnings_, std::back_inserter(warnings));
    warnings_.clear();
    return warnings;
  }

 private:
  /// A stream that is read.
  struct Stream {
    /// Null for images.
    const WantedSound* sound = nullptr;
    /// The place among the other streams of images that are wanted.
    std::optional<std::size_t> otherVideo;
    /// Null for a stream that is copied.
    std::unique_ptr<MediaDecoder> decoder;
    /// The end of the last image or sound, for one without a time.
    Ticks next = 0;
    /// How much later than the truth its times are.
    Ticks delay = 0;
    /// What is added to times that have gone back.
    Ticks followsOn = 0;
    std::optional<DecodeTimes> decodeTimes;
    bool hasBegun = false;
    /// True if its images follow each other at the planned rate, whatever their times say.
    bool countsImages = false;
  };

  [[nodiscard]] AVStream& source(int index) const { return *input_->context().streams[index]; }

  [[nodiscard]] TranscodeRunError changed() const { return {sourceChanged, path_, "it was changed"}; }

  [[nodiscard]] std::optional<TranscodeRunError> openStreams(const Located& located) {
    AVFormatContext& context = input_->context();
    const auto isThere = [&context](int index, AVMediaType type) {
      return static_cast<unsigned>(index) < context.nb_streams && context.streams[index]->codecpar->codec_type == type;
    };
    for (unsigned each = 0; each < context.nb_streams; ++each) context.streams[each]->discard = AVDISCARD_ALL;
    if (located.video != nullptr) {
      if (!isThere(located.video->index, AVMEDIA_TYPE_VIDEO)) return changed();
      if (auto error = addStream(located.video->index, nullptr, wanted_.copiesVideo)) return error;
      stateEnd(*located.video);
      // FFmpeg makes up a rate for raw streams that have none.
      // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
      const bool hasNoTimes = (context.iformat->flags & AVFMT_NOTIMESTAMPS) != 0;
      streams_[located.video->index].countsImages = hasNoTimes && !located.video->frameRate;
    }
    for (std::size_t place = 0; place < wanted_.otherVideo.size(); ++place) {
      const int index = wanted_.otherVideo[place];
      if (!isThere(index, AVMEDIA_TYPE_VIDEO)) return changed();
      if (auto error = addStream(index, nullptr, false)) return error;
      streams_[index].otherVideo = place;
    }
    for (std::size_t place = 0; place < located.sounds.size(); ++place) {
      const AudioStreamDescription& sound = *located.sounds[place];
      if (!isThere(sound.index, AVMEDIA_TYPE_AUDIO)) return changed();
      if (auto error = addStream(sound.index, &wanted_.sounds[place], wanted_.sounds[place].isCopied)) return error;
    }
    findZero(located);
    const std::string_view format = context.iformat->name;
    reportsDamageInLog_ = format.starts_with("matroska") || format == "mxf";
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> addStream(int index, const WantedSound* sound, bool isCopied) {
    source(index).discard = AVDISCARD_DEFAULT;
    Stream& stream = streams_[index];
    stream.sound = sound;
    if (isCopied) {
      if (sound == nullptr) prepareCopy(index, stream);
      return std::nullopt;
    }
    const bool triesGpu = sound == nullptr && wanted_.decodesOnGpu;
    auto decoder = MediaDecoder::open(source(index), {options_.threads, triesGpu, options_.decodesInTurn});
    if (!decoder) return TranscodeRunError{notDecoded, path_, std::move(decoder).error()};
    stream.decoder = *std::move(decoder);
    if (triesGpu && !stream.decoder->isOnGpu()) {
      warnings_.push_back({TranscodeRunWarningCode::gpuNotUsed, path_, "no device opens for decoding"});
    }
    return std::nullopt;
  }

  /// Matroska states when images are shown and not when they are decoded; what FFmpeg makes of it has gaps.
  void prepareCopy(int index, Stream& stream) {
    if (std::string_view(input_->context().iformat->name).starts_with("matroska")) {
      stream.decodeTimes.emplace(source(index).codecpar->video_delay, wanted_.imageDuration());
    }
  }

  void stateEnd(const VideoStreamDescription& video) {
    const Ticks duration = wanted_.imageDuration();
    if (video.frameCount && !wanted_.isVariable && duration > 0) {
      const MediaRational rate = wanted_.image.frameRate.rawValue();
      statedEnd_ = av_rescale(*video.frameCount, std::int64_t{timeLine.den} * rate.denominator, rate.numerator);
    } else if (video.duration) {
      statedEnd_ = timeLineOf(*video.duration);
    }
  }

  /// Finds the time of the first image, or of the first sound of a file without images.
  void findZero(const Located& located) {
    const auto include = [this](int index) {
      const AVStream& stream = source(index);
      if (stream.start_time == AV_NOPTS_VALUE) return;
      const Ticks start = toTimeLine(stream.start_time, stream.time_base);
      zero_ = zero_ ? std::min(*zero_, start) : start;
    };
    if (located.video != nullptr) {
      include(located.video->index);
      return;
    }
    for (const AudioStreamDescription* sound : located.sounds) include(sound->index);
    if (!zero_) zero_ = 0;
    for (const AudioStreamDescription* sound : located.sounds) {
      if (sound->duration) statedEnd_ = std::max(statedEnd_.value_or(0), timeLineOf(*sound->duration));
    }
  }

  [[nodiscard]] Ticks local(std::int64_t time, const AVRational& base) {
    const Ticks ticks = toTimeLine(time, base);
    if (!zero_) zero_ = ticks;
    return ticks - *zero_;
  }

  void readPacket() {
    PacketPointer packet(av_packet_alloc());
    if (!packet) {
      error_ = TranscodeRunError{outOfMemory, path_};
      return;
    }
    const LogCollector log;
    const int status = av_read_frame(&input_->context(), packet.get());
    if (reportsDamageInLog_ && !log.firstError().empty()) damage_.note(position_, log.firstError());
    if (status == AVERROR_EOF) {
      finish();
      return;
    }
    if (status < 0) {
      failReading(status, log);
      return;
    }
    const auto found = streams_.find(packet->stream_index);
    if (found == streams_.end()) return;
    failures_ = 0;
    if (found->second.decoder == nullptr) {
      copy(found->first, found->second, std::move(packet));
      return;
    }
    if (packet->dts != AV_NOPTS_VALUE) position_ = local(packet->dts, source(found->first).time_base);
    decode(found->first, found->second, packet.get());
  }

  void failReading(int status, const LogCollector& log) {
    if (options_.stop.stop_requested()) {
      error_ = TranscodeRunError{interrupted, path_};
      return;
    }
    if (input_->file().error()) {
      error_ = TranscodeRunError{sourceNotRead, path_, {}, input_->file().error()};
      return;
    }
    if (status == AVERROR(EAGAIN)) return;
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(status, text.data(), text.size());
    damage_.note(position_, log.firstError().empty() ? std::string(text.data()) : log.firstError());
    // A file that goes on failing without another packet has ended.
    constexpr int mostFailures = 8;
    if (++failures_ == mostFailures) finish();
  }

  void decode(int index, Stream& stream, const AVPacket* packet) {
    stream.decoder->send(packet);
    // Threads with an image each are ahead of the images that they have handed on.
    const bool isExact = options_.decodesInTurn && packet != nullptr && packet->pts != AV_NOPTS_VALUE;
    const auto note = [&] {
      const auto reason = stream.decoder->takeDamage();
      if (!reason) return;
      const Ticks time = isExact ? local(packet->pts, source(index).time_base) : stream.next;
      damage_.note(time, *reason, stream.sound != nullptr ? std::optional(stream.sound->track) : std::nullopt);
    };
    note();
    while (FramePointer frame = stream.decoder->receive()) {
      note();
      handOn(index, stream, std::move(frame));
    }
    note();
  }

  void handOn(int index, Stream& stream, FramePointer frame) {
    const AVRational base = source(index).time_base;
    // In files without times of display, such as AVI, those of decoding come later by the images that a decoder holds.
    if (!stream.hasBegun && frame->pts == AV_NOPTS_VALUE && frame->best_effort_timestamp != AV_NOPTS_VALUE) {
      stream.delay = std::max<Ticks>(local(frame->best_effort_timestamp, base), 0);
    }
    Ticks time = stream.next;
    if (frame->best_effort_timestamp != AV_NOPTS_VALUE && !stream.countsImages) {
      time = continuedTime(stream, local(frame->best_effort_timestamp, base) - stream.delay);
    }
    if (stream.sound != nullptr && !stream.hasBegun) noteLead(time);
    stream.hasBegun = true;
    if (stream.sound != nullptr) {
      if (frame->sample_rate <= 0) return;
      const Ticks duration = av_rescale(frame->nb_samples, timeLine.den, frame->sample_rate);
      stream.next = time + duration;
      soundEnd_ = std::max(soundEnd_, stream.next);
      pending_.emplace_back(SourceSound{stream.sound->track, stream.sound->origin, std::move(frame), time});
      return;
    }
    Ticks duration = frame->pkt_duration > 0 ? toTimeLine(frame->pkt_duration, base) : wanted_.imageDuration();
    if (!wanted_.isVariable && wanted_.imageDuration() > 0) duration = wanted_.imageDuration();
    stream.next = time + duration;
    if (!stream.otherVideo) imageEnd_ = std::max(imageEnd_, stream.next);
    pending_.emplace_back(SourceImage{
        .frame = std::move(frame), .time = time, .duration = duration, .part = 0, .otherVideo = stream.otherVideo});
  }

  /// Returns when an image is shown or a sound is heard. Time stamps go back where recordings were joined into one
  /// file: what comes then follows what was before.
  [[nodiscard]] Ticks continuedTime(Stream& stream, Ticks stated) {
    if (!stream.hasBegun || stated >= stream.next - greatestStepBack) {
      // A single time stamp that was wrong changes nothing for those after it.
      stream.followsOn = 0;
      return stated;
    }
    if (stated + stream.followsOn >= stream.next - greatestStepBack) return stated + stream.followsOn;
    damage_.note(stream.next, "its time stamps go back to " + fixedDecimalText(secondsOfTicks(stated), 3) + " s",
                 stream.sound != nullptr ? std::optional(stream.sound->track) : std::nullopt);
    const Ticks least = stream.next - stated;
    // Images and sound stay together although one of them ended a little earlier than the other.
    const bool waits = followsOn_ > least && followsOn_ - least < greatestStepBack;
    if (!waits) followsOn_ = least;
    stream.followsOn = followsOn_;
    return stated + stream.followsOn;
  }

  void copy(int index, Stream& stream, PacketPointer packet) {
    const AVRational base = source(index).time_base;
    if ((packet->flags & AV_PKT_FLAG_CORRUPT) != 0) damage_.note(stream.next, "a packet is damaged");
    if (!isWhole(*packet, *source(index).codecpar)) damage_.note(stream.next, "a packet is damaged");
    if (stream.sound != nullptr) {
      copySound(base, stream, std::move(packet));
      return;
    }
    if (!stream.hasBegun && (packet->flags & AV_PKT_FLAG_KEY) == 0) {
      error_ = TranscodeRunError{notCopyable, path_, "it begins with an image that depends on others"};
      return;
    }
    if (!setVideoTimes(base, stream, *packet)) return;
    stream.hasBegun = true;
    stream.next = std::max(stream.next, packet->pts + packet->duration);
    position_ = packet->dts;
    imageEnd_ = std::max(imageEnd_, stream.next);
    pending_.emplace_back(CopiedPacket{std::nullopt, std::move(packet)});
  }

  /// Sets the packet's times on the time line; an error if they are not known.
  [[nodiscard]] bool setVideoTimes(const AVRational& base, Stream& stream, AVPacket& packet) {
    const bool reorders = source(packet.stream_index).codecpar->video_delay > 0;
    if (stream.countsImages && !reorders) packet.pts = packet.dts = AV_NOPTS_VALUE;
    if (packet.pts == AV_NOPTS_VALUE && !reorders) packet.pts = packet.dts;
    if (packet.pts == AV_NOPTS_VALUE && !reorders && wanted_.imageDuration() > 0) {
      packet.pts = packet.dts = fromTimeLine(stream.next + zero_.value_or(0), base);
    }
    if (packet.pts == AV_NOPTS_VALUE) {
      error_ = TranscodeRunError{notCopyable, path_, "its images have no times"};
      return false;
    }
    const Ticks pts = continuedTime(stream, local(packet.pts, base));
    if (packet.dts == AV_NOPTS_VALUE && !stream.decodeTimes) {
      stream.decodeTimes.emplace(source(packet.stream_index).codecpar->video_delay, wanted_.imageDuration());
    }
    packet.dts = stream.decodeTimes ? stream.decodeTimes->next(pts) : local(packet.dts, base) + stream.followsOn;
    packet.pts = pts;
    packet.duration = packet.duration > 0 && wanted_.isVariable ? toTimeLine(packet.duration, base)
                                                                : std::max<Ticks>(wanted_.imageDuration(), 1);
    return true;
  }

  /// Warns of sound before the first image that is longer than what coders put in front.
  void noteLead(Ticks time) {
    const Ticks least = std::max<Ticks>(wanted_.imageDuration(), timeLine.den / 8);
    if (!wanted_.hasVideo || time >= -least) return;
    warnings_.push_back({TranscodeRunWarningCode::leadCut, path_, fixedDecimalText(-secondsOfTicks(time), 3) + " s"});
  }

  void copySound(const AVRational& base, Stream& stream, PacketPointer packet) {
    const std::int64_t time = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
    packet->pts = packet->dts = time != AV_NOPTS_VALUE ? continuedTime(stream, local(time, base)) : stream.next;
    // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
    const bool isHeard = (packet->flags & AV_PKT_FLAG_DISCARD) == 0;
    if (isHeard && !std::exchange(stream.hasBegun, true)) noteLead(packet->pts);
    packet->duration = toTimeLine(packet->duration, base);
    stream.next = packet->pts + packet->duration;
    position_ = packet->pts;
    soundEnd_ = std::max(soundEnd_, stream.next);
    pending_.emplace_back(CopiedPacket{stream.sound->track, std::move(packet)});
  }

  void finish() {
    isEnded_ = true;
    for (auto& [index, stream] : streams_) {
      if (stream.decoder != nullptr) decode(index, stream, nullptr);
    }
    if (!statedEnd_) return;
    if (!wanted_.hasVideo) {
      finishSound();
      return;
    }
    const Ticks missing = *statedEnd_ - imageEnd_;
    const Ticks duration = wanted_.imageDuration();
    if (missing <= duration + duration / 2) return;
    damage_.noteShort(imageEnd_, "its images end at " + fixedDecimalText(secondsOfTicks(imageEnd_), 3) + " s of " +
                                     fixedDecimalText(secondsOfTicks(*statedEnd_), 3) + " s");
  }

  /// Notes sound that ends early, by more than the packets that hold what coders add.
  void finishSound() {
    constexpr Ticks added = timeLine.den / 4;
    if (*statedEnd_ - soundEnd_ <= added) return;
    damage_.noteShort(soundEnd_, "its sound ends at " + fixedDecimalText(secondsOfTicks(soundEnd_), 3) + " s of " +
                                     fixedDecimalText(secondsOfTicks(*statedEnd_), 3) + " s");
  }

  const std::string path_;
  const WantedStreams& wanted_;
  const ReadingOptions options_;
  std::unique_ptr<MediaInput> input_;
  /// By their index in the file.
  std::map<int, Stream> streams_;
  PartDamage damage_;
  std::vector<TranscodeRunWarning> warnings_;
  std::optional<TranscodeRunError> error_;
  std::deque<SourceItem> pending_;
  /// The time of the first image in the file; absent until it is known.
  std::optional<Ticks> zero_;
  std::optional<Ticks> statedEnd_;
  /// What the stream adds whose times went back last.
  Ticks followsOn_ = 0;
  Ticks imageEnd_ = 0;
  Ticks soundEnd_ = 0;
  Ticks position_ = 0;
  int failures_ = 0;
  bool reportsDamageInLog_ = false;
  bool isEnded_ = false;
};

/// Numbered images, each of which is a file.
class ImageList final : public PartSource {
 public:
  ImageList(std::vector<PlacedImage> images, const WantedStreams& wanted, ReadingOptions options)
      : images_(std::move(images)), wanted_(wanted), options_(std::move(options)) {}

  Expected<std::optional<SourceItem>, TranscodeRunError> next() override {
    while (next_ < images_.size()) {
      const auto& [path, place] = images_[next_];
      const std::int64_t wanted = next_ > 0 ? images_[next_ - 1].place + 1 : place;
      ++next_;
      if (options_.stop.stop_requested()) return Unexpected(TranscodeRunError{interrupted, path});
      const Ticks time = timeOf(place);
      if (options_.notesDamage && place > wanted) {
        options_.notesDamage(
            timeOf(wanted), std::nullopt,
            place - wanted == 1 ? "an image is missing" : std::to_string(place - wanted) + " images are missing");
      }
      auto frame = decoded(path);
      if (frame) return SourceItem(SourceImage{*std::move(frame), time, timeOf(place + 1) - time});
      if (!options_.acceptsDamaged || frame.error().code != sourceDamaged) return Unexpected(std::move(frame).error());
      if (options_.notesDamage) {
        options_.notesDamage(time, std::nullopt, frame.error().detail);
        continue;
      }
      warnings_.push_back({TranscodeRunWarningCode::damageAccepted, path, frame.error().detail});
    }
    return std::nullopt;
  }

  [[nodiscard]] Ticks end() const override { return next_ > 0 ? timeOf(images_[next_ - 1].place + 1) : 0; }
  [[nodiscard]] std::optional<Ticks> statedEnd() const override { return timeOf(images_.back().place + 1); }

  [[nodiscard]] CopiedStream copiedStream(std::optional<std::size_t> /*track*/) const override { return {}; }
  [[nodiscard]] std::vector<TranscodeRunWarning> takeWarnings() override { return std::exchange(warnings_, {}); }

 private:
  [[nodiscard]] Ticks timeOf(std::int64_t place) const {
    const MediaRational rate = wanted_.image.frameRate.rawValue();
    return av_rescale(place, std::int64_t{timeLine.den} * rate.denominator, rate.numerator);
  }

  [[nodiscard]] Expected<FramePointer, TranscodeRunError> decoded(const std::string& path) const {
    auto frame = decodeImage(path, options_.threads);
    // A caller that notes damage checks the size itself.
    if (options_.notesDamage) return frame;
    if (frame && ((*frame)->width != wanted_.image.width || (*frame)->height != wanted_.image.height)) {
      const auto sizeText = [](int width, int height) {
        return std::to_string(width) + " x " + std::to_string(height);
      };
      return Unexpected(TranscodeRunError{imagesDiffer, path,
                                          "it is " + sizeText((*frame)->width, (*frame)->height) +
                                              " where the sequence is " +
                                              sizeText(wanted_.image.width, wanted_.image.height)});
    }
    return frame;
  }

  std::vector<PlacedImage> images_;
  const WantedStreams& wanted_;
  const ReadingOptions options_;
  std::size_t next_ = 0;
  std::vector<TranscodeRunWarning> warnings_;
};

}  // namespace

Expected<std::unique_ptr<PartSource>, TranscodeRunError> openPart(const std::string& path, const WantedStreams& wanted,
                                                                  const ReadingOptions& options) {
  auto part = std::make_unique<FilePart>(path, wanted, options);
  if (auto error = part->open()) return Unexpected(*std::move(error));
  return part;
}

std::vector<PlacedImage> placedImages(ImageSequence images, std::int64_t& place) {
  std::vector<PlacedImage> placed;
  for (std::size_t each = 0; each < images.paths.size(); ++each) {
    if (each > 0) place += std::max<std::int64_t>(images.numbers[each] - images.numbers[each - 1], 1);
    placed.push_back({std::move(images.paths[each]), place});
  }
  ++place;
  return placed;
}

Expected<std::unique_ptr<PartSource>, TranscodeRunError> openImages(std::vector<PlacedImage> images,
                                                                    const WantedStreams& wanted,
                                                                    const ReadingOptions& options) {
  return std::make_unique<ImageList>(std::move(images), wanted, options);
}

}  // namespace meridian::inline v0_2::libav
