#include "meridian/engine/libav/media_output.h"

extern "C" {
#include <libavcodec/bsf.h>
#include <libavutil/channel_layout.h>
#include <libavutil/dict.h>
}

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/engine/libav/copied_sound.h"
#include "meridian/engine/libav/output_io.h"
#include "meridian/engine/libav/stream_encoder.h"

namespace meridian::inline v0_2::libav {
namespace {

struct FreesMuxer {
  void operator()(AVFormatContext* muxer) const noexcept {
    muxer->pb = nullptr;
    avformat_free_context(muxer);
  }
};
using MuxerPointer = std::unique_ptr<AVFormatContext, FreesMuxer>;
using FilterPointer = std::unique_ptr<AVBSFContext, FreesByPointer<av_bsf_free>>;

struct FreesOptions {
  void operator()(AVDictionary* dictionary) const noexcept { av_dict_free(&dictionary); }
};

/// How long the muxer keeps packets of one stream while it waits for another, in microseconds. Streams come in the
/// order of time, so that one that is late by more has ended or begins late.
constexpr std::int64_t longestWait = 1'000'000;

/// A stream of the output.
struct OutputStream {
  AVStream* stream = nullptr;
  /// Null for a stream that is copied.
  std::unique_ptr<StreamEncoder> encoder;
  /// Null unless packets are rewritten for the container.
  FilterPointer filter;
  /// Where the first packet begins and the last one ends, on the time line.
  std::optional<Ticks> begin;
  std::atomic<Ticks> end = 0;
  /// When the last copied packet is decoded, in the time base of the stream.
  std::optional<std::int64_t> decoded;
};

class MuxedOutput final : public MediaOutput {
  using enum TranscodeRunErrorCode;

 public:
  MuxedOutput(const TranscodePlan& plan, const SourceReader& source, WholeFile& file, unsigned threads)
      : plan_(plan), source_(source), file_(file), threads_(threads) {}

  MuxedOutput(const MuxedOutput&) = delete;
  MuxedOutput& operator=(const MuxedOutput&) = delete;
  MuxedOutput(MuxedOutput&&) = delete;
  MuxedOutput& operator=(MuxedOutput&&) = delete;
  ~MuxedOutput() override = default;

  [[nodiscard]] std::optional<TranscodeRunError> open() {
    const LogCollector log;
    io_ = OutputIo::create(file_);
    AVFormatContext* muxer = nullptr;
    const std::string name(rawValue(plan_.output.container));
    if (!io_ || avformat_alloc_output_context2(&muxer, nullptr, name.c_str(), nullptr) < 0) {
      return muxerError(AVERROR(ENOMEM), log);
    }
    muxer_.reset(muxer);
    io_->attach(*muxer);
    muxer->max_interleave_delta = longestWait;
    if (plan_.video) {
      if (auto error = addVideo()) return error;
    }
    for (std::size_t track = 0; track < plan_.audio.size(); ++track) {
      if (auto error = addAudio(track)) return error;
    }
    return writeHeader(log);
  }

  [[nodiscard]] std::size_t samplesPerFrame(std::size_t track) const override {
    const OutputStream& stream = *sounds_[track];
    if (!stream.encoder) return 0;
    const AVCodecContext& context = stream.encoder->context();
    // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
    const bool takesAny = (context.codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE) != 0;
    return takesAny ? 0 : static_cast<std::size_t>(std::max(context.frame_size, 0));
  }

  std::optional<TranscodeRunError> writeImage(FramePointer image) override { return encode(*video_, std::move(image)); }

  std::optional<TranscodeRunError> writeSound(std::size_t track, FramePointer sound) override {
    OutputStream& stream = *sounds_[track];
    stream.end = av_rescale_q(sound->pts + sound->nb_samples, stream.encoder->context().time_base, timeLine);
    return encode(stream, std::move(sound));
  }

