#include "meridian/engine/libav/media_input.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "meridian/base/ascii.h"
#include "meridian/base/integer_arithmetic.h"
#include "meridian/engine/libav/log_collector.h"
#include "meridian/engine/movie_index.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2::libav {
namespace {

/// The formats of media work, by FFmpeg's names. Others are not read: playlists and descriptions that name other files,
/// texts that FFmpeg takes for subtitles or character art, and the formats of games.
constexpr auto readFormats = std::to_array<std::string_view>({
    "aac",
    "ac3",
    "aiff",
    "amr",
    "ape",
    "apng",
    "asf",
    "au",
    "av1",
    "avi",
    "bmp_pipe",
    "caf",
    "cine",
    "dds_pipe",
    "dirac",
    "dpx_pipe",
    "dts",
    "dv",
    "eac3",
    "exr_pipe",
    "flac",
    "flv",
    "gif",
    "gif_pipe",
    "gxf",
    "h264",
    "hevc",
    "ivf",
    "j2k_pipe",
    "jpeg_pipe",
    "jpegls_pipe",
    "jpegxl_pipe",
    "lxf",
    "m4v",
    "matroska,webm",
    "mjpeg",
    "mjpeg_2000",
    "mov,mp4,m4a,3gp,3g2,mj2",
    "mp3",
    "mpeg",
    "mpegts",
    "mpegvideo",
    "mxf",
    "nut",
    "obu",
    "ogg",
    "pam_pipe",
    "pbm_pipe",
    "pgm_pipe",
    "png_pipe",
    "ppm_pipe",
    "psd_pipe",
    "qoi_pipe",
    "r3d",
    "rm",
    "sgi_pipe",
    "tiff_pipe",
    "truehd",
    "vc1",
    "w64",
    "wav",
    "webp_pipe",
    "wv",
    "yuv4mpegpipe",
});

/// FFmpeg's own default; most files need a small part of it.
constexpr std::int64_t probedBytes = 5'000'000;
constexpr int bufferBytes = 32 * 1024;

/// Returns a name with the path's extension and nothing else of the path, so that no name is a pattern or a URL.
std::string harmlessName(const std::string& path) {
  const std::string_view extension = pathExtension(path);
  const bool isPlain = extension.size() <= 8 &&
                       std::ranges::all_of(extension, [](char c) { return detail::isLetter(c) || detail::isDigit(c); });
  return isPlain ? "media." + std::string(extension) : "media";
}

bool isQuickTime(const AVInputFormat& format) noexcept { return std::string_view(format.name).starts_with("mov,"); }

int openNothing(AVFormatContext* /*input*/, AVIOContext** /*opened*/, const char* /*url*/, int /*flags*/,
                AVDictionary** /*options*/) {
  return AVERROR(EPERM);
}

}  // namespace

MediaInput::MediaInput(const std::string& path, const DescriptionLimits& limits, const std::string& name)
    : path_(path),
      name_(name.empty() ? path : name),
      file_(path),
      bytesLeft_(limits.bytes),
      mostEntries_(limits.indexEntries),
      deadline_(limits.deadline()) {}

Expected<std::unique_ptr<MediaInput>, MediaError> MediaInput::open(const std::string& path,
                                                                   const DescriptionLimits& limits,
                                                                   const std::string& name) {
  std::unique_ptr<MediaInput> input(new MediaInput(path, limits, name));
  if (auto error = input->openFormat()) return Unexpected(*std::move(error));
  return input;
}

