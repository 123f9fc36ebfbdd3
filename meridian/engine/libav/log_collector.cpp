#include "meridian/engine/libav/log_collector.h"

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace meridian::inline v0_2::libav {
namespace {

thread_local const LogCollector* innermost = nullptr;

// The format and its arguments are FFmpeg's, as vsnprintf reads them.
__attribute__((format(printf, 3, 0))) void collect(void* context, int level, const char* format,
                                                   va_list arguments) noexcept {
  if (innermost == nullptr) {
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