  std::optional<TranscodeRunError> writePacket(CopiedPacket copied) override {
    OutputStream& stream = copied.track ? *sounds_[*copied.track] : *video_;
    AVPacket& packet = *copied.packet;
    // Images before the first that is shown are there for those that depend on them.
    // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
    const bool isShown = packet.pts >= 0 && (packet.flags & AV_PKT_FLAG_DISCARD) == 0;
    if (!copied.track && isShown) ++images_;
    if (!stream.begin) stream.begin = std::max<Ticks>(packet.pts, 0);
    stream.end = std::max(stream.end.load(), packet.pts + packet.duration);
    av_packet_rescale_ts(&packet, timeLine, stream.stream->time_base);
    if (!copied.track && !decodesInOrder(stream, packet)) {
      return TranscodeRunError{notCopyable, plan_.output.path, "an image would be decoded after it is shown"};
    }
    return stream.filter ? filtered(stream, std::move(copied.packet)) : write(stream, std::move(copied.packet));
  }

  std::optional<TranscodeRunError> endImages() override {
    return video_->encoder ? encode(*video_, nullptr) : endFilter(*video_);
  }

  std::optional<TranscodeRunError> endSound(std::size_t track) override {
    OutputStream& stream = *sounds_[track];
    if (stream.encoder) return encode(stream, nullptr);
    if (auto error = fillSound(stream)) return error;
    return endFilter(stream);
  }

  std::optional<TranscodeRunError> finish() override {
    const LogCollector log;
    int status = av_interleaved_write_frame(muxer_.get(), nullptr);
    if (status >= 0) status = av_write_trailer(muxer_.get());
    avio_flush(muxer_->pb);
    if (status >= 0 && !io_->error()) return std::nullopt;
    return muxerError(status, log);
  }

  [[nodiscard]] std::int64_t images() const override { return images_; }
  [[nodiscard]] Ticks imageDuration() const override { return video_ ? durationOf(*video_) : 0; }
  [[nodiscard]] Ticks soundDuration(std::size_t track) const override { return durationOf(*sounds_[track]); }

  [[nodiscard]] Ticks writtenTime() const override {
    // Sound is written long before the images of the same time, which an encoder holds back.
    if (video_) return video_->end;
    Ticks time = 0;
    for (const auto& sound : sounds_) time = std::max(time, sound->end.load());
    return time;
  }

  [[nodiscard]] std::uint64_t bytes() const override { return io_->size(); }

 private:
  [[nodiscard]] static Ticks durationOf(const OutputStream& stream) { return stream.end - stream.begin.value_or(0); }

  [[nodiscard]] TranscodeRunError muxerError(int status, const LogCollector& log) const {
    if (io_ && io_->error()) return {outputNotWritten, plan_.output.path, {}, io_->error()};
    if (status == AVERROR(ENOMEM)) return {outOfMemory, plan_.output.path};
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(status, text.data(), text.size());
    return {outputNotWritten, plan_.output.path,
            log.firstError().empty() ? std::string(text.data()) : log.firstError()};
  }

  [[nodiscard]] bool hasHeaders() const noexcept {
    // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
    return (muxer_->oformat->flags & AVFMT_GLOBALHEADER) != 0;
  }

  [[nodiscard]] bool isMxf() const noexcept { return plan_.output.container == OutputContainer::mxf; }

  [[nodiscard]] std::unique_ptr<OutputStream> newStream() const {
    auto stream = std::make_unique<OutputStream>();
    stream->stream = avformat_new_stream(muxer_.get(), nullptr);
    return stream->stream != nullptr ? std::move(stream) : nullptr;
  }

  [[nodiscard]] TranscodeRunError withoutMemory() const { return {outOfMemory, plan_.output.path}; }

