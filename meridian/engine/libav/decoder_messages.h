/// \file
/// What a decoder says of damage, on whatever thread it says it. For example:
///
///     DecoderMessages messages;
///     context->opaque = &messages;
///     ...
///     if (const auto damage = messages.takeDamage()) warn(*damage);  // "concealing 240 DC, 240 AC, 240 MV errors"
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace meridian::inline v0_2::libav {

/// Collects the messages of the codec contexts whose `opaque` it is. Decoders of H.264 and MPEG repair damage and tell
/// of it in the log alone, on threads of their own.
class DecoderMessages {
 public:
  DecoderMessages();
  DecoderMessages(const DecoderMessages&) = delete;
  DecoderMessages& operator=(const DecoderMessages&) = delete;
  DecoderMessages(DecoderMessages&&) = delete;
  DecoderMessages& operator=(DecoderMessages&&) = delete;
  ~DecoderMessages();

  /// Returns the first message since the last call that tells of repaired damage; nothing if there was none.
  [[nodiscard]] std::optional<std::string> takeDamage();
  /// Returns the first error since the last call; empty if there was none.
  [[nodiscard]] std::string takeError();

  /// Takes a message of the log for the object at this address. Returns false if there is none there.
  static bool take(const void* opaque, int level, std::string_view message);

 private:
  std::mutex mutex_;
  std::string damage_;
  std::string error_;
};

}  // namespace meridian::inline v0_2::libav
