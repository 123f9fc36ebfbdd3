#include "meridian/engine/libav/output_io.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <span>
#include <string_view>

namespace meridian::inline v0_2::libav {
namespace {

constexpr int outputBufferBytes = 256 * 1024;

/// Reads what was written, from a place of its own.
struct Reader {
  const WholeFile* file = nullptr;
  std::int64_t place = 0;
};

int readWritten(void* opaque, std::uint8_t* bytes, int size) noexcept {
  auto& reader = *static_cast<Reader*>(opaque);
  const std::span memory(reinterpret_cast<char*>(bytes), static_cast<std::size_t>(std::max(size, 0)));
  const auto count = reader.file->readAt(static_cast<std::uint64_t>(reader.place), memory);
  if (!count) return AVERROR(count.error().value());
  if (*count == 0) return AVERROR_EOF;
  reader.place += static_cast<std::int64_t>(*count);
  return static_cast<int>(*count);
}

std::int64_t seekReader(void* opaque, std::int64_t offset, int origin) noexcept {
  auto& reader = *static_cast<Reader*>(opaque);
  if (origin == SEEK_CUR) offset += reader.place;
  if ((origin != SEEK_SET && origin != SEEK_CUR) || offset < 0) return AVERROR(EINVAL);
  reader.place = offset;
  return offset;
}

}  // namespace

std::unique_ptr<OutputIo> OutputIo::create(WholeFile& file) {
  std::unique_ptr<OutputIo> io(new OutputIo(file));
  auto* const memory = static_cast<unsigned char*>(av_malloc(outputBufferBytes));
  if (memory == nullptr) return nullptr;
  io->context_.reset(
      avio_alloc_context(memory, outputBufferBytes, 1, io.get(), nullptr, &OutputIo::write, &OutputIo::seek));
  if (!io->context_) {
    av_free(memory);
    return nullptr;
  }
  return io;
}

void OutputIo::attach(AVFormatContext& muxer) {
  muxer.pb = context_.get();
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
  muxer.flags |= AVFMT_FLAG_CUSTOM_IO;
  muxer.opaque = this;
  muxer.io_open = &OutputIo::openToRead;
  muxer.io_close2 = &OutputIo::closeReader;
}

int OutputIo::write(void* self, std::uint8_t* bytes, int size) noexcept {
  auto& io = *static_cast<OutputIo*>(self);
  const std::string_view written(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(std::max(size, 0)));
  if (const std::error_code error = io.file_.writeAt(static_cast<std::uint64_t>(io.place_), written)) {
    if (!io.error_) io.error_ = error;
    return AVERROR(error.value());
  }
  io.place_ += size;
  io.size_ = std::max(io.size_.load(), io.place_);
  return size;
}

std::int64_t OutputIo::seek(void* self, std::int64_t offset, int origin) noexcept {
  auto& io = *static_cast<OutputIo*>(self);
  if (origin == AVSEEK_SIZE) return io.size_;
  // NOLINTNEXTLINE(hicpp-signed-bitwise): FFmpeg's own flag.
  switch (origin & ~AVSEEK_FORCE) {
    case SEEK_SET:
      break;
    case SEEK_CUR:
      offset += io.place_;
      break;
    case SEEK_END:
      offset += io.size_;
      break;
    default:
      return AVERROR(EINVAL);
  }
  if (offset < 0) return AVERROR(EINVAL);
  io.place_ = offset;
  return offset;
}

int OutputIo::openToRead(AVFormatContext* muxer, AVIOContext** opened, const char* /*url*/, int flags,
                         AVDictionary** /*options*/) noexcept {
  // The muxer of QuickTime reads what it has written to put the index in front of it.
  if (flags != AVIO_FLAG_READ) return AVERROR(EPERM);
  const auto& io = *static_cast<const OutputIo*>(muxer->opaque);
  auto* const memory = static_cast<unsigned char*>(av_malloc(outputBufferBytes));
  auto* const reader = static_cast<Reader*>(av_malloc(sizeof(Reader)));
  if (memory != nullptr && reader != nullptr) {
    *reader = {&io.file_};
    *opened = avio_alloc_context(memory, outputBufferBytes, 0, reader, &readWritten, nullptr, &seekReader);
    if (*opened != nullptr) return 0;
  }
  av_free(memory);
  av_free(reader);
  return AVERROR(ENOMEM);
}

int OutputIo::closeReader(AVFormatContext* /*muxer*/, AVIOContext* context) noexcept {
  if (context == nullptr) return 0;
  av_free(context->opaque);
  av_free(context->buffer);
  context->buffer = nullptr;
  avio_context_free(&context);
  return 0;
}

}  // namespace meridian::inline v0_2::libav