std::optional<MediaError> MediaInput::openFormat() {
  using enum MediaErrorCode;
  if (!file_.otherKind().empty()) return MediaError{notRegularFile, path_, std::string(file_.otherKind())};
  if (!file_.isOpen()) return MediaError{notOpened, path_, {}, file_.error()};
  if (file_.size() == 0) return MediaError{empty, path_};

  const LogCollector log;
  auto* const memory = static_cast<unsigned char*>(av_malloc(bufferBytes));
  if (memory == nullptr) return MediaError{outOfMemory, path_};
  io_.reset(avio_alloc_context(memory, bufferBytes, 0, this, &MediaInput::read, nullptr, &MediaInput::seek));
  if (!io_) {
    av_free(memory);
    return MediaError{outOfMemory, path_};
  }
  const AVInputFormat* const format = recognizedFormat();
  if (format == nullptr) return failure(0, unknownFormat, unreadMaker());
  if (isQuickTime(*format)) {
    if (auto error = checkMovieIndex()) return error;
  }

  AVFormatContext* context = avformat_alloc_context();
  if (context == nullptr) return MediaError{outOfMemory, path_};
  context->pb = io_.get();
  context->io_open = openNothing;
  context->protocol_whitelist = av_strdup("none");
  context->interrupt_callback = {&MediaInput::isInterrupted, this};
  context->probesize = probedBytes;
  // One entry of an AVI's index may become half a million for each stream.
  constexpr int mostStreamsOfAvi = 32;
  if (std::string_view(format->name) == "avi") context->max_streams = mostStreamsOfAvi;
  // Frees the context where it fails.
  const int opened = avformat_open_input(&context, "", format, nullptr);
  if (opened < 0) return readerFailure(opened, log);
  input_.reset(context);

  for (unsigned place = 0; place < context->nb_streams; ++place) {
    const AVCodecParameters& parameters = *context->streams[place]->codecpar;
    colors_.push_back({parameters.color_primaries, parameters.color_trc, parameters.color_space});
  }
  std::vector<AVDictionary*> options(context->nb_streams);
  for (AVDictionary*& each : options) av_dict_set_int(&each, "max_pixels", mostPixels, 0);
  const int found = avformat_find_stream_info(context, options.data());
  for (AVDictionary*& each : options) av_dict_free(&each);
  if (limitReached_ != nullptr || found < 0) return readerFailure(found, log);
  return std::nullopt;
}

std::optional<MediaError> MediaInput::checkMovieIndex() {
  using enum MediaErrorCode;
  const auto entries = movieIndexEntries(
      file_.size(), [this](std::uint64_t place, std::span<char> memory) { return readAt(place, memory); });
  if (!entries) return failure(0, entries.error().code, entries.error().detail);
  const auto claimed = [](std::uint64_t count) { return "an index of " + std::to_string(count) + " entries"; };
  if (entries->stated > file_.size()) return MediaError{damaged, path_, claimed(entries->stated) + " in too few bytes"};
  if (entries->inMemory > mostEntries_) return MediaError{limitReached, path_, claimed(entries->inMemory)};
  return std::nullopt;
}

std::string_view MediaInput::unreadMaker() noexcept {
  std::array<char, 8> bytes{};
  const bool isRed = readAt(0, bytes) && std::string_view(bytes.data(), bytes.size()).ends_with("RED2");
  return isRed ? "a clip of a RED camera that FFmpeg cannot read" : std::string_view();
}

const AVInputFormat* MediaInput::recognizedFormat() {
  const std::string name = harmlessName(name_);
  const AVInputFormat* format = nullptr;
  int score = av_probe_input_buffer2(io_.get(), &format, name.c_str(), nullptr, 0, 0);
  if (format == nullptr || score < 0) return nullptr;
  if (std::string_view(format->name) == "image2") {
    // It goes by the extension alone and would look for the name; the content says what the image is.
    format = nullptr;
    if (avio_seek(io_.get(), 0, SEEK_SET) < 0) return nullptr;
    score = av_probe_input_buffer2(io_.get(), &format, "", nullptr, 0, 0);
    if (format == nullptr || score < 0) return nullptr;
    // The extension says that it is an image, and supports no other guess.
    if (score > 1 && std::string_view(format->name).ends_with("_pipe")) score = AVPROBE_SCORE_MAX;
  }
  // A stream of JPEG images begins as a single one does, which may have further images behind it as well.
  if (std::string_view(format->name) == "jpeg_pipe" && av_match_ext(name.c_str(), "mjpg,mjpeg") != 0) {
    if (const AVInputFormat* const stream = av_find_input_format("mjpeg")) format = stream;
  }
  // A low score is a guess, which the extension must support.
  const bool isSure = score > AVPROBE_SCORE_RETRY || (score > 1 && format->extensions != nullptr &&
                                                      av_match_ext(name.c_str(), format->extensions) != 0);
  return isSure && std::ranges::find(readFormats, std::string_view(format->name)) != readFormats.end() ? format
                                                                                                       : nullptr;
}