  [[nodiscard]] std::optional<TranscodeRunError> addVideo() {
    video_ = newStream();
    if (!video_) return withoutMemory();
    const PlannedVideo& video = *plan_.video;
    AVStream& stream = *video_->stream;
    if (video.isCopied()) {
      if (auto error = describeCopiedVideo(stream)) return error;
    } else {
      auto encoder = StreamEncoder::openVideo(video, hasHeaders(), threads_);
      if (!encoder) return TranscodeRunError{notEncoded, plan_.output.path, std::move(encoder).error()};
      video_->encoder = *std::move(encoder);
      const AVCodecContext& context = video_->encoder->context();
      if (avcodec_parameters_from_context(stream.codecpar, &context) < 0) return withoutMemory();
      stream.time_base = context.time_base;
      stream.avg_frame_rate = stream.r_frame_rate = context.framerate;
      stream.sample_aspect_ratio = context.sample_aspect_ratio;
    }
    describeVideo(stream);
    return std::nullopt;
  }

  /// Tells the muxer of timecode and reel, where it looks for them.
  void describeVideo(AVStream& stream) const {
    if (plan_.timecode && plan_.timecode->isInTrack) {
      const std::string label = plan_.timecode->start.timecodeString();
      AVDictionary*& tags = isMxf() ? muxer_->metadata : stream.metadata;
      av_dict_set(&tags, "timecode", label.c_str(), 0);
    }
    for (const PlannedOption& tag : plan_.output.tags) {
      if (tag.name == "reel_name") av_dict_set(&stream.metadata, tag.name.c_str(), tag.value.c_str(), 0);
    }
  }

  [[nodiscard]] std::optional<TranscodeRunError> describeCopiedVideo(AVStream& stream) {
    const CopiedStream copied = source_.copiedStream(std::nullopt);
    if (copied.parameters == nullptr || avcodec_parameters_copy(stream.codecpar, copied.parameters) < 0) {
      return withoutMemory();
    }
    stream.codecpar->codec_tag = copiedTag(*copied.parameters);
    const ImageForm& image = plan_.video->source;
    const MediaRational rate = image.frameRate.rawValue();
    AVRational frameRate{};
    av_reduce(&frameRate.num, &frameRate.den, rate.numerator, rate.denominator, std::numeric_limits<int>::max());
    stream.avg_frame_rate = stream.r_frame_rate = frameRate;
    // Times of a variable rate need a fine base; 90 kHz is that of broadcasting.
    constexpr AVRational fine{1, 90'000};
    stream.time_base = plan_.video->isVariable || frameRate.num == 0 ? fine : av_inv_q(frameRate);
    stream.sample_aspect_ratio = {static_cast<int>(image.pixelAspectRatio.numerator),
                                  static_cast<int>(image.pixelAspectRatio.denominator)};
    stream.codecpar->sample_aspect_ratio = stream.sample_aspect_ratio;
    if (!copied.displayMatrix.empty()) {
      std::uint8_t* const matrix =
          av_stream_new_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, copied.displayMatrix.size());
      if (matrix == nullptr) return withoutMemory();
      std::ranges::copy(copied.displayMatrix, matrix);
    }
    return openFilter(*video_, *copied.parameters);
  }

  /// Returns the source's tag of the codec if the container has it for the codec, else 0 for the container's own.
  [[nodiscard]] std::uint32_t copiedTag(const AVCodecParameters& parameters) const {
    const AVCodecTag* const* const tags = muxer_->oformat->codec_tag;
    return tags != nullptr && av_codec_get_id(tags, parameters.codec_tag) == parameters.codec_id ? parameters.codec_tag
                                                                                                 : 0;
  }

