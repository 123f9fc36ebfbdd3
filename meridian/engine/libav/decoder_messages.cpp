#include "meridian/engine/libav/decoder_messages.h"

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <utility>
#include <vector>

#include "meridian/base/no_destructor.h"

namespace meridian::inline v0_2::libav {
namespace {

/// The objects that exist: another program's codec contexts have an `opaque` of their own.
struct LiveMessages {
  std::mutex mutex;
  std::vector<DecoderMessages*> all;
};

LiveMessages& liveMessages() {
  static NoDestructor<LiveMessages> live;
  return *live;
}

}  // namespace

DecoderMessages::DecoderMessages() {
  LiveMessages& live = liveMessages();
  const std::lock_guard lock(live.mutex);
  live.all.push_back(this);
}

DecoderMessages::~DecoderMessages() {
  LiveMessages& live = liveMessages();
  const std::lock_guard lock(live.mutex);
  std::erase(live.all, this);
}

std::optional<std::string> DecoderMessages::takeDamage() {
  const std::lock_guard lock(mutex_);
  std::string damage = std::exchange(damage_, {});
  return damage.empty() ? std::nullopt : std::optional(std::move(damage));
}

std::string DecoderMessages::takeError() {
  const std::lock_guard lock(mutex_);
  return std::exchange(error_, {});
}

bool DecoderMessages::take(const void* opaque, int level, std::string_view message) {
  LiveMessages& live = liveMessages();
  const std::lock_guard lock(live.mutex);
  const auto found =
      std::ranges::find(live.all, opaque, [](const DecoderMessages* each) -> const void* { return each; });
  if (found == live.all.end()) return false;
  message = message.substr(0, message.find('\n'));
  DecoderMessages& own = **found;
  const std::lock_guard ownLock(own.mutex_);
  if (message.starts_with("concealing ") && own.damage_.empty()) own.damage_ = message;
  if (level <= AV_LOG_ERROR && own.error_.empty()) own.error_ = message;
  return true;
}

}  // namespace meridian::inline v0_2::libav