MediaError MediaInput::failure(int status, MediaErrorCode otherwise, std::string_view detail) const {
  using enum MediaErrorCode;
  if (limitReached_ != nullptr) return {limitReached, path_, limitReached_};
  if (file_.error()) return {notRead, path_, {}, file_.error()};
  if (status == AVERROR(ENOMEM)) return {outOfMemory, path_};
  return {otherwise, path_, std::string(detail)};
}

MediaError MediaInput::readerFailure(int status, const LogCollector& log) const {
  using enum MediaErrorCode;
  const std::string_view missing = log.missingFeature();
  if (log.firstError().starts_with("Number of streams exceeds"))
    return failure(0, limitReached, "it has too many streams");
  if (!missing.empty()) return failure(status, unknownFormat, "not supported by FFmpeg: " + std::string(missing));
  const bool isUnsupported =
      status == AVERROR_PATCHWELCOME || status == AVERROR(ENOSYS) || status == AVERROR_DECODER_NOT_FOUND;
  return failure(status, isUnsupported ? unknownFormat : damaged, log.firstError());
}

bool MediaInput::readAt(std::uint64_t place, std::span<char> memory) noexcept {
  const std::uint64_t size = file_.size();
  if (place > size || isBeyondLimits() || !file_.seek(static_cast<std::int64_t>(place))) return false;
  const std::size_t count = file_.read(memory);
  // FFmpeg goes on where it was.
  return file_.seek(std::min(place_, static_cast<std::int64_t>(size))) && isWithinBytes(count) &&
         count == memory.size();
}

bool MediaInput::isBeyondLimits() noexcept {
  if (limitReached_ == nullptr && stop_.stop_requested()) limitReached_ = "it was interrupted";
  if (limitReached_ == nullptr && std::chrono::steady_clock::now() > deadline_) {
    limitReached_ = "the time limit was reached";
  }
  return limitReached_ != nullptr;
}

bool MediaInput::isWithinBytes(std::size_t count) noexcept {
  if (count > bytesLeft_) limitReached_ = "the read limit was reached";
  bytesLeft_ -= std::min<std::uint64_t>(count, bytesLeft_);
  return limitReached_ == nullptr;
}

int MediaInput::isInterrupted(void* self) noexcept { return static_cast<MediaInput*>(self)->isBeyondLimits() ? 1 : 0; }

int MediaInput::read(void* self, std::uint8_t* memory, int size) noexcept {
  auto& input = *static_cast<MediaInput*>(self);
  if (input.isBeyondLimits()) return AVERROR_EXIT;
  const std::size_t count =
      input.file_.read({reinterpret_cast<char*>(memory), static_cast<std::size_t>(std::max(size, 0))});
  if (count == 0) return input.file_.error() ? AVERROR(EIO) : AVERROR_EOF;
  input.place_ += static_cast<std::int64_t>(count);
  if (!input.isWithinBytes(count)) return AVERROR_EXIT;
  input.mxfIndex_.look(static_cast<std::uint64_t>(input.place_) - count, {reinterpret_cast<char*>(memory), count},
                       [&input](std::uint64_t place, std::span<char> bytes) { return input.readAt(place, bytes); });
  // An edit unit has a byte at least.
  if (input.mxfIndex_.entries() > std::min(input.mostEntries_, input.file_.size())) {
    input.limitReached_ = "an index of too many entries";
  }
  return input.limitReached_ == nullptr ? static_cast<int>(count) : AVERROR_EXIT;
}

std::int64_t MediaInput::seek(void* self, std::int64_t offset, int origin) noexcept {
  auto& input = *static_cast<MediaInput*>(self);
  const auto size = static_cast<std::int64_t>(input.file_.size());
  if (origin == AVSEEK_SIZE) return size;
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flags.
  const int plainOrigin = origin & ~AVSEEK_FORCE;
  std::int64_t base = 0;
  if (plainOrigin == SEEK_CUR) base = input.place_;
  if (plainOrigin == SEEK_END) base = size;
  const auto place = checkedSum<std::int64_t>(base, offset);
  // Beyond the end there is nothing to read, wherever that is.
  if (!place || *place < 0 || !input.file_.seek(std::min(*place, size))) return AVERROR(EINVAL);
  input.place_ = *place;
  return *place;
}

}  // namespace meridian::inline v0_2::libav