  /// MXF holds H.264 and H.265 with start codes, while QuickTime and Matroska hold them with lengths.
  [[nodiscard]] std::optional<TranscodeRunError> openFilter(OutputStream& stream, const AVCodecParameters& parameters) {
    const bool hasLengths = parameters.extradata_size > 0 && parameters.extradata[0] == 1;
    const char* name = nullptr;
    if (parameters.codec_id == AV_CODEC_ID_H264) name = "h264_mp4toannexb";
    if (parameters.codec_id == AV_CODEC_ID_HEVC) name = "hevc_mp4toannexb";
    if (!isMxf() || name == nullptr || !hasLengths) return std::nullopt;
    AVBSFContext* filter = nullptr;
    const AVBitStreamFilter* const type = av_bsf_get_by_name(name);
    if (type == nullptr || av_bsf_alloc(type, &filter) < 0) {
      return TranscodeRunError{outputNotWritten, plan_.output.path,
                               "this FFmpeg lacks the filter " + std::string(name)};
    }
    stream.filter.reset(filter);
    if (avcodec_parameters_copy(filter->par_in, &parameters) < 0) return withoutMemory();
    filter->time_base_in = stream.stream->time_base;
    if (av_bsf_init(filter) < 0) return withoutMemory();
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> addAudio(std::size_t track) {
    const PlannedAudioTrack& planned = plan_.audio[track];
    auto added = newStream();
    if (!added) return withoutMemory();
    AVStream& stream = *added->stream;
    if (planned.isCopied()) {
      const CopiedStream copied = source_.copiedStream(track);
      if (copied.parameters == nullptr || avcodec_parameters_copy(stream.codecpar, copied.parameters) < 0) {
        return withoutMemory();
      }
      stream.codecpar->codec_tag = copiedTag(*copied.parameters);
    } else {
      auto encoder = StreamEncoder::openAudio(planned, hasHeaders());
      if (!encoder) return TranscodeRunError{notEncoded, plan_.output.path, std::move(encoder).error()};
      added->encoder = *std::move(encoder);
      if (avcodec_parameters_from_context(stream.codecpar, &added->encoder->context()) < 0) return withoutMemory();
    }
    stream.time_base = {1, stream.codecpar->sample_rate > 0 ? stream.codecpar->sample_rate : 48'000};
    if (!planned.language.empty()) av_dict_set(&stream.metadata, "language", planned.language.c_str(), 0);
    sounds_.push_back(std::move(added));
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> writeHeader(const LogCollector& log) {
    for (const PlannedOption& tag : plan_.output.tags) {
      av_dict_set(&muxer_->metadata, tag.name.c_str(), tag.value.c_str(), 0);
    }
    AVDictionary* given = nullptr;
    for (const PlannedOption& option : plan_.output.options) {
      av_dict_set(&given, option.name.c_str(), option.value.c_str(), 0);
    }
    // FLAC in MP4 is what FFmpeg still calls experimental.
    const bool isExperimental = std::ranges::any_of(
        sounds_, [](const auto& each) { return each->stream->codecpar->codec_id == AV_CODEC_ID_FLAC; });
    if (isExperimental) muxer_->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    const int status = avformat_write_header(muxer_.get(), &given);
    const std::unique_ptr<AVDictionary, FreesOptions> rest(given);
    if (status < 0) return muxerError(status, log);
    if (const AVDictionaryEntry* const entry = av_dict_get(rest.get(), "", nullptr, AV_DICT_IGNORE_SUFFIX)) {
      return TranscodeRunError{outputNotWritten, plan_.output.path,
                               "the container has no option " + std::string(entry->key)};
    }
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> encode(OutputStream& stream, FramePointer frame) {
    std::optional<TranscodeRunError> error;
    const AVRational base = stream.encoder->context().time_base;
    const auto failure = stream.encoder->encode(std::move(frame), [&](PacketPointer packet) {
      if (&stream == video_.get()) countImage(*packet, base);
      av_packet_rescale_ts(packet.get(), base, stream.stream->time_base);
      error = write(stream, std::move(packet));
      return !error;
    });
    if (failure && !error) error = TranscodeRunError{notEncoded, plan_.output.path, *failure};
    return error;
  }

  /// Moves a packet behind the one before it where a source states one time for both, which muxers refuse. False if
  /// its image is shown before that.
  [[nodiscard]] static bool decodesInOrder(OutputStream& stream, AVPacket& packet) {
    if (stream.decoded) packet.dts = std::max(packet.dts, *stream.decoded + 1);
    stream.decoded = packet.dts;
    return packet.dts <= packet.pts;
  }

  void countImage(AVPacket& packet, const AVRational& base) {
    if (packet.duration == 0) packet.duration = 1;
    ++images_;
    video_->end = std::max(video_->end.load(), av_rescale_q(packet.pts + packet.duration, base, timeLine));
  }

  [[nodiscard]] std::optional<TranscodeRunError> filtered(OutputStream& stream, PacketPointer packet) {
    if (av_bsf_send_packet(stream.filter.get(), packet.get()) < 0) {
      return TranscodeRunError{outputNotWritten, plan_.output.path, "a packet cannot be rewritten for the container"};
    }
    for (;;) {
      PacketPointer next(av_packet_alloc());
      if (!next) return withoutMemory();
      if (av_bsf_receive_packet(stream.filter.get(), next.get()) < 0) return std::nullopt;
      if (auto error = write(stream, std::move(next))) return error;
    }
  }

  [[nodiscard]] std::optional<TranscodeRunError> endFilter(OutputStream& stream) {
    return stream.filter ? filtered(stream, nullptr) : std::nullopt;
  }

  /// Fills linear PCM that is copied into MXF with silence up to the end of the images, since FFmpeg leaves out images
  /// without sound.
  [[nodiscard]] std::optional<TranscodeRunError> fillSound(OutputStream& stream) {
    const AVCodecParameters& parameters = *stream.stream->codecpar;
    const int frameSize = linearFrameSize(parameters);
    if (!isMxf() || !video_ || frameSize == 0) return std::nullopt;
    while (stream.end < video_->end) {
      const std::int64_t missing =
          av_rescale_rnd(video_->end - stream.end, parameters.sample_rate, timeLine.den, AV_ROUND_UP);
      const auto samples = static_cast<int>(std::min<std::int64_t>(missing, parameters.sample_rate));
      PacketPointer silence(av_packet_alloc());
      if (!silence || av_new_packet(silence.get(), samples * frameSize) < 0) return withoutMemory();
      std::memset(silence->data, 0, static_cast<std::size_t>(silence->size));
      silence->pts = silence->dts = fromTimeLine(stream.end, stream.stream->time_base);
      silence->duration = samples;
      stream.end += av_rescale(samples, timeLine.den, parameters.sample_rate);
      if (auto error = write(stream, std::move(silence))) return error;
    }
    return std::nullopt;
  }

  [[nodiscard]] std::optional<TranscodeRunError> write(OutputStream& stream, PacketPointer packet) {
    const LogCollector log;
    packet->stream_index = stream.stream->index;
    packet->pos = -1;
    const int status = av_interleaved_write_frame(muxer_.get(), packet.get());
    if (status >= 0 && !io_->error()) return std::nullopt;
    return muxerError(status, log);
  }

  const TranscodePlan& plan_;
  const SourceReader& source_;
  WholeFile& file_;
  unsigned threads_;
  std::unique_ptr<OutputIo> io_;
  MuxerPointer muxer_;
  std::unique_ptr<OutputStream> video_;
  std::vector<std::unique_ptr<OutputStream>> sounds_;
  std::atomic<std::int64_t> images_ = 0;
};

}  // namespace

Expected<std::unique_ptr<MediaOutput>, TranscodeRunError> MediaOutput::open(const TranscodePlan& plan,
                                                                            const SourceReader& source, WholeFile& file,
                                                                            unsigned threads) {
  auto output = std::make_unique<MuxedOutput>(plan, source, file, threads);
  if (auto error = output->open()) return Unexpected(*std::move(error));
  return output;
}

}  // namespace meridian::inline v0_2::libav
