#include "meridian/engine/libav/log_collector.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/log.h>
}

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <mutex>

#include "meridian/engine/libav/decoder_messages.h"

namespace meridian::inline v0_2::libav {
namespace {

thread_local const LogCollector* innermost = nullptr;
std::atomic<int> quietDecoders = 0;

/// Returns the class of a context, which the first of its members points to; null if it has none.
const AVClass* classOf(const void* context) noexcept { return *static_cast<const AVClass* const*>(context); }

/// Returns the context that another one is part of; null if there is none.
const void* parentOf(const void* context) noexcept {
  const AVClass* const type = classOf(context);
  if (type == nullptr || type->parent_log_context_offset == 0) return nullptr;
  return *reinterpret_cast<const void* const*>(static_cast<const std::byte*>(context) +
                                               type->parent_log_context_offset);
}

/// Returns the codec that a context is, or is part of; null if there is none.
const AVCodecContext* codecOf(const void* context) noexcept {
  for (; context != nullptr; context = parentOf(context)) {
    if (classOf(context) == avcodec_get_class()) return static_cast<const AVCodecContext*>(context);
  }
  return nullptr;
}

/// Returns true for what converts images and sound, on whatever thread of a filter's it does so.
bool isConverter(const void* context) noexcept {
  const AVClass* const type = classOf(context);
  return type != nullptr &&
         (type->category == AV_CLASS_CATEGORY_SWSCALER || type->category == AV_CLASS_CATEGORY_SWRESAMPLER);
}

/// Returns true if the context or one that it is part of is silenced. What FFmpeg says without a context, or as a
/// converter, on a thread of its own may be ours.
bool isSilenced(const void* context) noexcept {
  if (context == nullptr || isConverter(context)) return quietDecoders > 0;
  for (; context != nullptr; context = parentOf(context)) {
    const AVClass* const type = classOf(context);
    if (type == nullptr) return false;
    if (type->log_level_offset_offset != 0 &&
        *reinterpret_cast<const int*>(static_cast<const std::byte*>(context) + type->log_level_offset_offset) >=
            AV_LOG_MAX_OFFSET) {
      return true;
    }
  }
  return false;
}

/// Gives a decoder's message to the object that collects them; false if there is none.
__attribute__((format(printf, 4, 0))) bool collectForDecoder(const AVCodecContext* codec, const void* context,
                                                             int level, const char* format,
                                                             va_list arguments) noexcept {
  if (codec == nullptr || codec->opaque == nullptr) return false;
  const AVClass& type = *classOf(context);
  const int offset =
      type.log_level_offset_offset == 0
          ? 0
          : *reinterpret_cast<const int*>(static_cast<const std::byte*>(context) + type.log_level_offset_offset);
  const int plainLevel = level - offset;
  if (plainLevel > AV_LOG_INFO) return DecoderMessages::take(codec->opaque, plainLevel, {});
  std::array<char, 512> message{};
  va_list copied;
  va_copy(copied, arguments);
  const int size = std::vsnprintf(message.data(), message.size(), format, copied);
  va_end(copied);
  return DecoderMessages::take(
      codec->opaque, plainLevel,
      {message.data(), std::min(static_cast<std::size_t>(std::max(size, 0)), message.size() - 1)});
}

// The format and its arguments are FFmpeg's, as vsnprintf reads them.
__attribute__((format(printf, 3, 0))) void collect(void* context, int level, const char* format,
                                                   va_list arguments) noexcept {
  if (collectForDecoder(codecOf(context), context, level, format, arguments)) return;
  if (innermost == nullptr) {
    if (isSilenced(context)) return;
    av_log_default_callback(context, level, format, arguments);
    return;
  }
  if (level > AV_LOG_WARNING) return;
  std::array<char, 512> message{};
  const int size = std::vsnprintf(message.data(), message.size(), format, arguments);
  if (size > 0) {
    innermost->take(level, {message.data(), std::min(static_cast<std::size_t>(size), message.size() - 1)});
  }
}

}  // namespace

QuietDecoding::QuietDecoding() noexcept { ++quietDecoders; }
QuietDecoding::~QuietDecoding() { --quietDecoders; }

LogCollector::LogCollector() : outer_(innermost) {
  static std::once_flag isInstalled;
  std::call_once(isInstalled, [] { av_log_set_callback(collect); });
  innermost = this;
}

LogCollector::~LogCollector() { innermost = outer_; }

void LogCollector::take(int level, std::string_view message) const noexcept {
  message = message.substr(0, message.find('\n'));
  while (message.ends_with('.') || message.ends_with(' ')) message.remove_suffix(1);
  if (level <= AV_LOG_ERROR) {
    if (firstError_.text().empty()) firstError_.assign(message);
  } else if (!isMissing_) {
    // FFmpeg names the feature in one message, and says in the next that it has not got it.
    isMissing_ = message.starts_with(" is not implemented");
    if (!isMissing_) lastWarning_.assign(message);
  }
}

}  // namespace meridian::inline v0_2::libav
