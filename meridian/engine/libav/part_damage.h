/// \file
/// What becomes of damage in a source: an error, or a warning where it is accepted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/engine/libav/source_reader.h"
#include "meridian/engine/libav/time_line.h"
#include "meridian/engine/transcode_run_error.h"

namespace meridian::inline v0_2::libav {

/// Notes the damage of one file.
class PartDamage {
 public:
  PartDamage(std::string path, bool isAccepted, DamageBlock block)
      : path_(std::move(path)), isAccepted_(isAccepted), block_(std::move(block)) {}

  /// Notes that something is damaged at a time of the file; the reason is FFmpeg's.
  void note(Ticks time, std::string_view reason, std::optional<std::size_t> track = std::nullopt);
  /// Notes that the file ends early; the detail says by how much.
  void noteShort(Ticks time, std::string detail);

  /// Returns the first that is not accepted.
  [[nodiscard]] const std::optional<TranscodeRunError>& error() const noexcept { return error_; }
  /// Returns one warning for all damage that was accepted, and one for an early end; forgets both.
  [[nodiscard]] std::vector<TranscodeRunWarning> takeWarnings();

 private:
  std::string path_;
  bool isAccepted_;
  DamageBlock block_;
  std::optional<TranscodeRunError> error_;
  std::string first_;
  std::int64_t count_ = 0;
  std::string short_;
};

}  // namespace meridian::inline v0_2::libav
