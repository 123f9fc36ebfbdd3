#include "meridian/engine/libav/log_collector.h"

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <mutex>

namespace meridian::inline v0_2::libav {
namespace {

thread_local const LogCollector* innermost = nullptr;
std::atomic<int> quietDecoders = 0;

/// Returns true if the context or one that it is part of is silenced. What FFmpeg says without a context on a thread of
/// its own may be a decoder's.
bool isSilenced(const void* context) noexcept {
  if (context == nullptr) return quietDecoders > 0;
  while (context != nullptr) {
    const auto* const bytes = static_cast<const std::byte*>(context);
    // Members of the context, whose first one is a pointer to its class.
    const auto* const type = *reinterpret_cast<const AVClass* const*>(bytes);
    if (type == nullptr) return false;
    if (type->log_level_offset_offset != 0 &&
        *reinterpret_cast<const int*>(bytes + type->log_level_offset_offset) >= AV_LOG_MAX_OFFSET) {
      return true;
    }
    context = type->parent_log_context_offset == 0
                  ? nullptr
                  : *reinterpret_cast<const void* const*>(bytes + type->parent_log_context_offset);
  }
  return false;
}

// The format and its arguments are FFmpeg's, as vsnprintf reads them.
__attribute__((format(printf, 3, 0))) void collect(void* context, int level, const char* format,
                                                   va_list arguments) noexcept {
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
